// The FIR primitives at every level under test against the portable variant and a long-double
// direct sum: the levels without fused multiply-add give the portable bits, the others stay
// within the bound; misaligned buffers, guard zones around every destination, block-split
// invariance, and the refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "engine/core/dispatch.h"
#include "engine/primitives/fir/fir_spec.h"
#include "tests/engine/harness/rows.h"

namespace zal::test {
namespace {

using harness::kPortable;

// The first level with fused multiply-add.
constexpr int kFirstFusedLevel = 4;
constexpr int kGuard = 64;
constexpr float kGuardValue = -1234.5f;

struct Kernels {
  engine::FIRGetSize* get_size;
  engine::FIRInit* init;
  engine::FIRFilter* filter;
};

Kernels At(int level) {
  if (level == kPortable) {
    return {&engine::portable::FIRGetSizeF32, &engine::portable::FIRInitF32,
            &engine::portable::FIRF32};
  }
  const auto& t = engine::g_dispatch_tables;
  return {t.FIRGetSizeF32[1 + level], t.FIRInitF32[1 + level], t.FIRF32[1 + level]};
}

std::vector<float> Random(std::size_t n, std::uint32_t seed) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<float> dist(-1.0f, 1.0f);
  std::vector<float> v(n);
  for (auto& x : v) x = dist(gen);
  return v;
}

unsigned char* AlignedSpec(std::vector<unsigned char>& block) {
  const auto address = reinterpret_cast<std::uintptr_t>(block.data());
  return block.data() + ((64 - address % 64) % 64);
}

// A prepared filter at one level, with its work buffer.
struct Prepared {
  std::vector<unsigned char> spec;
  std::vector<unsigned char> work;
};
Prepared Prepare(const Kernels& k, const std::vector<float>& taps) {
  int spec_size = 0;
  int work_size = 0;
  EXPECT_EQ(
      k.get_size(static_cast<int>(taps.size()), engine::kFIRDataTypeF32, &spec_size, &work_size),
      engStsNoErr);
  // 64 bytes of slack: the block is aligned here the way the aligned allocator aligns it.
  Prepared p{std::vector<unsigned char>(spec_size + 64), std::vector<unsigned char>(work_size)};
  EXPECT_EQ(k.init(taps.data(), static_cast<int>(taps.size()), engine::kFIRAlgorithmDirect,
                   AlignedSpec(p.spec)),
            engStsNoErr);
  return p;
}

// A destination with guard zones on both sides.
struct Guarded {
  explicit Guarded(std::size_t n, std::size_t offset)
      : cells(n + 2 * kGuard + offset, kGuardValue), at(kGuard + offset), n(n) {}
  float* data() { return cells.data() + at; }
  bool GuardsIntact() const {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if ((i < at || i >= at + n) && cells[i] != kGuardValue) return false;
    }
    return true;
  }
  std::vector<float> Values() const { return {cells.begin() + at, cells.begin() + at + n}; }
  std::vector<float> cells;
  std::size_t at;
  std::size_t n;
};

constexpr int kTapCounts[] = {1, 2, 3, 4, 5, 8, 15, 16, 17, 31, 32, 33, 64, 65, 127, 256, 1000};
constexpr int kLengths[] = {1,  2,  3,  7,   15,   16,   17,   31,  33,
                            63, 64, 65, 129, 2047, 2048, 2049, 4500};

