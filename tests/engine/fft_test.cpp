// The transform primitives at the run's level (and the portable variant), every kind: accuracy
// against an extended-precision reference (a direct DFT up to 4096 points, a long double FFT
// above) within 1.25 times the error of FFTW's own transform of the same data; round trips,
// impulses, shifts and linearity for large lengths; the packed real layout; aliasing; refusals.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "engine/core/dispatch.h"
#include "engine/primitives/fft/fft_spec.h"
#include "tests/engine/fft_reference.h"

namespace zal::test {
namespace {

using engine::FFTSpec;

enum class Layout { kReal, kInterleaved, kSplit };

// One kind's four primitives at one level.
template <class T, Layout L>
struct Kind {
  using Element = std::conditional_t<
      L == Layout::kInterleaved,
      std::conditional_t<std::is_same_v<T, float>, engine::Complex32, engine::Complex64>, T>;
  using Transform = std::conditional_t<L == Layout::kSplit, engine::FFTSplitTransform<T>,
                                       engine::FFTTransform<Element>>;
  const char* name;
  engine::FFTGetSize* get_size;
  engine::FFTInit* init;
  Transform* fwd;
  Transform* inv;
};

#define ZAL_KIND(ns, K) \
  { #ns "::" #K, &ns::FFTGetSize##K, &ns::FFTInit##K, &ns::FFTFwd##K, &ns::FFTInv##K }

const Kind<float, Layout::kReal> kRealF32[] = {ZAL_KIND(engine::dispatch, RealF32),
                                               ZAL_KIND(engine::portable, RealF32)};
const Kind<double, Layout::kReal> kRealF64[] = {ZAL_KIND(engine::dispatch, RealF64),
                                                ZAL_KIND(engine::portable, RealF64)};
const Kind<float, Layout::kInterleaved> kComplexF32[] = {ZAL_KIND(engine::dispatch, ComplexF32),
                                                         ZAL_KIND(engine::portable, ComplexF32)};
const Kind<double, Layout::kInterleaved> kComplexF64[] = {ZAL_KIND(engine::dispatch, ComplexF64),
                                                          ZAL_KIND(engine::portable, ComplexF64)};
const Kind<float, Layout::kSplit> kSplitF32[] = {ZAL_KIND(engine::dispatch, SplitF32),
                                                 ZAL_KIND(engine::portable, SplitF32)};
const Kind<double, Layout::kSplit> kSplitF64[] = {ZAL_KIND(engine::dispatch, SplitF64),
                                                  ZAL_KIND(engine::portable, SplitF64)};
#undef ZAL_KIND

// A prepared spec and its work buffer.
template <class T, Layout L>
struct Prepared {
  Prepared(const Kind<T, L>& kind, int order) {
    int spec_size = 0;
    int init_size = 0;
    int work_size = 0;
    status = kind.get_size(order, engine::kFFTDivInvByN, 1, &spec_size, &init_size, &work_size);
    if (status != engStsNoErr) return;
    block.resize(static_cast<size_t>(spec_size));
    work.resize(static_cast<size_t>(work_size));
    status = kind.init(&spec, order, engine::kFFTDivInvByN, 1, block.data(), nullptr);
  }
  EngStatus status = engStsNoErr;
  FFTSpec* spec = nullptr;
  std::vector<unsigned char> block;
  std::vector<unsigned char> work;
};

// Runs one transform on the canonical layout: interleaved (re, im) pairs for complex kinds,
// samples or the packed spectrum for real ones. Split kinds go through separate arrays.
template <class T, Layout L>
EngStatus Run(const Kind<T, L>& kind, bool inverse, Prepared<T, L>& p, const std::vector<T>& src,
              std::vector<T>& dst) {
  auto* fn = inverse ? kind.inv : kind.fwd;
  unsigned char* work = p.work.empty() ? nullptr : p.work.data();
  if constexpr (L == Layout::kSplit) {
    const size_t n = src.size() / 2;
    std::vector<T> re(n), im(n), out_re(n), out_im(n);
    for (size_t i = 0; i < n; ++i) {
      re[i] = src[2 * i];
      im[i] = src[2 * i + 1];
      out_re[i] = dst[2 * i];
      out_im[i] = dst[2 * i + 1];
    }
    const EngStatus status = fn(re.data(), im.data(), out_re.data(), out_im.data(), p.spec, work);
    for (size_t i = 0; i < n; ++i) {
      dst[2 * i] = out_re[i];
      dst[2 * i + 1] = out_im[i];
    }
    return status;
  } else {
    using E = typename Kind<T, L>::Element;
    return fn(reinterpret_cast<const E*>(src.data()), reinterpret_cast<E*>(dst.data()), p.spec,
              work);
  }
}

// Debug and sanitizer builds run the references unoptimised: fewer and shorter lengths there.
#ifdef NDEBUG
constexpr int kAccuracyOrders[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 19};
constexpr int kIdentityOrders[] = {13, 16, 17};
#else
constexpr int kAccuracyOrders[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 14};
constexpr int kIdentityOrders[] = {13};
#endif

template <class T>
constexpr double kEpsilon = std::numeric_limits<T>::epsilon();

// Values exactly representable in float, so that every kind sees the same data.
std::vector<long double> RandomValues(size_t count, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<float> dist(-1.0f, 1.0f);
  std::vector<long double> v(count);
  for (auto& x : v) x = dist(rng);
  return v;
}

// Input and exact output of one transform in the canonical layout.
struct Case {
  std::vector<long double> in;
  std::vector<long double> out;
};

Case ComplexCase(int order, bool inverse, unsigned seed) {
  const size_t n = size_t{1} << order;
  Case c{RandomValues(2 * n, seed), {}};
  c.out = ReferenceComplex(c.in, inverse);
  return c;
}

// Inverse real input is a packed spectrum: bins 0 and N/2 real.
Case RealCase(int order, bool inverse, unsigned seed) {
  const size_t n = size_t{1} << order;
  Case c{RandomValues(inverse ? n + 2 : n, seed), {}};
  if (inverse) {
    c.in[1] = 0;
    c.in[n + 1] = 0;
    if (n == 1) c.in[0] = 0.5L;
  }
  c.out = inverse ? ReferenceRealInverse(c.in) : ReferenceRealForward(c.in);
  return c;
}

template <class T>
std::vector<T> Rounded(const std::vector<long double>& v) {
  return std::vector<T>(v.begin(), v.end());
}

template <class T, Layout L>
void CheckAccuracy(const Kind<T, L>& kind, int order, bool inverse, const Case& c) {
  SCOPED_TRACE(testing::Message() << kind.name << " order " << order
                                  << (inverse ? " inverse" : " forward"));
  Prepared<T, L> p(kind, order);
  ASSERT_EQ(p.status, engStsNoErr);
  const std::vector<T> src = Rounded<T>(c.in);
  std::vector<T> dst(c.out.size(), T(-7));
  ASSERT_EQ(Run(kind, inverse, p, src, dst), engStsNoErr);
  const double error = RelativeRmsError(dst, c.out);
  const double peer = PeerRelativeRmsError<T>(L == Layout::kReal, inverse, order, src, c.out);
  // Lengths up to 2 are exact or nearly so for both: bound them by the precision instead.
  const double bound = std::max(1.25 * peer, kEpsilon<T>);
  EXPECT_LE(error, bound) << "peer error " << peer;
}

// The portable variant, the same algorithm one lane wide, up to 4096 points.
template <class T, Layout L>
void CheckAllAccuracy(const Kind<T, L> (&kinds)[2], int order, const Case& fwd, const Case& inv) {
  for (int i = 0; i < (order <= 12 ? 2 : 1); ++i) {
    CheckAccuracy(kinds[i], order, false, fwd);
    CheckAccuracy(kinds[i], order, true, inv);
  }
}

// Orders 0..16 and a long one; exact DFTs up to 4096 points.
TEST(FFT, AccuracyWithinPeerBoundEveryKind) {
  for (int order : kAccuracyOrders) {
    if (order > 12 && !HavePeer()) break;  // no exact reference that long
    const unsigned seed = 100 + static_cast<unsigned>(order);
    const Case complex_fwd = ComplexCase(order, false, seed);
    const Case complex_inv = ComplexCase(order, true, seed + 1);
    const Case real_fwd = RealCase(order, false, seed + 2);
    const Case real_inv = RealCase(order, true, seed + 3);
    CheckAllAccuracy(kComplexF32, order, complex_fwd, complex_inv);
    CheckAllAccuracy(kComplexF64, order, complex_fwd, complex_inv);
    CheckAllAccuracy(kSplitF32, order, complex_fwd, complex_inv);
    CheckAllAccuracy(kSplitF64, order, complex_fwd, complex_inv);
    CheckAllAccuracy(kRealF32, order, real_fwd, real_inv);
    CheckAllAccuracy(kRealF64, order, real_fwd, real_inv);
  }
}

// Identities that need no reference: forward then inverse returns the input; an impulse at m
// transforms to exp(-2 pi i m k / N); a circular shift by s multiplies bin k by
// exp(-2 pi i s k / N); the transform of a sum is the sum of the transforms.
template <class T, Layout L>
void CheckIdentities(const Kind<T, L>& kind, int order) {
  SCOPED_TRACE(testing::Message() << kind.name << " order " << order);
  const size_t n = size_t{1} << order;
  const bool real = L == Layout::kReal;
  const size_t in_size = real ? n : 2 * n;
  const size_t out_size = real ? n + 2 : 2 * n;
  const double bound = 2 * kEpsilon<T> * (1 + order);
  Prepared<T, L> p(kind, order);
  ASSERT_EQ(p.status, engStsNoErr);
  const std::vector<long double> x = RandomValues(in_size, 7 + static_cast<unsigned>(order));
  const std::vector<long double> y = RandomValues(in_size, 9 + static_cast<unsigned>(order));
  auto forward = [&](const std::vector<long double>& v) {
    std::vector<T> out(out_size);
    EXPECT_EQ(Run(kind, false, p, Rounded<T>(v), out), engStsNoErr);
    return std::vector<long double>(out.begin(), out.end());
  };
  const std::vector<long double> fx = forward(x);
  {
    std::vector<T> back(in_size);
    EXPECT_EQ(Run(kind, true, p, Rounded<T>(fx), back), engStsNoErr);
    EXPECT_LE(RelativeRmsError(back, x), bound) << "round trip";
  }
  {
    const size_t m = n / 3;
    std::vector<long double> impulse(in_size, 0);
    impulse[real ? m : 2 * m] = 1;
    EXPECT_LE(RelativeRmsError(forward(impulse), ImpulseSpectrum(n, m, real)), bound) << "impulse";
  }
  {
    const size_t s = n / 4 + 1;
    const size_t step = real ? 1 : 2;
    std::vector<long double> shifted(in_size);
    for (size_t i = 0; i < n; ++i) {
      for (size_t part = 0; part < step; ++part) {
        shifted[((i + s) % n) * step + part] = x[i * step + part];
      }
    }
    EXPECT_LE(RelativeRmsError(forward(shifted), ShiftedSpectrum(fx, n, s)), bound) << "shift";
  }
  {
    std::vector<long double> sum(in_size);
    for (size_t i = 0; i < in_size; ++i) sum[i] = x[i] + y[i];
    const std::vector<long double> fy = forward(y);
    std::vector<long double> expected(out_size);
    for (size_t i = 0; i < out_size; ++i) expected[i] = fx[i] + fy[i];
    EXPECT_LE(RelativeRmsError(forward(sum), expected), bound) << "linearity";
  }
}

TEST(FFT, IdentitiesHoldForLongLengths) {
  for (int order : kIdentityOrders) {
    for (int i = 0; i < 2; ++i) {
      CheckIdentities(kRealF32[i], order);
      CheckIdentities(kRealF64[i], order);
      CheckIdentities(kComplexF32[i], order);
      CheckIdentities(kComplexF64[i], order);
      CheckIdentities(kSplitF32[i], order);
      CheckIdentities(kSplitF64[i], order);
    }
  }
}

// Forward writes exactly N + 2 values with dst[1] = dst[N+1] = 0; a constant c gives N c in bin 0
// and nothing elsewhere; the inverse writes exactly N samples.
template <class T>
void CheckPackedLayout(const Kind<T, Layout::kReal>& kind, int order) {
  SCOPED_TRACE(testing::Message() << kind.name << " order " << order);
  const size_t n = size_t{1} << order;
  Prepared<T, Layout::kReal> p(kind, order);
  ASSERT_EQ(p.status, engStsNoErr);
  const T c = T(1.5);
  const std::vector<T> src(n, c);
  std::vector<T> dst(n + 2 + 8, T(-7));
  ASSERT_EQ(kind.fwd(src.data(), dst.data(), p.spec, p.work.data()), engStsNoErr);
  EXPECT_EQ(dst[0], c * static_cast<T>(n));
  EXPECT_EQ(dst[1], T(0));
  EXPECT_EQ(dst[n + 1], T(0));
  for (size_t i = 2; i < n + 2; ++i) EXPECT_EQ(dst[i], T(0)) << i;
  for (size_t i = n + 2; i < dst.size(); ++i) EXPECT_EQ(dst[i], T(-7)) << "past the end " << i;
  std::vector<T> back(n + 8, T(-7));
  ASSERT_EQ(kind.inv(dst.data(), back.data(), p.spec, p.work.data()), engStsNoErr);
  for (size_t i = 0; i < n; ++i) EXPECT_EQ(back[i], c) << i;
  for (size_t i = n; i < back.size(); ++i) EXPECT_EQ(back[i], T(-7)) << "past the end " << i;
}

TEST(FFT, PackedRealLayout) {
  for (int order : {0, 1, 2, 3, 4, 8, 10, 13}) {
    for (int i = 0; i < 2; ++i) {
      CheckPackedLayout(kRealF32[i], order);
      CheckPackedLayout(kRealF64[i], order);
    }
  }
}

// src == dst gives the same bits as separate buffers.
template <class T, Layout L>
void CheckInPlace(const Kind<T, L>& kind, int order) {
  SCOPED_TRACE(testing::Message() << kind.name << " order " << order);
  const size_t n = size_t{1} << order;
  Prepared<T, L> p(kind, order);
  ASSERT_EQ(p.status, engStsNoErr);
  unsigned char* work = p.work.empty() ? nullptr : p.work.data();
  for (bool inverse : {false, true}) {
    const size_t size = L == Layout::kReal ? n + 2 : 2 * n;
    std::vector<T> src = Rounded<T>(RandomValues(size, 3));
    if (L == Layout::kReal && inverse) src[1] = src[n + 1] = 0;
    std::vector<T> expected(size);
    ASSERT_EQ(Run(kind, inverse, p, src, expected), engStsNoErr);
    std::vector<T> data = src;
    auto* fn = inverse ? kind.inv : kind.fwd;
    if constexpr (L == Layout::kSplit) {
      std::vector<T> re(n), im(n);
      for (size_t i = 0; i < n; ++i) {
        re[i] = src[2 * i];
        im[i] = src[2 * i + 1];
      }
      ASSERT_EQ(fn(re.data(), im.data(), re.data(), im.data(), p.spec, work), engStsNoErr);
      for (size_t i = 0; i < n; ++i) {
        data[2 * i] = re[i];
        data[2 * i + 1] = im[i];
      }
    } else {
      using E = typename Kind<T, L>::Element;
      auto* d = reinterpret_cast<E*>(data.data());
      ASSERT_EQ(fn(d, d, p.spec, work), engStsNoErr);
    }
    const size_t compared = L == Layout::kReal && inverse ? n : size;
    for (size_t i = 0; i < compared; ++i) ASSERT_EQ(data[i], expected[i]) << i;
  }
}

// Orders 13..16 reach every closing radix of the multi-pass cores, at both parities of the pass
// count (which picks the buffer a real kind's core result lands in).
TEST(FFT, InPlaceMatchesOutOfPlace) {
  for (int order : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 13, 14, 15, 16}) {
    for (int i = 0; i < 2; ++i) {
      CheckInPlace(kRealF32[i], order);
      CheckInPlace(kRealF64[i], order);
      CheckInPlace(kComplexF32[i], order);
      CheckInPlace(kComplexF64[i], order);
      CheckInPlace(kSplitF32[i], order);
      CheckInPlace(kSplitF64[i], order);
    }
  }
}

// Preparation and transforms stay within the prepared block and the work buffer they sized: guard
// bytes after both survive a forward and an inverse run.
template <class T, Layout L>
void CheckWithinSizedBuffers(const Kind<T, L>& kind, int order) {
  SCOPED_TRACE(testing::Message() << kind.name << " order " << order);
  constexpr size_t kGuard = 4096;
  constexpr unsigned char kMark = 0xA5;
  int spec_size = 0;
  int init_size = 0;
  int work_size = 0;
  ASSERT_EQ(kind.get_size(order, engine::kFFTDivInvByN, 1, &spec_size, &init_size, &work_size),
            engStsNoErr);
  Prepared<T, L> p(kind, order);
  p.block.assign(static_cast<size_t>(spec_size) + kGuard, kMark);
  p.work.assign(static_cast<size_t>(work_size) + kGuard, kMark);
  ASSERT_EQ(kind.init(&p.spec, order, engine::kFFTDivInvByN, 1, p.block.data(), nullptr),
            engStsNoErr);
  const size_t n = size_t{1} << order;
  const size_t size = L == Layout::kReal ? n + 2 : 2 * n;
  std::vector<T> src = Rounded<T>(RandomValues(size, 5));
  if (L == Layout::kReal) src[1] = src[n + 1] = 0;
  std::vector<T> dst(size);
  ASSERT_EQ(Run(kind, false, p, src, dst), engStsNoErr);
  ASSERT_EQ(Run(kind, true, p, src, dst), engStsNoErr);
  const auto marked = [&](const std::vector<unsigned char>& v, size_t from) {
    return std::all_of(v.begin() + static_cast<std::ptrdiff_t>(from), v.end(),
                       [&](unsigned char b) { return b == kMark; });
  };
  EXPECT_TRUE(marked(p.block, static_cast<size_t>(spec_size)));
  EXPECT_TRUE(marked(p.work, static_cast<size_t>(work_size)));
}

TEST(FFT, StaysWithinSizedBuffers) {
  for (int order : {5, 12, 13, 14, 15, 16, 17}) {
    CheckWithinSizedBuffers(kRealF32[0], order);
    CheckWithinSizedBuffers(kRealF64[0], order);
    CheckWithinSizedBuffers(kComplexF32[0], order);
    CheckWithinSizedBuffers(kComplexF64[0], order);
    CheckWithinSizedBuffers(kSplitF32[0], order);
    CheckWithinSizedBuffers(kSplitF64[0], order);
  }
}

TEST(FFT, SizeQueryRefusals) {
  for (const auto& kind : kSplitF32) {
    int spec = -1, init = -1, work = -1;
    EXPECT_EQ(kind.get_size(25, engine::kFFTDivInvByN, 1, &spec, &init, &work), engStsFftOrderErr);
    EXPECT_EQ(kind.get_size(-1, engine::kFFTDivInvByN, 1, &spec, &init, &work), engStsFftOrderErr);
    EXPECT_EQ(kind.get_size(10, 1, 1, &spec, &init, &work), engStsFftFlagErr);
    EXPECT_EQ(kind.get_size(10, engine::kFFTDivInvByN, 1, nullptr, &init, &work), engStsNullPtrErr);
    EXPECT_EQ(spec, -1);
    EXPECT_EQ(kind.get_size(24, engine::kFFTDivInvByN, 1, &spec, &init, &work), engStsNoErr);
    EXPECT_EQ(init, 0);
    EXPECT_GT(work, 0);
    EXPECT_EQ(kind.get_size(0, engine::kFFTDivInvByN, 1, &spec, &init, &work), engStsNoErr);
    EXPECT_EQ(work, 0);
  }
  for (const auto& kind : kRealF64) {
    int spec, init, work;
    EXPECT_EQ(kind.get_size(1, engine::kFFTDivInvByN, 1, &spec, &init, &work), engStsNoErr);
    EXPECT_EQ(work, 0);
    EXPECT_EQ(kind.init(nullptr, 1, engine::kFFTDivInvByN, 1, nullptr, nullptr), engStsNullPtrErr);
  }
}

// Null pointers, a missing work buffer and a spec of another kind or level are refused before
// the destination is touched.
TEST(FFT, TransformRefusalsLeaveDestination) {
  const int order = 9;
  const size_t n = size_t{1} << order;
  const auto& kind = kComplexF32[0];
  Prepared<float, Layout::kInterleaved> p(kind, order);
  ASSERT_EQ(p.status, engStsNoErr);
  std::vector<engine::Complex32> src(n, {1, 2});
  std::vector<engine::Complex32> dst(n, {-7, -7});
  auto untouched = [&] {
    for (const auto& v : dst) {
      if (v.re != -7 || v.im != -7) return false;
    }
    return true;
  };
  EXPECT_EQ(kind.fwd(src.data(), dst.data(), nullptr, p.work.data()), engStsNullPtrErr);
  EXPECT_EQ(kind.inv(nullptr, dst.data(), p.spec, p.work.data()), engStsNullPtrErr);
  EXPECT_EQ(kind.fwd(src.data(), dst.data(), p.spec, nullptr), engStsNullPtrErr);
  Prepared<float, Layout::kInterleaved> portable(kComplexF32[1], order);
  EXPECT_EQ(kind.fwd(src.data(), dst.data(), portable.spec, p.work.data()), engStsContextMatchErr);
  Prepared<float, Layout::kSplit> split(kSplitF32[0], order);
  EXPECT_EQ(kind.fwd(src.data(), dst.data(), split.spec, p.work.data()), engStsContextMatchErr);
  EXPECT_TRUE(untouched());
  std::vector<float> re(n, 1), dst_re(n, -7);
  EXPECT_EQ(kSplitF32[0].fwd(re.data(), nullptr, dst_re.data(), dst_re.data(), split.spec,
                             split.work.data()),
            engStsNullPtrErr);
  EXPECT_EQ(dst_re[0], -7);
}

}  // namespace
}  // namespace zal::test
