// The multirate FIR filter through the exported interface: every factor pair against the long
// double definition, calls continuing one stream, the state's own copy of the delay line, the
// filter without memory, and the failures that leave *state as it was.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <vector>

#include "tests/support/multirate_reference.h"
#include "zalaccelerate/filter.h"

namespace {

using zal::test::MultirateCase;
using zal::test::MultirateReference;
using zal::test::PhaseTaps;
using namespace zalaccelerate;

template <class T>
using Line = std::vector<T, zalcore::STLAllocator<T>>;

template <class T>
struct StateOf;
template <>
struct StateOf<float> {
  using Type = MRFState_Float;
};
template <>
struct StateOf<double> {
  using Type = MRFState_Double;
};

template <class T>
std::vector<T> Noise(std::size_t n, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> d(-1.0, 1.0);
  std::vector<T> v(n);
  for (T& x : v) x = static_cast<T>(d(rng));
  return v;
}

template <class T>
typename StateOf<T>::Type* Make(const MultirateCase& c, const std::vector<T>& taps,
                                const Line<T>& line) {
  typename StateOf<T>::Type* state = nullptr;
  filter::MRFInit(&state, static_cast<unsigned>(c.up), static_cast<unsigned>(c.down), taps.data(),
                  static_cast<unsigned>(c.taps_len), line, static_cast<unsigned>(c.up_phase),
                  static_cast<unsigned>(c.down_phase));
  return state;
}

const MultirateCase kCases[] = {
    {1, 1, 33, 0, 0},           {2, 1, 64, 0, 0},          {2, 1, 64, 1, 0},
    {1, 2, 64, 0, 0},           {1, 2, 64, 0, 1},          {3, 2, 96, 0, 0},
    {3, 2, 95, 2, 1},           {2, 3, 64, 0, 0},          {2, 3, 66, 1, 2},
    {160, 147, 2400, 0, 0},     {160, 147, 2400, 80, 146}, {147, 160, 2205, 0, 0},
    {147, 160, 2200, 146, 159},
};

// Two calls with a delay line of history carried as stated, against one pass of the definition
// over history and both inputs.
template <class T>
void StreamMatchesDefinition(const MultirateCase& c) {
  SCOPED_TRACE(testing::Message() << sizeof(T) * 8 << "-bit " << c.up << "/" << c.down << " taps "
                                  << c.taps_len << " phases " << c.up_phase << "/" << c.down_phase);
  const std::vector<T> taps = Noise<T>(static_cast<std::size_t>(c.taps_len), 21);
  const std::vector<T> history = Noise<T>(static_cast<std::size_t>(PhaseTaps(c)), 22);
  const Line<T> line(history.begin(), history.end());
  auto* state = Make(c, taps, line);
  ASSERT_NE(state, nullptr);
  const int iters_first = 7;
  const int iters = 7 + (2 * PhaseTaps(c) + c.down - 1) / c.down + 5;
  const std::vector<T> src = Noise<T>(static_cast<std::size_t>(iters) * c.down, 23);
  std::vector<T> dst(static_cast<std::size_t>(iters) * c.up);
  filter::MRFProcess(src.data(), dst.data(), iters_first, state);
  filter::MRFProcess(src.data() + iters_first * c.down, dst.data() + iters_first * c.up,
                     static_cast<unsigned>(iters - iters_first), state);
  filter::MRFFree(state);
  EXPECT_EQ(std::vector<T>(line.begin(), line.end()), history) << "caller's vector changed";

  std::vector<long double> magnitude;
  const auto want = MultirateReference(c, taps, history, src, iters, &magnitude);
  const long double eps = std::numeric_limits<T>::epsilon();
  int reported = 0;
  for (std::size_t m = 0; m < dst.size(); ++m) {
    const long double bound = (PhaseTaps(c) + 2) * eps * magnitude[m];
    if (!(std::fabs(dst[m] - want[m]) <= bound) && reported++ < 5) {
      ADD_FAILURE() << "output " << m << ": " << dst[m] << " want " << static_cast<double>(want[m]);
    }
  }
}

TEST(MultirateApi, EveryFactorPairFollowsTheDefinition) {
  for (const MultirateCase& c : kCases) {
    StreamMatchesDefinition<float>(c);
    StreamMatchesDefinition<double>(c);
  }
}

TEST(MultirateApi, OneToOneImpulseReproducesTheTaps) {
  const std::vector<float> taps = Noise<float>(13, 3);
  auto* state = Make(MultirateCase{1, 1, 13, 0, 0}, taps, Line<float>(13, 0.0f));
  ASSERT_NE(state, nullptr);
  std::vector<float> impulse(20, 0.0f);
  impulse[0] = 1.0f;
  std::vector<float> got(20);
  filter::MRFProcess(impulse.data(), got.data(), 20, state);
  filter::MRFFree(state);
  for (int k = 0; k < 20; ++k) EXPECT_EQ(got[k], k < 13 ? taps[k] : 0.0f) << k;
}

TEST(MultirateApi, IterationsReadDownAndWriteUpSamples) {
  struct Rates {
    int up, down;
  };
  for (const Rates r : {Rates{2, 1}, Rates{1, 2}, Rates{3, 2}}) {
    const MultirateCase c{r.up, r.down, 12, 0, 0};
    auto* state = Make(c, std::vector<double>(12, 1.0), Line<double>());
    ASSERT_NE(state, nullptr);
    std::vector<double> src(4 * r.down, 1.0);
    std::vector<double> dst(4 * r.up + 8, -5.0);
    filter::MRFProcess(src.data(), dst.data(), 4, state);
    filter::MRFFree(state);
    for (int i = 0; i < 4 * r.up; ++i) EXPECT_NE(dst[i], -5.0) << r.up << "/" << r.down;
    for (std::size_t i = 4 * r.up; i < dst.size(); ++i) EXPECT_EQ(dst[i], -5.0);
  }
}

TEST(MultirateApi, WithoutDelayLineEveryCallStartsFromSilence) {
  const MultirateCase c{3, 2, 40, 1, 0};
  const std::vector<float> taps = Noise<float>(40, 4);
  auto* state = Make(c, taps, Line<float>());
  auto* zeroed = Make(c, taps, Line<float>(static_cast<std::size_t>(PhaseTaps(c)), 0.0f));
  ASSERT_NE(state, nullptr);
  ASSERT_NE(zeroed, nullptr);
  const std::vector<float> src = Noise<float>(2 * 25, 5);
  std::vector<float> first(3 * 25), second(3 * 25), fresh(3 * 25);
  filter::MRFProcess(src.data(), first.data(), 25, state);
  filter::MRFProcess(src.data(), second.data(), 25, state);
  filter::MRFProcess(src.data(), fresh.data(), 25, zeroed);
  EXPECT_EQ(first, second);
  EXPECT_EQ(first, fresh);
  filter::MRFFree(state);
  filter::MRFFree(zeroed);
}

TEST(MultirateApi, PiecesEqualOnePieceWithAZeroDelayLine) {
  for (const MultirateCase c :
       {MultirateCase{160, 147, 1600, 3, 7}, MultirateCase{2, 3, 31, 1, 1}}) {
    const std::vector<double> taps = Noise<double>(static_cast<std::size_t>(c.taps_len), 6);
    const Line<double> zeros(static_cast<std::size_t>(PhaseTaps(c)), 0.0);
    auto* whole = Make(c, taps, zeros);
    auto* pieces = Make(c, taps, zeros);
    ASSERT_NE(whole, nullptr);
    ASSERT_NE(pieces, nullptr);
    const int counts[] = {1, 3, 1, 8, 2};
    const std::vector<double> src = Noise<double>(15 * c.down, 7);
    std::vector<double> one(15 * c.up), split(15 * c.up);
    filter::MRFProcess(src.data(), one.data(), 15, whole);
    int done = 0;
    for (int k : counts) {
      filter::MRFProcess(src.data() + done * c.down, split.data() + done * c.up, k, pieces);
      done += k;
    }
    EXPECT_EQ(split, one);
    filter::MRFFree(whole);
    filter::MRFFree(pieces);
  }
}

TEST(MultirateApi, FailedInitLeavesTheStateUntouched) {
  struct Bad {
    unsigned up, down, taps_len, up_phase, down_phase;
  };
  const Bad bad[] = {
      {0, 1, 8, 0, 0},           {1, 0, 8, 0, 0},           {2, 1, 0, 0, 0},
      {2, 1, 8, 2, 0},           {2, 3, 8, 0, 3},           {2, 1, 8, 0x80000000u, 0},
      {0x80000000u, 1, 8, 0, 0}, {1, 1, 0x80000000u, 0, 0}, {1, 1, 0x7FFFFFFFu, 0, 0},
  };
  const std::vector<float> taps(8, 1.0f);
  const std::vector<double> taps_double(8, 1.0);
  auto* const sentinel = reinterpret_cast<MRFState_Float*>(0x40);
  auto* const sentinel_double = reinterpret_cast<MRFState_Double*>(0x80);
  for (const Bad& b : bad) {
    MRFState_Float* state = sentinel;
    MRFState_Double* state_double = sentinel_double;
    filter::MRFInit(&state, b.up, b.down, taps.data(), b.taps_len, Line<float>(4, 0.0f), b.up_phase,
                    b.down_phase);
    filter::MRFInit(&state_double, b.up, b.down, taps_double.data(), b.taps_len, Line<double>(),
                    b.up_phase, b.down_phase);
    EXPECT_EQ(state, sentinel) << b.up << "/" << b.down << " taps " << b.taps_len;
    EXPECT_EQ(state_double, sentinel_double);
  }
  MRFState_Float* state = sentinel;
  filter::MRFInit(&state, 2, 1, nullptr, 8, Line<float>(), 0, 0);
  EXPECT_EQ(state, sentinel);
}

TEST(MultirateApi, ProcessIgnoresBadArguments) {
  const MultirateCase c{2, 1, 8, 0, 0};
  auto* state = Make(c, std::vector<float>(8, 1.0f), Line<float>(4, 1.0f));
  ASSERT_NE(state, nullptr);
  const std::vector<float> src(16, 2.0f);
  std::vector<float> dst(32, -3.0f);
  filter::MRFProcess(src.data(), dst.data(), 0, state);
  filter::MRFProcess(src.data(), dst.data(), 0x80000000u, state);
  filter::MRFProcess(nullptr, dst.data(), 4, state);
  filter::MRFProcess(src.data(), nullptr, 4, state);
  filter::MRFProcess(src.data(), dst.data(), 4, static_cast<MRFState_Float*>(nullptr));
  for (float x : dst) EXPECT_EQ(x, -3.0f);
  // The delay line still holds its ones: a zero input meets three of them through each phase's
  // four taps (twos had the refused calls advanced it).
  std::vector<float> zeros(1, 0.0f);
  filter::MRFProcess(zeros.data(), dst.data(), 1, state);
  EXPECT_EQ(dst[0], 3.0f);
  EXPECT_EQ(dst[1], 3.0f);
  filter::MRFFree(state);
}

TEST(MultirateApi, FreeIgnoresNull) {
  filter::MRFFree(static_cast<MRFState_Float*>(nullptr));
  filter::MRFFree(static_cast<MRFState_Double*>(nullptr));
}

}  // namespace
