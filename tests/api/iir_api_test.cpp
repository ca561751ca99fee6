// The IIR filter through the shared library, against the filters' equations in long double:
// the documented first outputs, responses of Butterworth and Chebyshev designs, the same
// stream in any pieces, the delay line in and out, taps changed mid-stream, and refusals.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "tests/support/iir_designs.h"
#include "zalaccelerate/filter.h"

namespace zalaccelerate::filter {
namespace {

using zal::test::CascadeReference;
using zal::test::Design;
using zal::test::DesignSections;
using zal::test::DirectForm;
using zal::test::DirectReference;
using zal::test::Prototype;
using zal::test::Rounded;
using zal::test::Wide;

template <class T>
struct StateOf;
template <>
struct StateOf<float> {
  using Type = IIRState_Float;
};
template <>
struct StateOf<double> {
  using Type = IIRState_Double;
};
template <class T>
using State = typename StateOf<T>::Type;

// The Inits never write *state on failure: a sentinel shows it.
template <class T>
State<T>* Sentinel() {
  static State<T> sentinel{};
  return &sentinel;
}

template <class T>
State<T>* MakeDirect(const std::vector<T>& taps, int order, const T* dly = nullptr) {
  State<T>* state = nullptr;
  IIRInit(&state, taps.data(), static_cast<unsigned>(order), dly);
  return state;
}
template <class T>
State<T>* MakeCascade(const std::vector<T>& taps, const T* dly = nullptr) {
  State<T>* state = nullptr;
  IIRInit_BiQuad(&state, taps.data(), static_cast<unsigned>(taps.size() / 6), dly);
  return state;
}

template <class T>
std::vector<T> Noise(size_t n, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<T> dist(-1, 1);
  std::vector<T> v(n);
  for (auto& x : v) x = dist(rng);
  return v;
}

template <class T>
std::vector<T> Filtered(State<T>* state, const std::vector<T>& x) {
  std::vector<T> y(x.size());
  IIR(static_cast<unsigned>(x.size()), x.data(), y.data(), state);
  return y;
}

// Largest |y - exact| in units of eps * max|x| * sum|h|, the sum over the exact impulse
// response: the scale of the rounding any evaluation of the recursion in T makes.
template <class T>
double ErrorInGain(const std::vector<T>& y, const std::vector<Wide>& exact,
                   const std::vector<Wide>& impulse_response, const std::vector<T>& x) {
  Wide gain = 0;
  for (Wide h : impulse_response) gain += std::fabs(h);
  Wide peak = 0;
  for (T v : x) peak = std::max(peak, std::fabs(Wide(v)));
  Wide worst = 0;
  for (size_t i = 0; i < y.size(); ++i) worst = std::max(worst, std::fabs(y[i] - exact[i]));
  return static_cast<double>(worst / (gain * peak * std::numeric_limits<T>::epsilon()));
}

// ---- The documented first outputs ---------------------------------------------------------------

template <class T>
class IIRApi : public ::testing::Test {};
using Types = ::testing::Types<float, double>;
TYPED_TEST_SUITE(IIRApi, Types);

TYPED_TEST(IIRApi, FirstOrderFollowsItsEquation) {
  using T = TypeParam;
  const std::vector<T> taps{T(0.5), T(0.25), T(2), T(-0.5)};
  State<T>* state = MakeDirect(taps, 1);
  ASSERT_NE(state, nullptr);
  const std::vector<T> x{1, 2, -1, 0.5, 0, 0, 3};
  const std::vector<T> y = Filtered(state, x);
  T prev_x = 0;
  T prev_y = 0;
  for (size_t n = 0; n < x.size(); ++n) {
    const T want = (T(0.5) * x[n] + T(0.25) * prev_x + T(0.5) * prev_y) / 2;
    EXPECT_NEAR(y[n], want, 8 * std::numeric_limits<T>::epsilon()) << n;
    prev_x = x[n];
    prev_y = want;
  }
  IIRFree(state);
}

TYPED_TEST(IIRApi, FirstOutputsOfTheDocumentedFilters) {
  using T = TypeParam;
  std::vector<T> order10(22, T(0.01));
  order10[0] = T(0.0031);
  order10[11] = T(0.08);
  State<T>* direct = MakeDirect(order10, 10);
  ASSERT_NE(direct, nullptr);
  EXPECT_NEAR(IIR(T(0.6), direct), 0.02325, 0.02325 * 4 * std::numeric_limits<T>::epsilon());
  IIRFree(direct);

  State<T>* two =
      MakeCascade(std::vector<T>{T(0.0031), T(0.014), T(0.0069), T(0.111), T(0.2119), T(0.0091),
                                 T(0.074), T(0.1), T(1.0), T(0.08), T(1.0), T(0.005)});
  ASSERT_NE(two, nullptr);
  EXPECT_NEAR(IIR(T(0.6), two), 0.0155, 0.0155 * 8 * std::numeric_limits<T>::epsilon());
  IIRFree(two);

  State<T>* identity = MakeCascade(std::vector<T>{1, 0, 0, 1, 0, 0});
  ASSERT_NE(identity, nullptr);
  const std::vector<T> x = Noise<T>(100, 1);
  EXPECT_EQ(Filtered(identity, x), x);
  IIRFree(identity);
}

// ---- Designs against the long-double recursion
// ---------------------------------------------------

// Orders 1..12, cutoffs from a quarter of the rate down to where the poles reach radius 0.999.
const Design kDesigns[] = {
    {Prototype::kButterworth, 1, 0.2, 0},    {Prototype::kButterworth, 2, 0.05, 0},
    {Prototype::kButterworth, 3, 0.01, 0},   {Prototype::kButterworth, 4, 0.25, 0},
    {Prototype::kButterworth, 5, 0.002, 0},  {Prototype::kButterworth, 6, 0.02, 0},
    {Prototype::kButterworth, 8, 0.0008, 0}, {Prototype::kButterworth, 12, 0.1, 0},
    {Prototype::kChebyshev, 2, 0.0002, 0.5}, {Prototype::kChebyshev, 3, 0.1, 1},
    {Prototype::kChebyshev, 4, 0.003, 0.1},  {Prototype::kChebyshev, 7, 0.05, 1},
    {Prototype::kChebyshev, 10, 0.15, 0.5},  {Prototype::kChebyshev, 12, 0.02, 0.1},
};

TEST(IIRDesigns, CoverPolesUpToRadius0999) {
  Wide largest = 0;
  for (const Design& d : kDesigns) {
    const Wide r = zal::test::LargestPoleRadius(DesignSections(d));
    EXPECT_LE(r, 0.9995) << d.order << " " << d.cutoff;
    largest = std::max(largest, r);
  }
  EXPECT_GE(largest, 0.998);
}

template <class T>
std::vector<T> Impulse(size_t n) {
  std::vector<T> x(n, 0);
  x[0] = 1;
  return x;
}

// Impulse, step and noise through each design as a cascade, against the long-double cascade on
// the same taps: within three times the error of a per-sample loop in T, plus 2 eps max|x| sum|h|.
TYPED_TEST(IIRApi, CascadesKeepTheErrorBound) {
  using T = TypeParam;
  constexpr size_t kLength = 100000;
  const std::vector<T> inputs[] = {Impulse<T>(kLength), std::vector<T>(kLength, 1),
                                   Noise<T>(kLength, 7)};
  for (const Design& d : kDesigns) {
    const std::vector<T> taps = Rounded<T>(DesignSections(d));
    const size_t sections = taps.size() / 6;
    std::vector<Wide> rest(2 * sections, 0);
    const std::vector<Wide> h = CascadeReference(taps, rest, inputs[0]);
    for (const auto& x : inputs) {
      State<T>* state = MakeCascade(taps);
      ASSERT_NE(state, nullptr);
      std::vector<Wide> zero(2 * sections, 0);
      const std::vector<Wide> exact = CascadeReference(taps, zero, x);
      const double error = ErrorInGain(Filtered(state, x), exact, h, x);
      const double plain =
          ErrorInGain(zal::test::PlainReference(taps, 2, sections, x), exact, h, x);
      EXPECT_LE(error, 3 * plain + 2) << d.order << " " << d.cutoff;
      IIRFree(state);
    }
  }
}

// The designs multiplied out into one direct form where that is well conditioned: second order
// at any radius, up to fourth order with poles away from z = 1. (Clustered poles make the block
// matrices of a direct form large and its rounding much more than a per-sample loop's: the
// header sends such designs to cascades.)
TYPED_TEST(IIRApi, DirectFormsKeepTheErrorBound) {
  using T = TypeParam;
  constexpr size_t kLength = 100000;
  const std::vector<T> inputs[] = {Impulse<T>(kLength), std::vector<T>(kLength, 1),
                                   Noise<T>(kLength, 9)};
  for (const Design& d : kDesigns) {
    if (d.order > 4 || (d.order > 2 && d.cutoff < 0.05)) continue;
    const std::vector<T> taps = Rounded<T>(DirectForm(DesignSections(d), d.order));
    const std::vector<Wide> h = DirectReference(taps, d.order, inputs[0]);
    for (const auto& x : inputs) {
      State<T>* state = MakeDirect(taps, d.order);
      ASSERT_NE(state, nullptr);
      const std::vector<Wide> exact = DirectReference(taps, d.order, x);
      const double error = ErrorInGain(Filtered(state, x), exact, h, x);
      const double plain = ErrorInGain(zal::test::PlainReference(taps, d.order, 1, x), exact, h, x);
      EXPECT_LE(error, 3 * plain + 2) << d.order << " " << d.cutoff;
      IIRFree(state);
    }
  }
}

// ---- One stream in any pieces
// ---------------------------------------------------------------------

enum class Feed { kPieces, kSamples, kInPlacePieces };

template <class T>
std::vector<T> FedIn(State<T>* state, const std::vector<T>& x, Feed feed, unsigned seed) {
  std::vector<T> y(x.size());
  std::mt19937 rng(seed);
  std::uniform_int_distribution<size_t> piece(1, 40);
  size_t at = 0;
  while (at < x.size()) {
    size_t len = feed == Feed::kSamples ? 1 : std::min(piece(rng), x.size() - at);
    if (feed == Feed::kSamples) {
      y[at] = IIR(x[at], state);
    } else if (feed == Feed::kPieces) {
      IIR(static_cast<unsigned>(len), x.data() + at, y.data() + at, state);
    } else {
      std::copy(x.begin() + at, x.begin() + at + len, y.begin() + at);
      IIR_InPlace(static_cast<unsigned>(len), y.data() + at, state);
    }
    at += len;
  }
  return y;
}

TYPED_TEST(IIRApi, AnySplitOfAStreamGivesTheSameOutputs) {
  using T = TypeParam;
  const std::vector<T> x = Noise<T>(3000, 3);
  const std::vector<T> cascade = Rounded<T>(DesignSections({Prototype::kChebyshev, 7, 0.05, 1}));
  const std::vector<T> direct =
      Rounded<T>(DirectForm(DesignSections({Prototype::kButterworth, 5, 0.2, 0}), 5));
  const auto make = [&](bool is_cascade) {
    return is_cascade ? MakeCascade(cascade) : MakeDirect(direct, 5);
  };
  for (bool is_cascade : {true, false}) {
    State<T>* whole = make(is_cascade);
    const std::vector<T> once = Filtered(whole, x);
    IIRFree(whole);
    for (Feed feed : {Feed::kPieces, Feed::kSamples, Feed::kInPlacePieces}) {
      State<T>* state = make(is_cascade);
      const std::vector<T> fed = FedIn(state, x, feed, 11);
      EXPECT_EQ(fed, once) << (is_cascade ? "cascade" : "direct") << " feed "
                           << static_cast<int>(feed);
      IIRFree(state);
    }
  }
}

// ---- The delay line ---------------------------------------------------------------------------

TYPED_TEST(IIRApi, DelayLineRoundTripsAndStartsTheRecursion) {
  using T = TypeParam;
  const std::vector<T> taps = Rounded<T>(DesignSections({Prototype::kButterworth, 6, 0.1, 0}));
  const std::vector<T> dly = Noise<T>(6, 5);
  State<T>* state = MakeCascade(taps, dly.data());
  ASSERT_NE(state, nullptr);
  std::vector<T> got(6);
  IIRGetDlyLine(state, got.data());
  EXPECT_EQ(got, dly);

  // From that delay line, against the long-double cascade from the same states; then the delay
  // line read back mid-block against the reference's states.
  const std::vector<T> x = Noise<T>(37, 6);
  std::vector<Wide> states(dly.begin(), dly.end());
  const std::vector<Wide> exact = CascadeReference(taps, states, x);
  const std::vector<T> y = Filtered(state, x);
  for (size_t i = 0; i < x.size(); ++i) {
    EXPECT_NEAR(y[i], exact[i], 64 * std::numeric_limits<T>::epsilon()) << i;
  }
  IIRGetDlyLine(state, got.data());
  for (int j = 0; j < 6; ++j) {
    EXPECT_NEAR(got[j], states[j], 64 * std::numeric_limits<T>::epsilon()) << j;
  }
  const std::vector<T> other = Noise<T>(6, 8);
  IIRSetDlyLine(state, other.data());
  IIRGetDlyLine(state, got.data());
  EXPECT_EQ(got, other);
  IIRFree(state);
}

TYPED_TEST(IIRApi, TapsChangeMidStreamKeepsTheMemory) {
  using T = TypeParam;
  const std::vector<T> first = Rounded<T>(DesignSections({Prototype::kButterworth, 4, 0.05, 0}));
  const std::vector<T> second = Rounded<T>(DesignSections({Prototype::kChebyshev, 4, 0.2, 1}));
  const std::vector<T> x = Noise<T>(1000, 12);
  const std::vector<T> head(x.begin(), x.begin() + 421);
  const std::vector<T> tail(x.begin() + 421, x.end());
  std::vector<Wide> states(4, 0);
  CascadeReference(first, states, head);
  const std::vector<Wide> exact = CascadeReference(second, states, tail);

  for (bool is_cascade : {true, false}) {
    State<T>* state = nullptr;
    std::vector<T> a = first;
    std::vector<T> b = second;
    if (is_cascade) {
      state = MakeCascade(a);
    } else {
      // A direct form of order 2 is a one-section cascade.
      a.resize(6);
      b.resize(6);
      state = MakeDirect(a, 2);
    }
    ASSERT_NE(state, nullptr);
    Filtered(state, head);
    std::vector<T> before(is_cascade ? 4 : 2);
    std::vector<T> after(before.size());
    IIRGetDlyLine(state, before.data());
    IIRSetTaps(state, b.data());
    IIRGetDlyLine(state, after.data());
    EXPECT_EQ(after, before);
    const std::vector<T> y = Filtered(state, tail);
    if (is_cascade) {
      for (size_t i = 0; i < y.size(); ++i) {
        ASSERT_NEAR(y[i], exact[i], 1e3 * std::numeric_limits<T>::epsilon()) << i;
      }
    }
    // Refused taps leave the filter as it was.
    std::vector<T> zero_a0 = b;
    zero_a0[3] = 0;
    IIRSetTaps(state, zero_a0.data());
    IIRSetTaps(state, static_cast<const T*>(nullptr));
    IIRGetDlyLine(state, after.data());
    IIRGetDlyLine(state, before.data());
    EXPECT_EQ(after, before);
    IIRFree(state);
  }
}

// ---- Refusals and bad input ---------------------------------------------------------------------

TYPED_TEST(IIRApi, RefusedInitsLeaveTheStateAlone) {
  using T = TypeParam;
  const std::vector<T> taps(2 * 34, T(1));
  std::vector<T> zero_a0 = taps;
  zero_a0[2] = 0;
  std::vector<T> second_zero_a0(12, T(1));
  second_zero_a0[9] = 0;
  struct Case {
    const char* what;
    bool cascade;
    const T* taps;
    unsigned count;
  };
  const Case cases[] = {
      {"order beyond 32", false, taps.data(), 33},
      {"a0 of 0", false, zero_a0.data(), 1},
      {"null taps", false, nullptr, 2},
      {"huge order", false, taps.data(), 1u << 31},
      {"no sections", true, taps.data(), 0},
      {"beyond 1024 sections", true, taps.data(), 1025},
      {"a second section's a0 of 0", true, second_zero_a0.data(), 2},
      {"null section taps", true, nullptr, 1},
  };
  for (const Case& c : cases) {
    State<T>* state = Sentinel<T>();
    if (c.cascade) {
      IIRInit_BiQuad(&state, c.taps, c.count, static_cast<const T*>(nullptr));
    } else {
      IIRInit(&state, c.taps, c.count, static_cast<const T*>(nullptr));
    }
    EXPECT_EQ(state, Sentinel<T>()) << c.what;
  }
  IIRFree(static_cast<State<T>*>(nullptr));
}

TYPED_TEST(IIRApi, RecordAndOrderZero) {
  using T = TypeParam;
  State<T>* gain = MakeDirect(std::vector<T>{T(3), T(2)}, 0);
  ASSERT_NE(gain, nullptr);
  EXPECT_EQ(gain->order, 0u);
  EXPECT_EQ(gain->numBiquads, 0u);
  EXPECT_EQ(gain->dlyScratch, nullptr);
  EXPECT_EQ(gain->dlyScratchBytes, 0u);
  EXPECT_EQ(gain->bufSize, 128 + 288 * sizeof(T));
  EXPECT_EQ(IIR(T(4), gain), T(6));
  IIRSetTaps(gain, std::vector<T>{T(1), T(4)}.data());
  EXPECT_EQ(IIR(T(2), gain), T(0.5));
  IIRFree(gain);

  State<T>* cascade = MakeCascade(std::vector<T>(18, T(1)));
  ASSERT_NE(cascade, nullptr);
  EXPECT_EQ(cascade->order, 2u);
  EXPECT_EQ(cascade->numBiquads, 3u);
  EXPECT_EQ(cascade->dlyScratchBytes, 6 * sizeof(T));
  EXPECT_EQ(cascade->bufSize, 128 + 3 * 976 * sizeof(T));
  EXPECT_NE(cascade->workBuffer, nullptr);
  EXPECT_EQ(cascade->engineState != nullptr, true);
  IIRFree(cascade);
}

TYPED_TEST(IIRApi, BadBlockArgumentsWriteNothingAndKeepTheStream) {
  using T = TypeParam;
  const std::vector<T> taps = Rounded<T>(DesignSections({Prototype::kButterworth, 4, 0.1, 0}));
  const std::vector<T> x = Noise<T>(64, 4);
  State<T>* reference = MakeCascade(taps);
  const std::vector<T> want = Filtered(reference, x);
  IIRFree(reference);

  State<T>* state = MakeCascade(taps);
  std::vector<T> canary(80, T(7));
  IIR(0, x.data(), canary.data(), state);
  IIR(1u << 31, x.data(), canary.data(), state);
  IIR(0xFFFFFFFFu, x.data(), canary.data(), state);
  IIR(16, static_cast<const T*>(nullptr), canary.data(), state);
  IIR(16, x.data(), static_cast<T*>(nullptr), state);
  IIR_InPlace(0, canary.data(), state);
  IIR_InPlace(16, static_cast<T*>(nullptr), state);
  IIR(16, x.data(), canary.data(), static_cast<State<T>*>(nullptr));
  EXPECT_EQ(IIR(T(1), static_cast<State<T>*>(nullptr)), T(0));
  IIRGetDlyLine(state, static_cast<T*>(nullptr));
  IIRSetDlyLine(state, static_cast<const T*>(nullptr));
  EXPECT_EQ(canary, std::vector<T>(80, T(7)));
  // 64 outputs into the middle of the canary: nothing outside them is written.
  IIR(64, x.data(), canary.data() + 8, state);
  EXPECT_EQ(std::vector<T>(canary.begin() + 8, canary.begin() + 72), want);
  for (int i : {0, 7, 72, 79}) EXPECT_EQ(canary[i], T(7));
  IIRFree(state);
}

TYPED_TEST(IIRApi, NonFiniteInputReachesOnlyLaterOutputs) {
  using T = TypeParam;
  const std::vector<T> taps = Rounded<T>(DesignSections({Prototype::kChebyshev, 5, 0.1, 1}));
  // In the first block run, and mid-stream past several whole blocks and stretches.
  struct Case {
    int length;
    int at;
  };
  for (Case c : {Case{48, 21}, Case{1500, 1100}}) {
    for (T bad : {std::numeric_limits<T>::infinity(), std::numeric_limits<T>::quiet_NaN()}) {
      std::vector<T> x = Noise<T>(c.length, 2);
      std::vector<T> finite = x;
      x[c.at] = bad;
      State<T>* a = MakeCascade(taps);
      State<T>* b = MakeCascade(taps);
      const std::vector<T> y = Filtered(a, x);
      const std::vector<T> clean = Filtered(b, finite);
      for (int i = 0; i < c.at; ++i) EXPECT_EQ(y[i], clean[i]) << i;
      EXPECT_TRUE(std::isnan(y[c.at + 9]) || std::isinf(y[c.at + 9]));
      IIRFree(a);
      IIRFree(b);
    }
  }
}

// The call sets its own flush modes and hands the caller's MXCSR back, status flags included.
TYPED_TEST(IIRApi, CallerFloatingPointModesAreRestored) {
  using T = TypeParam;
  State<T>* state = MakeCascade(Rounded<T>(DesignSections({Prototype::kButterworth, 2, 0.1, 0})));
  // Computed before the modes are set: an unoptimised build divides at run time, and the
  // underflow would raise flags of the test's own.
  const T subnormal = std::numeric_limits<T>::min() / 3;
  const unsigned int saved = _mm_getcsr();
  for (unsigned int modes : {0x1F80u, 0x1F80u | 0x8040u, 0x1F80u | 0x6000u}) {
    std::vector<T> x(40, std::numeric_limits<T>::denorm_min());
    _mm_setcsr(modes);
    IIR_InPlace(40, x.data(), state);
    IIR(subnormal, state);
    EXPECT_EQ(_mm_getcsr(), modes);
  }
  _mm_setcsr(saved);
  IIRFree(state);
}

}  // namespace
}  // namespace zalaccelerate::filter