TEST(Fir, EveryLevelMatchesThePortableVariantAndTheLongDoubleSum) {
  for (const int level : harness::LevelsUnderTest()) {
    const Kernels k = At(level);
    const Kernels portable = At(kPortable);
    for (const int taps : kTapCounts) {
      const auto h = Random(taps, taps);
      Prepared here = Prepare(k, h);
      Prepared there = Prepare(portable, h);
      for (const int n : kLengths) {
        const std::size_t offset = static_cast<std::size_t>(n + taps) % 16;
        std::vector<float> src_cells = Random(n + offset, 5u * n + taps);
        const float* src = src_cells.data() + offset;
        const auto history = Random(taps - 1, 3u * taps + n);
        Guarded got(n, offset);
        Guarded line(taps - 1, 15 - offset);
        Guarded expected(n, 0);
        ASSERT_EQ(k.filter(src, got.data(), n, AlignedSpec(here.spec), history.data(), line.data(),
                           here.work.data()),
                  engStsNoErr);
        ASSERT_EQ(portable.filter(src, expected.data(), n, AlignedSpec(there.spec), history.data(),
                                  nullptr, there.work.data()),
                  engStsNoErr);
        ASSERT_TRUE(got.GuardsIntact()) << "level " << level << " taps " << taps << " n " << n;
        ASSERT_TRUE(line.GuardsIntact()) << "level " << level << " taps " << taps << " n " << n;
        const auto y = got.Values();
        if (level < kFirstFusedLevel) {
          ASSERT_EQ(y, expected.Values()) << "level " << level << " taps " << taps << " n " << n;
        }
        for (int i = 0; i < n; ++i) {
          long double sum = 0;
          long double magnitude = 0;
          for (int m = 0; m < taps; ++m) {
            const int at = i + m - (taps - 1);
            const float x = at < 0 ? history[taps - 1 + at] : src[at];
            const long double term = static_cast<long double>(h[taps - 1 - m]) * x;
            sum += term;
            magnitude += std::fabs(term);
          }
          const long double bound = 2.0L * (taps + 2) * std::ldexp(1.0L, -24) * magnitude;
          ASSERT_LE(std::fabs(y[i] - sum), bound)
              << "level " << level << " taps " << taps << " n " << n << " output " << i;
        }
        // The new delay line: the last taps - 1 inputs of history followed by src.
        const auto kept = line.Values();
        for (int j = 0; j < taps - 1; ++j) {
          const int at = n - (taps - 1) + j;
          ASSERT_EQ(kept[j], at < 0 ? history[taps - 1 + at] : src[at]) << level << " " << j;
        }
      }
    }
  }
}

TEST(Fir, EveryLevelGivesOneCallsBitsForAnySplit) {
  constexpr int kLen = 3000;
  for (const int level : harness::LevelsUnderTest()) {
    const Kernels k = At(level);
    for (const int taps : {3, 16, 33, 100}) {
      const auto h = Random(taps, 77 + taps);
      Prepared p = Prepare(k, h);
      const auto x = Random(kLen, 99);
      std::vector<float> whole(kLen);
      ASSERT_EQ(k.filter(x.data(), whole.data(), kLen, AlignedSpec(p.spec), nullptr, nullptr,
                         p.work.data()),
                engStsNoErr);
      for (const int piece : {1, 5, taps - 1, taps + 1, 1000}) {
        if (piece <= 0) continue;
        std::vector<float> line(taps - 1, 0.0f);
        std::vector<float> split(kLen);
        for (int done = 0; done < kLen; done += piece) {
          const int n = std::min(piece, kLen - done);
          k.filter(x.data() + done, split.data() + done, n, AlignedSpec(p.spec), line.data(),
                   line.data(), p.work.data());
        }
        ASSERT_EQ(std::memcmp(split.data(), whole.data(), sizeof(float) * kLen), 0)
            << "level " << level << " taps " << taps << " pieces of " << piece;
      }
    }
  }
}

