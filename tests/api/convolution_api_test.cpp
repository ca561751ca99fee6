// Convolution and resampling through the exported interface: accuracy against a long double direct
// sum over length pairs from 1 x 1 to 65536 x 4096, the work-buffer and allocating forms alike,
// the silent refusals, and streams decimated and interpolated block by block.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "zalaccelerate/utility.h"

namespace {

using namespace zalaccelerate::utility;

template <class T>
std::vector<T> Noise(unsigned n, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<T> v(n);
  for (T& x : v) x = static_cast<T>(uniform(rng));
  return v;
}

// The exact output k, summed in long double.
template <class T>
long double Exact(const std::vector<T>& a, const std::vector<T>& b, long long k) {
  const long long first = std::max(0LL, k - static_cast<long long>(b.size()) + 1);
  const long long end = std::min(static_cast<long long>(a.size()), k + 1);
  long double sum = 0;
  for (long long i = first; i < end; ++i) {
    sum += static_cast<long double>(a[i]) * static_cast<long double>(b[k - i]);
  }
  return sum;
}

template <class T>
long double SumAbs(const std::vector<T>& v) {
  long double sum = 0;
  for (T x : v) sum += std::fabs(static_cast<long double>(x));
  return sum;
}

int CeilLog2(long long n) {
  int order = 0;
  while ((1LL << order) < n) ++order;
  return order;
}

// The header's bound for the method the lengths get: no work buffer means direct summation.
template <class T>
double Bound(unsigned len_a, unsigned len_b) {
  const double unit = sizeof(T) == 4 ? 0x1p-24 : 0x1p-53;
  if (ConvolutionWorkBufferSize(len_a, len_b) == 0) return std::min(len_a, len_b) * unit;
  const int order = std::min(20, CeilLog2(static_cast<long long>(len_a) + len_b - 1));
  return (3.0 * order + 8) * unit;
}

struct LengthPair {
  unsigned a;
  unsigned b;
  int checked_outputs;  // 0: every output; otherwise this many, spread over the result
};

const LengthPair kPairs[] = {
    {1, 1, 0},      {1, 1000, 0},   {1000, 1, 0},       {3, 5, 0},          {16, 16, 0},
    {17, 31, 0},    {31, 17, 0},    {63, 64, 0},        {64, 64, 0},        {64, 4099, 0},
    {127, 8191, 0}, {257, 509, 0},  {1021, 1019, 0},    {4096, 4096, 0},    {4099, 257, 0},
    {65536, 16, 0}, {16, 65536, 0}, {65537, 4093, 300}, {65536, 4096, 300},
};

template <class T>
void CheckAccuracy(bool with_work) {
  for (const LengthPair& pair : kPairs) {
    SCOPED_TRACE(testing::Message() << pair.a << " x " << pair.b << (with_work ? " work" : ""));
    const std::vector<T> a = Noise<T>(pair.a, pair.a * 7 + pair.b);
    const std::vector<T> b = Noise<T>(pair.b, pair.a + pair.b * 13);
    const long long outputs = static_cast<long long>(pair.a) + pair.b - 1;
    // One guard element past the result, which must keep its value.
    std::vector<T> dst(outputs + 1, T(42));
    if (with_work) {
      const unsigned long long floats = ConvolutionWorkBufferSize(pair.a, pair.b);
      std::vector<T> work(floats + 1);
      Convolve(pair.a, a.data(), pair.b, b.data(), dst.data(), floats ? work.data() : nullptr);
    } else {
      Convolve(pair.a, a.data(), pair.b, b.data(), dst.data());
    }
    EXPECT_EQ(dst[outputs], T(42));
    const long double scale = SumAbs(a) * SumAbs(b);
    const double bound = Bound<T>(pair.a, pair.b);
    const long long stride = pair.checked_outputs ? outputs / pair.checked_outputs : 1;
    double worst = 0;
    for (long long k = 0; k < outputs; k += stride) {
      worst = std::max(worst, static_cast<double>(std::fabs(dst[k] - Exact(a, b, k)) / scale));
    }
    EXPECT_LE(worst, bound);
  }
}

TEST(ConvolutionApi, FloatWithinTheStatedBoundsOfEitherMethod) {
  CheckAccuracy<float>(true);
  CheckAccuracy<float>(false);
}

TEST(ConvolutionApi, DoubleWithinTheStatedBoundsOfEitherMethod) {
  CheckAccuracy<double>(true);
  CheckAccuracy<double>(false);
}

TEST(ConvolutionApi, SmallCasesComeOutExactly) {
  const float a[] = {1, 2, 3};
  const float b[] = {0, 1, 0.5f};
  float dst[5];
  Convolve(3, a, 3, b, dst);
  EXPECT_EQ(std::vector<float>(dst, dst + 5), (std::vector<float>{0, 1, 2.5f, 4, 1.5f}));

  const double x[] = {1, -2, 0.25};
  const double c[] = {4};
  double scaled[3];
  Convolve(3, x, 1, c, scaled, nullptr);
  EXPECT_EQ(std::vector<double>(scaled, scaled + 3), (std::vector<double>{4, -8, 1}));
}

// The double work buffer has as many elements as the float query gives, and it serves again
// after the caller scribbled over it.
TEST(ConvolutionApi, ReusedAndOverwrittenWorkBuffersGiveTheSameResult) {
  const std::vector<double> a = Noise<double>(3000, 1);
  const std::vector<double> b = Noise<double>(700, 2);
  const unsigned long long count = ConvolutionWorkBufferSize(3000, 700);
  ASSERT_GT(count, 0u);
  std::vector<double> work(count);
  std::vector<double> first(3699);
  std::vector<double> again(3699);
  Convolve(3000, a.data(), 700, b.data(), first.data(), work.data());
  Convolve(3000, a.data(), 700, b.data(), again.data(), work.data());
  EXPECT_EQ(first, again);
  std::fill(work.begin() + work.size() / 3, work.end(), 1.5);
  Convolve(3000, a.data(), 700, b.data(), again.data(), work.data());
  EXPECT_EQ(first, again);
}

TEST(ConvolutionApi, RefusedCallsWriteNothing) {
  const std::vector<float> a = Noise<float>(300, 3);
  const std::vector<float> untouched(700, 9.0f);
  std::vector<float> dst = untouched;
  std::vector<float> work(ConvolutionWorkBufferSize(300, 300));
  Convolve(0, a.data(), 300, a.data(), dst.data(), work.data());
  Convolve(300, a.data(), 0, a.data(), dst.data());
  Convolve(0x80000000u, a.data(), 300, a.data(), dst.data(), work.data());
  Convolve(300, a.data(), 0xFFFFFFFFu, a.data(), dst.data());
  Convolve(300, nullptr, 300, a.data(), dst.data(), work.data());
  Convolve(300, a.data(), 300, nullptr, dst.data());
  Convolve(300, a.data(), 300, a.data(), nullptr, work.data());
  Convolve(300, a.data(), 300, a.data(), dst.data(), nullptr);  // the transform needs work
  EXPECT_EQ(dst, untouched);
  EXPECT_EQ(ConvolutionWorkBufferSize(0, 300), 0u);
  EXPECT_EQ(ConvolutionWorkBufferSize(0x80000000u, 300), 0u);
  EXPECT_EQ(ConvolutionWorkBufferSize(0x7FFFFFFFu, 2), 0u);  // the result would not fit
  EXPECT_EQ(ConvolutionWorkBufferSize(16, 1 << 20), 0u);     // summed directly
}

// ---- Resampling

struct ResamplingCase {
  std::vector<float> src;
  unsigned factor;
  unsigned phase;
  std::vector<float> down;
  unsigned down_phase;
  std::vector<float> up;
};

const ResamplingCase kResamplingCases[] = {
    {{1, 2, 3, 4, 5}, 2, 0, {1, 3, 5}, 1, {1, 0, 2, 0, 3, 0, 4, 0, 5, 0}},
    {{6, 7}, 2, 1, {7}, 1, {0, 6, 0, 7}},
    {{1, 2}, 3, 2, {}, 0, {0, 0, 1, 0, 0, 2}},
    {{1, 2, 3}, 5, 4, {}, 1, {0, 0, 0, 0, 1, 0, 0, 0, 0, 2, 0, 0, 0, 0, 3}},
    {{1, 2, 3}, 1, 0, {1, 2, 3}, 0, {1, 2, 3}},
    {{1, 2, 3, 4, 5, 6, 7}, 3, 1, {2, 5}, 0, {}},
};

TEST(ResamplingApi, TableOfSmallCases) {
  for (const ResamplingCase& c : kResamplingCases) {
    SCOPED_TRACE(testing::Message() << "factor " << c.factor << " phase " << c.phase);
    const unsigned len = static_cast<unsigned>(c.src.size());
    std::vector<float> dst(len * c.factor + 1, -1.0f);
    unsigned phase = c.phase;
    DownSample(len, c.src.data(), dst.data(), c.factor, &phase);
    EXPECT_EQ(std::vector<float>(dst.begin(), dst.begin() + c.down.size()), c.down);
    EXPECT_EQ(dst[c.down.size()], -1.0f);
    EXPECT_EQ(phase, c.down_phase);
    if (c.up.empty()) continue;
    std::vector<double> src_double(c.src.begin(), c.src.end());
    std::vector<double> up(c.up.size() + 1, -1.0);
    phase = c.phase;
    UpSample(len, src_double.data(), up.data(), c.factor, &phase);
    EXPECT_EQ(std::vector<double>(up.begin(), up.end() - 1),
              std::vector<double>(c.up.begin(), c.up.end()));
    EXPECT_EQ(up.back(), -1.0);
    EXPECT_EQ(phase, c.phase);
  }
}

TEST(ResamplingApi, RefusalsLeaveDestinationAndPhaseAlone) {
  const std::vector<double> src(64, 1.0);
  std::vector<double> dst(256, 5.0);
  const struct {
    const double* src;
    double* dst;
    unsigned len;
    unsigned factor;
    unsigned phase;
    bool null_phase;
  } kRefused[] = {
      {nullptr, dst.data(), 64, 2, 0, false},
      {src.data(), nullptr, 64, 2, 0, false},
      {src.data(), dst.data(), 64, 2, 0, true},
      {src.data(), dst.data(), 0, 2, 0, false},
      {src.data(), dst.data(), 0x80000000u, 2, 0, false},
      {src.data(), dst.data(), 64, 0, 0, false},
      {src.data(), dst.data(), 64, 0x80000000u, 0, false},
      {src.data(), dst.data(), 64, 4, 4, false},
      {src.data(), dst.data(), 64, 4, 0xFFFFFFFFu, false},
  };
  for (const auto& r : kRefused) {
    unsigned phase = r.phase;
    DownSample(r.len, r.src, r.dst, r.factor, r.null_phase ? nullptr : &phase);
    UpSample(r.len, r.src, r.dst, r.factor, r.null_phase ? nullptr : &phase);
    EXPECT_EQ(phase, r.phase);
  }
  EXPECT_EQ(dst, std::vector<double>(256, 5.0));
}

// Blocks of awkward sizes through one stream equal one long call, for both directions.
TEST(ResamplingApi, BlockByBlockEqualsOneLongCall) {
  const std::vector<float> stream = Noise<float>(1000, 4);
  const unsigned kBlocks[] = {1, 7, 2, 64, 3, 129, 5, 300, 11, 478};  // 1000 in all
  for (unsigned factor : {1u, 2u, 3u, 4u, 7u, 16u, 1000u, 5000u}) {
    SCOPED_TRACE(factor);
    for (unsigned start_phase : {0u, factor - 1, factor / 2}) {
      std::vector<float> whole(1000);
      unsigned phase = start_phase;
      DownSample(1000, stream.data(), whole.data(), factor, &phase);
      const unsigned whole_count =
          start_phase < 1000 ? (1000 - start_phase + factor - 1) / factor : 0;
      const unsigned final_phase = phase;

      std::vector<float> pieces(1000);
      unsigned written = 0;
      unsigned offset = 0;
      phase = start_phase;
      for (unsigned block : kBlocks) {
        const unsigned count = phase < block ? (block - phase + factor - 1) / factor : 0;
        DownSample(block, stream.data() + offset, pieces.data() + written, factor, &phase);
        written += count;
        offset += block;
      }
      EXPECT_EQ(written, whole_count);
      EXPECT_EQ(phase, final_phase);
      EXPECT_TRUE(std::equal(whole.begin(), whole.begin() + whole_count, pieces.begin()));

      if (factor > 16) continue;
      std::vector<float> up_whole(1000 * factor);
      phase = start_phase;
      UpSample(1000, stream.data(), up_whole.data(), factor, &phase);
      std::vector<float> up_pieces(1000 * factor);
      offset = 0;
      for (unsigned block : kBlocks) {
        UpSample(block, stream.data() + offset, up_pieces.data() + offset * factor, factor, &phase);
        offset += block;
      }
      EXPECT_EQ(phase, start_phase);
      EXPECT_EQ(up_whole, up_pieces);
    }
  }
}

}  // namespace
