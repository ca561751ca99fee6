// The convolution and resampling primitives at the run's level and in the portable variant: each
// method forced in turn against a long double direct sum, the work buffer used to its queried
// size and no further from any alignment, tables kept or rebuilt between calls, and the exact
// status of every refusal with nothing written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "engine/core/dispatch.h"
#include "engine/primitives/convolution/convolution_plan.h"

namespace zal::test {
namespace {

using engine::kConvolutionAuto;
using engine::kConvolutionDirect;
using engine::kConvolutionTransform;

template <class T>
struct Primitives {
  const char* name;
  engine::ConvolutionSizeQuery* size;
  engine::Convolution<T>* convolve;
  engine::Resampling<T>* down;
  engine::Resampling<T>* up;
};

const Primitives<float> kFloat[] = {
    {"dispatch", &engine::dispatch::ConvolutionGetSize, &engine::dispatch::ConvolveF32,
     &engine::dispatch::DownSampleF32, &engine::dispatch::UpSampleF32},
    {"portable", &engine::portable::ConvolutionGetSize, &engine::portable::ConvolveF32,
     &engine::portable::DownSampleF32, &engine::portable::UpSampleF32}};
const Primitives<double> kDouble[] = {
    {"dispatch", &engine::dispatch::ConvolutionGetSize, &engine::dispatch::ConvolveF64,
     &engine::dispatch::DownSampleF64, &engine::dispatch::UpSampleF64},
    {"portable", &engine::portable::ConvolutionGetSize, &engine::portable::ConvolveF64,
     &engine::portable::DownSampleF64, &engine::portable::UpSampleF64}};

template <class T>
constexpr int kDataType = sizeof(T) == 4 ? engine::kConvolutionDataF32
                                         : engine::kConvolutionDataF64;

template <class T>
std::vector<T> Noise(int n, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<T> v(n);
  for (T& x : v) x = static_cast<T>(uniform(rng));
  return v;
}

// Largest |dst[k] - exact| / (sum|a| sum|b|) over every output.
template <class T>
double WorstError(const std::vector<T>& a, const std::vector<T>& b, const T* dst) {
  long double sum_a = 0;
  long double sum_b = 0;
  for (T x : a) sum_a += std::fabs(static_cast<long double>(x));
  for (T x : b) sum_b += std::fabs(static_cast<long double>(x));
  const long long la = static_cast<long long>(a.size());
  const long long lb = static_cast<long long>(b.size());
  double worst = 0;
  for (long long k = 0; k < la + lb - 1; ++k) {
    long double exact = 0;
    for (long long i = std::max(0LL, k - lb + 1); i < std::min(la, k + 1); ++i) {
      exact += static_cast<long double>(a[i]) * b[k - i];
    }
    worst = std::max(worst, static_cast<double>(std::fabs(dst[k] - exact) / (sum_a * sum_b)));
  }
  return worst;
}

int CeilLog2(long long n) {
  int order = 0;
  while ((1LL << order) < n) ++order;
  return order;
}

// The header's bounds: M u for direct summation, (3 log2 N + 8) u for the transform.
template <class T>
double Bound(int method, int len_a, int len_b) {
  const double unit = sizeof(T) == 4 ? 0x1p-24 : 0x1p-53;
  if (method == kConvolutionDirect) return std::min(len_a, len_b) * unit;
  return (3.0 * std::min(20, CeilLog2(static_cast<long long>(len_a) + len_b - 1)) + 8) * unit;
}

constexpr int kPairs[][2] = {{1, 1},     {1, 37},     {37, 1},     {2, 2},     {5, 3},
                             {16, 16},   {31, 33},    {64, 1000},  {1000, 64}, {127, 127},
                             {513, 600}, {700, 5003}, {4096, 300}, {2, 9000}};

// Each method forced, from a work buffer starting 4 bytes past a line (misaligned for every
// vector) and sized exactly as queried, with a guard word after it and one after dst.
template <class T>
void CheckMethods(const Primitives<T>& p) {
  for (const auto& pair : kPairs) {
    const int la = pair[0];
    const int lb = pair[1];
    const std::vector<T> a = Noise<T>(la, la * 31 + lb);
    const std::vector<T> b = Noise<T>(lb, la + 17 * lb);
    for (int method : {kConvolutionDirect, kConvolutionTransform}) {
      SCOPED_TRACE(testing::Message()
                   << p.name << " " << la << " x " << lb << " method " << method);
      int bytes = -1;
      ASSERT_EQ(p.size(la, lb, kDataType<T>, method, &bytes), engStsNoErr);
      std::vector<unsigned char> work(bytes + 4 + 8, 0xA5);
      std::vector<T> dst(la + lb, T(7));
      ASSERT_EQ(p.convolve(a.data(), la, b.data(), lb, dst.data(), method,
                           bytes ? work.data() + 4 : nullptr),
                engStsNoErr);
      EXPECT_EQ(dst.back(), T(7));
      EXPECT_TRUE(std::all_of(work.end() - 8, work.end(), [](int x) { return x == 0xA5; }));
      EXPECT_LE(WorstError(a, b, dst.data()), Bound<T>(method, la, lb));
    }
  }
}

TEST(Convolution, EachMethodWithinItsBoundInItsWorkBuffer) {
  for (const auto& p : kFloat) CheckMethods(p);
  for (const auto& p : kDouble) CheckMethods(p);
}

// The float query covers the double convolution in as many doubles, and 0 means direct summation
// for both.
TEST(Convolution, FloatQueryCoversDoubleWork) {
  for (const auto& pair : kPairs) {
    for (int method : {kConvolutionAuto, kConvolutionTransform}) {
      int single = -1;
      int twice = -1;
      engine::dispatch::ConvolutionGetSize(pair[0], pair[1], engine::kConvolutionDataF32, method,
                                           &single);
      engine::dispatch::ConvolutionGetSize(pair[0], pair[1], engine::kConvolutionDataF64, method,
                                           &twice);
      EXPECT_GE(2LL * single, twice);
      EXPECT_EQ(single == 0, twice == 0);
    }
  }
}

// The tables a call leaves serve the next one; damaged ones, or ones for another block length
// or element type, are rebuilt.
TEST(Convolution, KeptTablesServeOnlyWhenIntact) {
  const std::vector<float> a = Noise<float>(3000, 1);
  const std::vector<float> b = Noise<float>(500, 2);
  const std::vector<float> c = Noise<float>(90, 3);
  int bytes = 0;
  engine::dispatch::ConvolutionGetSize(3000, 500, engine::kConvolutionDataF32, kConvolutionAuto,
                                       &bytes);
  ASSERT_GT(bytes, 0);
  std::vector<unsigned char> work(bytes);
  std::vector<float> first(3499);
  std::vector<float> again(3499);
  auto run = [&](std::vector<float>& dst) {
    engine::dispatch::ConvolveF32(a.data(), 3000, b.data(), 500, dst.data(), kConvolutionAuto,
                                  work.data());
  };
  run(first);
  run(again);
  EXPECT_EQ(first, again);
  for (size_t at : {size_t{70}, work.size() / 4, work.size() / 2}) {
    work[at] ^= 0x40;
    run(again);
    EXPECT_EQ(first, again) << "byte " << at;
  }
  std::vector<float> other(3089);
  engine::dispatch::ConvolveF32(a.data(), 3000, c.data(), 90, other.data(), kConvolutionTransform,
                                work.data());
  EXPECT_LE(WorstError(a, c, other.data()), Bound<float>(kConvolutionTransform, 3000, 90));
  run(again);
  EXPECT_EQ(first, again);
}

TEST(Convolution, RefusalsReportTheirStatusAndWriteNothing) {
  const std::vector<float> a(100, 1.0f);
  std::vector<float> dst(200, 3.0f);
  std::vector<unsigned char> work(1 << 16);
  int bytes = 5;
  const struct {
    const float* a;
    int la;
    const float* b;
    int lb;
    float* dst;
    int method;
    unsigned char* work;
    EngStatus status;
  } kCalls[] = {
      {nullptr, 100, a.data(), 100, dst.data(), 0, work.data(), engStsNullPtrErr},
      {a.data(), 100, nullptr, 100, dst.data(), 0, work.data(), engStsNullPtrErr},
      {a.data(), 100, a.data(), 100, nullptr, 0, work.data(), engStsNullPtrErr},
      {a.data(), 0, a.data(), 100, dst.data(), 0, work.data(), engStsSizeErr},
      {a.data(), 100, a.data(), -1, dst.data(), 0, work.data(), engStsSizeErr},
      {a.data(), 0x7FFFFFFF, a.data(), 2, dst.data(), 0, work.data(), engStsSizeErr},
      {a.data(), 100, a.data(), 100, dst.data(), 3, work.data(), engStsAlgTypeErr},
      {a.data(), 100, a.data(), 100, dst.data(), -1, work.data(), engStsAlgTypeErr},
      {a.data(), 100, a.data(), 100, dst.data(), kConvolutionTransform, nullptr, engStsNullPtrErr},
  };
  for (const auto& p : kFloat) {
    for (const auto& c : kCalls) {
      EXPECT_EQ(p.convolve(c.a, c.la, c.b, c.lb, c.dst, c.method, c.work), c.status) << p.name;
    }
    EXPECT_EQ(p.size(100, 100, engine::kConvolutionDataF32, 0, nullptr), engStsNullPtrErr);
    EXPECT_EQ(p.size(0, 100, engine::kConvolutionDataF32, 0, &bytes), engStsSizeErr);
    EXPECT_EQ(p.size(100, 100, 12, 0, &bytes), engStsDataTypeErr);
    EXPECT_EQ(p.size(100, 100, engine::kConvolutionDataF32, 7, &bytes), engStsAlgTypeErr);
    EXPECT_EQ(bytes, 5);
  }
  EXPECT_EQ(dst, std::vector<float>(200, 3.0f));
}

// Null pointers, then the length, then the factor, then the phase: each refusal leaves dst, the
// output count and the phase as they were.
TEST(Resampling, RefusalsInTheirOrder) {
  const std::vector<double> src(64, 1.0);
  std::vector<double> dst(256, 5.0);
  const struct {
    const double* src;
    int len;
    double* dst;
    bool null_count;
    int factor;
    int phase;
    bool null_phase;
    EngStatus status;
  } kCalls[] = {
      {nullptr, 0, dst.data(), false, 0, -1, false, engStsNullPtrErr},
      {src.data(), 0, nullptr, false, 0, -1, false, engStsNullPtrErr},
      {src.data(), 0, dst.data(), true, 0, -1, false, engStsNullPtrErr},
      {src.data(), 0, dst.data(), false, 0, -1, true, engStsNullPtrErr},
      {src.data(), 0, dst.data(), false, 0, -1, false, engStsSizeErr},
      {src.data(), -64, dst.data(), false, 0, -1, false, engStsSizeErr},
      {src.data(), 64, dst.data(), false, 0, -1, false, engStsSampleFactorErr},
      {src.data(), 64, dst.data(), false, -2, 0, false, engStsSampleFactorErr},
      {src.data(), 64, dst.data(), false, 3, -1, false, engStsSamplePhaseErr},
      {src.data(), 64, dst.data(), false, 3, 3, false, engStsSamplePhaseErr},
      {src.data(), 0x10000000, dst.data(), false, 16, 0, false, engStsSizeErr},  // up only
  };
  for (const auto& p : kDouble) {
    for (const auto& c : kCalls) {
      for (auto* f : {p.down, p.up}) {
        if (c.len == 0x10000000 && f == p.down) continue;
        int count = -7;
        int phase = c.phase;
        EXPECT_EQ(f(c.src, c.len, c.dst, c.null_count ? nullptr : &count, c.factor,
                    c.null_phase ? nullptr : &phase),
                  c.status)
            << p.name;
        EXPECT_EQ(count, -7);
        EXPECT_EQ(phase, c.phase);
      }
    }
  }
  EXPECT_EQ(dst, std::vector<double>(256, 5.0));
}

// The kernels against the portable variant over factors (each lane-pick width and beyond),
// phases and lengths (tails of every size, several whole groups): the same samples, counts and
// phases, and nothing written past the outputs. src holds exactly len samples, so that a read
// past the block shows under the address sanitizer.
template <class T>
void MatchPortable(const Primitives<T>& level, const Primitives<T>& portable) {
  const T kUntouched = T(-9);
  for (int factor : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 13, 16, 17, 64, 301}) {
    for (int len : {1, 2, 3, 7, 31, 64, 299, 300, 1000, 4099}) {
      const std::vector<T> src = Noise<T>(len, 9 + len);
      for (int phase0 : {0, 1, factor / 2, factor - 1}) {
        if (phase0 >= factor) continue;
        SCOPED_TRACE(testing::Message() << factor << " " << len << " " << phase0);
        std::vector<T> got(len * factor + 1, kUntouched);
        std::vector<T> want(len * factor + 1, kUntouched);
        int got_count = -1;
        int want_count = -1;
        int got_phase = phase0;
        int want_phase = phase0;
        level.down(src.data(), len, got.data(), &got_count, factor, &got_phase);
        portable.down(src.data(), len, want.data(), &want_count, factor, &want_phase);
        EXPECT_EQ(got, want);
        EXPECT_EQ(got_count, want_count);
        EXPECT_EQ(got_phase, want_phase);
        EXPECT_EQ(got[got_count], kUntouched);
        got_phase = want_phase = phase0;
        level.up(src.data(), len, got.data(), &got_count, factor, &got_phase);
        portable.up(src.data(), len, want.data(), &want_count, factor, &want_phase);
        EXPECT_EQ(got, want);
        EXPECT_EQ(got_count, len * factor);
        EXPECT_EQ(got_phase, phase0);
        EXPECT_EQ(got.back(), kUntouched);
      }
    }
  }
}

TEST(Resampling, LevelMatchesPortable) {
  MatchPortable(kFloat[0], kFloat[1]);
  MatchPortable(kDouble[0], kDouble[1]);
}

}  // namespace
}  // namespace zal::test