// Bit for bit, or both NaN (a NaN's payload is not part of the contract).
bool SameBits(float a, float b) {
  return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

// A one-sample block takes its own path; its output must be the one a long block gives for the
// same history, whatever the tap count's remainder mod 4 and whether the history is given, is
// silence or holds an infinity (which may reach only its own chain).
TEST(Fir, EveryLevelGivesOneSampleTheBitsOfALongBlock) {
  enum class History { kGiven, kSilence, kInfinite };
  for (const int level : harness::LevelsUnderTest()) {
    const Kernels k = At(level);
    for (int taps = 1; taps <= 70; ++taps) {
      const auto h = Random(taps, 300 + taps);
      Prepared p = Prepare(k, h);
      const auto spec = AlignedSpec(p.spec);
      for (const History kind : {History::kGiven, History::kSilence, History::kInfinite}) {
        if (kind == History::kInfinite && taps == 1) continue;
        // The history at an odd offset, so that the one-sample path's loads are unaligned.
        std::vector<float> cells = Random(taps + 1, 400 + taps);
        float* history = cells.data() + 1;
        if (kind == History::kSilence) std::fill(history, history + taps - 1, 0.0f);
        if (kind == History::kInfinite) history[(taps - 1) / 2] = INFINITY;
        const float x = 0.375f - static_cast<float>(taps) / 128;
        float one = 0.0f;
        ASSERT_EQ(k.filter(&x, &one, 1, spec, kind == History::kSilence ? nullptr : history,
                           nullptr, p.work.data()),
                  engStsNoErr);
        // The block: the history then x, after silence; output taps - 1 is x's.
        std::vector<float> src(history, history + taps - 1);
        src.push_back(x);
        src.resize(src.size() + 8, 0.5f);
        std::vector<float> block(src.size());
        ASSERT_EQ(k.filter(src.data(), block.data(), static_cast<int>(src.size()), spec, nullptr,
                           nullptr, p.work.data()),
                  engStsNoErr);
        ASSERT_TRUE(SameBits(one, block[taps - 1]))
            << "level " << level << " taps " << taps << " history " << static_cast<int>(kind)
            << ": " << one << " against " << block[taps - 1];
      }
    }
  }
}

// The other way round, at the fused levels too: every output of a block (full register blocks,
// every count of registers left over, the outputs after them) is the lone output of its history,
// a path that shares nothing with the block's tables but the order of the sums.
TEST(Fir, EveryLevelGivesEachOutputOfABlockTheBitsOfALoneOutput) {
  for (const int level : harness::LevelsUnderTest()) {
    const Kernels k = At(level);
    for (const int taps : {1, 2, 5, 16, 17, 63, 64, 65, 130}) {
      const auto h = Random(taps, 500 + taps);
      Prepared p = Prepare(k, h);
      const auto spec = AlignedSpec(p.spec);
      for (int n = 5; n <= 200; n += 3) {
        const auto line = Random(taps - 1 + n, 600u * taps + n);
        std::vector<float> block(n);
        ASSERT_EQ(k.filter(line.data() + taps - 1, block.data(), n, spec, line.data(), nullptr,
                           p.work.data()),
                  engStsNoErr);
        for (int i = 0; i < n; ++i) {
          float one = 0.0f;
          k.filter(&line[taps - 1 + i], &one, 1, spec, line.data() + i, nullptr, p.work.data());
          ASSERT_TRUE(SameBits(one, block[i]))
              << "level " << level << " taps " << taps << " n " << n << " output " << i;
        }
      }
    }
  }
}

TEST(Fir, EveryLevelRefusesBadArgumentsAndWritesNothing) {
  for (const int level : harness::LevelsUnderTest()) {
    const Kernels k = At(level);
    int spec_size = 0;
    int work_size = 0;
    EXPECT_EQ(k.get_size(8, 12, &spec_size, &work_size), engStsDataTypeErr);
    EXPECT_EQ(k.get_size(8, engine::kFIRDataTypeF32, nullptr, &work_size), engStsNullPtrErr);
    for (const int taps : {0, -1, INT32_MIN, 40000000}) {
      EXPECT_EQ(k.get_size(taps, engine::kFIRDataTypeF32, &spec_size, &work_size), engStsSizeErr)
          << taps;
    }
    const auto h = Random(8, 1);
    Prepared p = Prepare(k, h);
    EXPECT_EQ(k.init(h.data(), 8, 1, AlignedSpec(p.spec)), engStsNotSupportedModeErr);
    EXPECT_EQ(k.init(nullptr, 8, engine::kFIRAlgorithmDirect, AlignedSpec(p.spec)),
              engStsNullPtrErr);
    EXPECT_EQ(k.init(h.data(), 0, engine::kFIRAlgorithmDirect, AlignedSpec(p.spec)), engStsSizeErr);
    const auto src = Random(16, 2);
    std::vector<float> line(7, 3.0f);
    Guarded dst(16, 0);
    const auto spec = AlignedSpec(p.spec);
    EXPECT_EQ(k.filter(nullptr, dst.data(), 16, spec, nullptr, line.data(), p.work.data()),
              engStsNullPtrErr);
    EXPECT_EQ(k.filter(src.data(), nullptr, 16, spec, nullptr, line.data(), p.work.data()),
              engStsNullPtrErr);
    EXPECT_EQ(k.filter(src.data(), dst.data(), 16, nullptr, nullptr, line.data(), p.work.data()),
              engStsNullPtrErr);
    EXPECT_EQ(k.filter(src.data(), dst.data(), 16, spec, nullptr, line.data(), nullptr),
              engStsNullPtrErr);
    for (const int n : {0, -1, INT32_MIN}) {
      EXPECT_EQ(k.filter(src.data(), dst.data(), n, spec, nullptr, line.data(), p.work.data()),
                engStsSizeErr);
    }
    // A spec laid out by the portable variant is another level's.
    Prepared other = Prepare(At(kPortable), h);
    EXPECT_EQ(k.filter(src.data(), dst.data(), 16, AlignedSpec(other.spec), nullptr, line.data(),
                       p.work.data()),
              engStsContextMatchErr);
    EXPECT_TRUE(dst.GuardsIntact());
    EXPECT_EQ(dst.Values(), std::vector<float>(16, kGuardValue));
    EXPECT_EQ(line, std::vector<float>(7, 3.0f));
  }
}

}  // namespace
}  // namespace zal::test
