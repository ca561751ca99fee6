// The FIR filter through the exported interface, against a long-double direct convolution built
// here: accuracy within the header's bound, bit-for-bit block-split invariance, the delay-line
// bookkeeping, and the silent refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "zalaccelerate/filter.h"

namespace {

using namespace zalaccelerate;
using namespace zalaccelerate::filter;

std::vector<float> Random(std::size_t n, std::uint32_t seed) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<float> dist(-1.0f, 1.0f);
  std::vector<float> v(n);
  for (auto& x : v) x = dist(gen);
  return v;
}

// y[n] = sum h[k] x[n - k] in long double, with history (oldest first) before x[0]; also the
// sum of |terms| that scales the bound.
struct Reference {
  std::vector<long double> y;
  std::vector<long double> magnitude;
};
Reference Convolve(const std::vector<float>& h, const std::vector<float>& history,
                   const std::vector<float>& x) {
  const std::size_t taps = h.size();
  std::vector<float> line(history);
  line.resize(taps - 1, 0.0f);
  line.insert(line.end(), x.begin(), x.end());
  Reference ref{std::vector<long double>(x.size()), std::vector<long double>(x.size())};
  for (std::size_t n = 0; n < x.size(); ++n) {
    for (std::size_t k = 0; k < taps; ++k) {
      const long double term = static_cast<long double>(h[k]) * line[n + taps - 1 - k];
      ref.y[n] += term;
      ref.magnitude[n] += std::fabs(term);
    }
  }
  return ref;
}

// The header's bound: 2 (tapsLen + 2) 2^-24 sum |h[k] x[n - k]|.
void ExpectWithinBound(const std::vector<float>& got, const Reference& ref, std::size_t taps) {
  for (std::size_t n = 0; n < got.size(); ++n) {
    const long double bound = 2.0L * (taps + 2) * std::ldexp(1.0L, -24) * ref.magnitude[n];
    ASSERT_LE(std::fabs(got[n] - ref.y[n]), bound) << "taps " << taps << " output " << n;
  }
}

struct FilterDeleter {
  void operator()(FIRState_Float* s) const { FIRFree(s); }
};
using Filter = std::unique_ptr<FIRState_Float, FilterDeleter>;

Filter Make(const std::vector<float>& taps, const float* history) {
  FIRState_Float* state = nullptr;
  FIRInit(&state, taps.data(), static_cast<unsigned>(taps.size()), history);
  return Filter(state);
}

constexpr unsigned kTapCounts[] = {1,  2,  3,  4,  5,  7,  8,   15,  16,
                                   17, 31, 32, 33, 63, 64, 100, 256, 1024};

TEST(FirApi, BlockOutputsMatchTheLongDoubleConvolution) {
  for (const unsigned taps : kTapCounts) {
    for (const unsigned len : {1u, 5u, 64u, 300u, 4500u}) {
      const auto h = Random(taps, taps);
      const auto history = Random(taps - 1, 7 + taps);
      const auto x = Random(len, 11 + len);
      Filter f = Make(h, history.data());
      ASSERT_NE(f, nullptr);
      std::vector<float> y(len);
      FIR(f.get(), len, x.data(), y.data());
      ExpectWithinBound(y, Convolve(h, history, x), taps);
    }
  }
}

// Split sizes, cycled until the stream is consumed; 0 stands for taps - 1, -1 for taps.
const std::vector<std::vector<int>> kSplits = {
    {1}, {2, 1, 3}, {0}, {-1}, {7, 0, 1, -1}, {2047, 2049, 1}, {4096, 3}, {17, 16, 15, 64}};

TEST(FirApi, AnySplitOfAStreamGivesTheBitsOfOneCall) {
  constexpr unsigned kLen = 5000;
  for (const unsigned taps : kTapCounts) {
    const auto h = Random(taps, 100 + taps);
    const auto history = Random(taps - 1, 200 + taps);
    const auto x = Random(kLen, 300 + taps);
    Filter whole = Make(h, history.data());
    std::vector<float> expected(kLen);
    FIR(whole.get(), kLen, x.data(), expected.data());
    for (const auto& split : kSplits) {
      Filter f = Make(h, history.data());
      std::vector<float> y(kLen, std::nanf(""));
      unsigned done = 0;
      for (std::size_t i = 0; done < kLen; ++i) {
        int piece = split[i % split.size()];
        if (piece <= 0) piece += static_cast<int>(taps);
        if (piece <= 0) piece = 1;
        const unsigned n = std::min<unsigned>(static_cast<unsigned>(piece), kLen - done);
        FIR(f.get(), n, x.data() + done, y.data() + done);
        done += n;
      }
      ASSERT_EQ(std::memcmp(y.data(), expected.data(), kLen * sizeof(float)), 0)
          << "taps " << taps << " split of " << split[0];
      std::vector<float> line(taps - 1, -5.0f);
      FIRGetDlyLine(f.get(), line.data());
      EXPECT_TRUE(std::equal(line.begin(), line.end(), x.end() - (taps - 1))) << taps;
    }
  }
}

TEST(FirApi, ShortBlocksShiftOlderHistoryIn) {
  const std::vector<float> h = {1, 2, 3, 4, 5, 6};
  const std::vector<float> history = {10, 20, 30, 40, 50};
  Filter f = Make(h, history.data());
  const float x[2] = {60, 70};
  float y[2];
  FIR(f.get(), 2, x, y);
  std::vector<float> line(5);
  FIRGetDlyLine(f.get(), line.data());
  EXPECT_EQ(line, (std::vector<float>{30, 40, 50, 60, 70}));
}

