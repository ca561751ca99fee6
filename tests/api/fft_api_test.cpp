// The transform interface through the shared library: the state records' life (every FFTInit
// path that a caller can reach), the transforms of all six kinds end to end, and FFTImpl.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <type_traits>
#include <vector>

#include "zalaccelerate/transform.h"
#include "zalaccelerate/utility.h"

// FFTImpl abandons its state records by design (nothing in the interface releases one): tell the
// leak checker of sanitizer builds that these are expected.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:zalaccelerate::transform::FFTInit\n";
}

namespace zalaccelerate::transform {
namespace {

template <class T>
std::vector<T> Random(size_t n, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<T> dist(-1, 1);
  std::vector<T> v(n);
  for (auto& x : v) x = dist(rng);
  return v;
}

template <class T>
double MaxDifference(const std::vector<T>& a, const std::vector<T>& b, size_t count) {
  double worst = 0;
  for (size_t i = 0; i < count; ++i) {
    worst = std::max(worst, std::abs(static_cast<double>(a[i]) - static_cast<double>(b[i])));
  }
  return worst;
}

// One kind's transforms on flat arrays of scalars: pairs for complex kinds, halves for split.
template <class State, class T>
void Forward(const std::vector<T>& src, std::vector<T>& dst, State* s, unsigned char* work,
             bool inverse) {
  const size_t half = src.size() / 2;
  if constexpr (std::is_same_v<State, FFTState_Float> || std::is_same_v<State, FFTState_Double>) {
    inverse ? FFTInv(src.data(), dst.data(), s, work) : FFTFwd(src.data(), dst.data(), s, work);
  } else if constexpr (std::is_same_v<State, FFTState_Complex_Float_Deinterleaved> ||
                       std::is_same_v<State, FFTState_Complex_Double_Deinterleaved>) {
    inverse ? FFTInv(src.data(), src.data() + half, dst.data(), dst.data() + half, s, work)
            : FFTFwd(src.data(), src.data() + half, dst.data(), dst.data() + half, s, work);
  } else {
    const auto* in = reinterpret_cast<const std::complex<T>*>(src.data());
    auto* out = reinterpret_cast<std::complex<T>*>(dst.data());
    inverse ? FFTInv(in, out, s, work) : FFTFwd(in, out, s, work);
  }
}

template <class State, class T, bool kReal>
struct KindCase {
  using StateType = State;
  using Scalar = T;
  static constexpr bool kIsReal = kReal;
};

template <class K>
class FFTKinds : public testing::Test {};
using Kinds =
    testing::Types<KindCase<FFTState_Float, float, true>, KindCase<FFTState_Double, double, true>,
                   KindCase<FFTState_Complex_Float_Interleaved, float, false>,
                   KindCase<FFTState_Complex_Double_Interleaved, double, false>,
                   KindCase<FFTState_Complex_Float_Deinterleaved, float, false>,
                   KindCase<FFTState_Complex_Double_Deinterleaved, double, false>>;
TYPED_TEST_SUITE(FFTKinds, Kinds);

// Prepared, round trip, released; FFTFree twice is harmless and the record stays the caller's.
TYPED_TEST(FFTKinds, LifecycleAndRoundTrip) {
  using State = typename TypeParam::StateType;
  using T = typename TypeParam::Scalar;
  for (unsigned int order : {1u, 2u, 7u, 10u, 15u}) {
    SCOPED_TRACE(order);
    const size_t n = size_t{1} << order;
    State* state = nullptr;
    FFTInit(&state, order);
    ASSERT_NE(state, nullptr);
    EXPECT_NE(state->engineHandle, nullptr);
    EXPECT_NE(state->specBlock, nullptr);
    unsigned int size = 12345;
    FFTGetBufSize(state, &size);
    EXPECT_EQ(size, state->workSize);
    unsigned char* work = size ? utility::Malloc_Byte(size) : nullptr;
    const std::vector<T> x = Random<T>(TypeParam::kIsReal ? n : 2 * n, order);
    std::vector<T> spectrum(TypeParam::kIsReal ? n + 2 : 2 * n);
    std::vector<T> back(x.size());
    Forward(x, spectrum, state, work, false);
    Forward(spectrum, back, state, work, true);
    EXPECT_LE(MaxDifference(x, back, x.size()), 64 * std::numeric_limits<T>::epsilon());
    FFTFree(state);
    EXPECT_EQ(state->specBlock, nullptr);
    FFTFree(state);
    utility::Free(work);
    delete state;
  }
}

// Orders the engine does not offer, up to those that reach it as negative numbers: the record is
// (null, null, 0), its work size reads 0 and a transform leaves the destination as it was.
TYPED_TEST(FFTKinds, UnsupportedOrderYieldsInertRecord) {
  using State = typename TypeParam::StateType;
  using T = typename TypeParam::Scalar;
  for (unsigned int order : {kFFTMaxOrder + 1, 31u, 32u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(order);
    State* state = nullptr;
    FFTInit(&state, order);
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(state->engineHandle, nullptr);
    EXPECT_EQ(state->specBlock, nullptr);
    unsigned int size = 12345;
    FFTGetBufSize(state, &size);
    EXPECT_EQ(size, 0u);
    std::vector<T> src(64, T(1));
    std::vector<T> dst(64, T(-7));
    unsigned char work[64];
    Forward(src, dst, state, work, false);
    Forward(src, dst, state, work, true);
    for (T v : dst) EXPECT_EQ(v, T(-7));
    FFTFree(state);
    delete state;
  }
}

// One point: the work size is 0 and a null work buffer is accepted.
TYPED_TEST(FFTKinds, SinglePointNeedsNoWorkBuffer) {
  using State = typename TypeParam::StateType;
  using T = typename TypeParam::Scalar;
  State* state = nullptr;
  FFTInit(&state, 0);
  unsigned int size = 12345;
  FFTGetBufSize(state, &size);
  EXPECT_EQ(size, 0u);
  const std::vector<T> src = {T(0.25), T(-3)};
  std::vector<T> dst(3, T(-7));
  Forward(src, dst, state, nullptr, false);
  EXPECT_EQ(dst[0], T(0.25));
  EXPECT_EQ(dst[1], TypeParam::kIsReal ? T(0) : T(-3));
  FFTFree(state);
  delete state;
}

// 256 real samples give 258 values with zero imaginary parts at both ends; a constant c gives
// 256 c in bin 0 and nothing elsewhere.
TEST(FFTReal, PackedSpectrumOf256Samples) {
  FFTState_Float* state = nullptr;
  FFTInit(&state, 8);
  unsigned int size;
  FFTGetBufSize(state, &size);
  unsigned char* work = utility::Malloc_Byte(size);
  const std::vector<float> src(256, 0.75f);
  std::vector<float> dst(260, -7.0f);
  FFTFwd(src.data(), dst.data(), state, work);
  EXPECT_EQ(dst[0], 192.0f);
  for (size_t i = 1; i < 258; ++i) EXPECT_EQ(dst[i], 0.0f) << i;
  EXPECT_EQ(dst[258], -7.0f);
  std::vector<float> back(257, -7.0f);
  FFTInv(dst.data(), back.data(), state, work);
  for (size_t i = 0; i < 256; ++i) EXPECT_EQ(back[i], 0.75f) << i;
  EXPECT_EQ(back[256], -7.0f);
  FFTFree(state);
  utility::Free(work);
  delete state;
}

using ImplDouble = FFTImpl<FFTState_Complex_Double_Deinterleaved, std::complex<double>>;
using ImplFloat = FFTImpl<FFTState_Complex_Float_Deinterleaved, std::complex<float>>;
static_assert(!std::is_copy_constructible_v<ImplDouble> && !std::is_copy_assignable_v<ImplFloat>);
static_assert(!std::is_move_constructible_v<ImplDouble> && !std::is_move_assignable_v<ImplFloat>);
static_assert(std::has_virtual_destructor_v<ImplFloat>);

TEST(FFTImpl, LengthsRoundToTheNearestOrder) {
  const struct {
    unsigned int length;
    unsigned int order;
  } cases[] = {{1000, 10}, {1448, 10}, {1449, 11}, {3, 2}, {1, 0}, {1024, 10}, {2, 1}};
  for (const auto& c : cases) {
    ImplFloat fft(0, c.length);
    EXPECT_EQ(fft.GetOrder(), c.order) << c.length;
    EXPECT_EQ(fft.GetFFTSize(), c.length);
    EXPECT_EQ(fft.GetBlockSize(), 1u << c.order);
  }
  const ImplDouble by_order(8, 0);
  EXPECT_EQ(by_order.GetOrder(), 8u);
  EXPECT_EQ(by_order.GetFFTSize(), 0u);
  EXPECT_EQ(by_order.GetBlockSize(), 256u);
}

// Orders no transform takes, given or rounded from a length, keep their order and have no block.
TEST(FFTImpl, OrdersBeyondTheLargestHaveNoBlock) {
  const struct {
    unsigned int order;
    unsigned int length;
  } cases[] = {{kFFTMaxOrder + 1, 0}, {32, 0}, {40, 0}, {0xFFFFFFFF, 0}, {0, 0xFFFFFFFF}};
  for (const auto& c : cases) {
    const ImplFloat fft(c.order, c.length);
    EXPECT_EQ(fft.GetOrder(), c.length ? 32u : c.order) << c.order << ", " << c.length;
    EXPECT_EQ(fft.GetBlockSize(), 0u) << c.order << ", " << c.length;
  }
}

TEST(FFTImpl, SetFFTSizeReprepares) {
  ImplDouble fft;
  EXPECT_EQ(fft.GetOrder(), 0u);
  fft.SetFFTSize(0);  // equals the stored 0: nothing happens
  EXPECT_EQ(fft.GetFFTSize(), 0u);
  fft.SetFFTSize(1000);
  EXPECT_EQ(fft.GetBlockSize(), 1024u);
  fft.SetFFTSize(1000);
  EXPECT_EQ(fft.GetBlockSize(), 1024u);
  fft.SetFFTSize(100);
  EXPECT_EQ(fft.GetOrder(), 7u);
  EXPECT_EQ(fft.GetFFTSize(), 100u);
  fft.SetFFTSize(0);  // a request of 0 on a sized object: order 0
  EXPECT_EQ(fft.GetBlockSize(), 1u);
}

template <class Impl, class T>
void CheckProcessRoundTrip(Impl& fft) {
  const size_t n = fft.GetBlockSize();
  const std::vector<T> re = Random<T>(n, 1);
  const std::vector<T> im = Random<T>(n, 2);
  std::vector<T> fre(n), fim(n), bre(n), bim(n);
  fft.ProcessFwd(re.data(), im.data(), fre.data(), fim.data());
  // Bin 0 is the plain sum.
  double sum = 0;
  for (T v : re) sum += v;
  EXPECT_NEAR(fre[0], sum, 1e-4);
  fft.ProcessInv(fre.data(), fim.data(), bre.data(), bim.data());
  EXPECT_LE(MaxDifference(re, bre, n), 64 * std::numeric_limits<T>::epsilon());
  EXPECT_LE(MaxDifference(im, bim, n), 64 * std::numeric_limits<T>::epsilon());
}

TEST(FFTImpl, ProcessRoundTrip) {
  ImplFloat f(0, 1000);
  CheckProcessRoundTrip<ImplFloat, float>(f);
  ImplDouble d(12, 0);
  CheckProcessRoundTrip<ImplDouble, double>(d);
  d.SetFFTSize(64);
  CheckProcessRoundTrip<ImplDouble, double>(d);
}

}  // namespace
}  // namespace zalaccelerate::transform