TEST(FirApi, InPlaceEqualsSeparateArrays) {
  for (const unsigned taps : {3u, 32u, 257u}) {
    const auto h = Random(taps, 1);
    const auto x = Random(5000, 2);
    Filter a = Make(h, nullptr);
    Filter b = Make(h, nullptr);
    std::vector<float> separate(x.size());
    std::vector<float> in_place = x;
    FIR(a.get(), 5000, x.data(), separate.data());
    FIR(b.get(), 5000, in_place.data(), in_place.data());
    EXPECT_EQ(in_place, separate) << taps;
  }
}

TEST(FirApi, SingleSampleUsesTheDelayLineAndDoesNotMoveOn) {
  for (const unsigned taps : {1u, 2u, 5u, 32u, 33u, 70u}) {
    const auto h = Random(taps, 40 + taps);
    const auto history = Random(taps - 1, 50 + taps);
    Filter f = Make(h, history.data());
    const float first = FIR(f.get(), 0.75f);
    const float second = FIR(f.get(), 0.75f);
    EXPECT_EQ(std::memcmp(&first, &second, sizeof first), 0);
    // The block form from the same history gives the same bits.
    Filter g = Make(h, history.data());
    const float x = 0.75f;
    float blocked = 0.0f;
    FIR(g.get(), 1, &x, &blocked);
    EXPECT_EQ(std::memcmp(&first, &blocked, sizeof first), 0) << "taps " << taps;
    ExpectWithinBound({first}, Convolve(h, history, {0.75f}), taps);
    std::vector<float> line(taps - 1);
    FIRGetDlyLine(f.get(), line.data());
    EXPECT_EQ(line, history);
  }
}

TEST(FirApi, OneTapHasNoDelayLine) {
  const std::vector<float> h = {-2.5f};
  Filter f = Make(h, nullptr);
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->delayLineLen, 0u);
  EXPECT_EQ(FIR(f.get(), 3.0f), -7.5f);
  float sentinel = 9.0f;
  FIRGetDlyLine(f.get(), &sentinel);
  FIRSetDlyLine(f.get(), &sentinel);
  EXPECT_EQ(sentinel, 9.0f);
}

TEST(FirApi, NullHistoryGivesPartialSumsOfTheTaps) {
  const std::vector<float> h = {1, 10, 100, 1000};
  Filter f = Make(h, nullptr);
  const std::vector<float> ones(6, 1.0f);
  std::vector<float> y(6);
  FIR(f.get(), 6, ones.data(), y.data());
  EXPECT_EQ(y, (std::vector<float>{1, 11, 111, 1111, 1111, 1111}));
}

TEST(FirApi, SetTapsKeepsTheDelayLineAndSetDlyLineReplacesIt) {
  const std::vector<float> history = {1, 2, 3};
  Filter f = Make({1, 0, 0, 0}, history.data());
  const std::vector<float> newer = {0, 0, 0, 1};  // reads the oldest sample of the line
  FIRSetTaps(f.get(), newer.data());
  EXPECT_EQ(FIR(f.get(), 5.0f), 1.0f);
  const std::vector<float> other = {7, 8, 9};
  FIRSetDlyLine(f.get(), other.data());
  EXPECT_EQ(FIR(f.get(), 5.0f), 7.0f);
  FIRSetDlyLine(f.get(), nullptr);
  EXPECT_EQ(FIR(f.get(), 5.0f), 0.0f);
}

TEST(FirApi, AnInfiniteInputReachesOnlyTheOutputsItIsATermOf) {
  for (const unsigned taps : {3u, 16u, 40u}) {
    Filter f = Make(std::vector<float>(taps, 0.5f), nullptr);
    std::vector<float> x(200, 1.0f);
    x[100] = std::numeric_limits<float>::infinity();
    std::vector<float> y(200);
    FIR(f.get(), 200, x.data(), y.data());
    for (unsigned n = 0; n < 200; ++n) {
      const bool reached = n >= 100 && n < 100 + taps;
      EXPECT_EQ(std::isfinite(y[n]), !reached) << taps << " " << n;
    }
  }
}

TEST(FirApi, RefusedInitLeavesANullState) {
  const std::vector<float> h(64, 1.0f);
  for (const unsigned taps : {0u, 0x80000000u, 0xFFFFFFFFu, 40000000u}) {
    FIRState_Float* state = reinterpret_cast<FIRState_Float*>(&state);
    FIRInit(&state, h.data(), taps, nullptr);
    EXPECT_EQ(state, nullptr) << taps;
  }
  FIRState_Float* state = reinterpret_cast<FIRState_Float*>(&state);
  FIRInit(&state, nullptr, 8, nullptr);
  EXPECT_EQ(state, nullptr);
  FIRFree(nullptr);
}

TEST(FirApi, RefusedBlocksWriteNothing) {
  const auto h = Random(9, 3);
  const auto history = Random(8, 4);
  Filter f = Make(h, history.data());
  const std::vector<float> src(16, 1.0f);
  std::vector<float> dst(16, 42.0f);
  for (const unsigned len : {0u, 0x80000000u, 0xFFFFFFFFu})
    FIR(f.get(), len, src.data(), dst.data());
  FIR(f.get(), 16, nullptr, dst.data());
  FIR(f.get(), 16, src.data(), nullptr);
  EXPECT_EQ(dst, std::vector<float>(16, 42.0f));
  std::vector<float> line(8);
  FIRGetDlyLine(f.get(), line.data());
  EXPECT_EQ(line, history);
}

TEST(FirApi, DesignBufferSizeIsEightBytesPerTap) {
  EXPECT_EQ(FIRGetWorkBufferSize(5), 40u);
  EXPECT_EQ(FIRGetWorkBufferSize(1001), 8008u);
  for (const unsigned taps : {0u, 0x10000000u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(FIRGetWorkBufferSize(taps), 0u) << taps;
  }
}

}  // namespace
