// The multirate primitives at the run's level and the portable variant: outputs against the
// long double definition (within the rounding bound of a sum of products), the delay line handed
// back, calls split anywhere equal to one call bit for bit, the delay line shared in place, and
// the refusals, with guard zones around every buffer the primitives write.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "engine/core/dispatch.h"
#include "engine/primitives/multirate/multirate_spec.h"
#include "tests/support/multirate_reference.h"

namespace zal::test {
namespace {

using engine::MRFSpec;

template <class T>
struct Variant {
  const char* name;
  engine::MRFInit<T>* init;
  engine::MRFFilter<T>* filter;
};

const Variant<float> kFloatVariants[] = {
    {"dispatched", &engine::dispatch::MultirateFirInitF32, &engine::dispatch::MultirateFirF32},
    {"portable", &engine::portable::MultirateFirInitF32, &engine::portable::MultirateFirF32}};
const Variant<double> kDoubleVariants[] = {
    {"dispatched", &engine::dispatch::MultirateFirInitF64, &engine::dispatch::MultirateFirF64},
    {"portable", &engine::portable::MultirateFirInitF64, &engine::portable::MultirateFirF64}};

template <class T>
constexpr int kDataType = sizeof(T) == 4 ? engine::kMRFDataTypeF32 : engine::kMRFDataTypeF64;

constexpr unsigned char kGuard = 0xA5;
constexpr int kGuardBytes = 64;

bool GuardIntact(const std::vector<unsigned char>& bytes, std::size_t from) {
  for (std::size_t i = from; i < bytes.size(); ++i) {
    if (bytes[i] != kGuard) return false;
  }
  return true;
}

// A prepared filter in blocks of exactly the queried sizes, guard bytes after each.
template <class T>
struct Prepared {
  Prepared(const Variant<T>& v, const MultirateCase& c, const std::vector<T>& taps) {
    status = engine::dispatch::MultirateFirGetSize(c.up, c.down, c.taps_len, kDataType<T>,
                                                   &spec_size, &work_size);
    if (status != engStsNoErr) return;
    block.assign(static_cast<std::size_t>(spec_size + kGuardBytes), kGuard);
    work.assign(static_cast<std::size_t>(work_size + kGuardBytes), kGuard);
    status = v.init(&spec, taps.data(), c.taps_len, c.up, c.up_phase, c.down, c.down_phase,
                    block.data());
  }
  bool GuardsIntact() const {
    return GuardIntact(block, static_cast<std::size_t>(spec_size)) &&
           GuardIntact(work, static_cast<std::size_t>(work_size));
  }
  EngStatus status = engStsNoErr;
  int spec_size = 0;
  int work_size = 0;
  MRFSpec* spec = nullptr;
  std::vector<unsigned char> block;
  std::vector<unsigned char> work;
};

template <class T>
std::vector<T> Noise(std::size_t n, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> d(-1.0, 1.0);
  std::vector<T> v(n);
  for (T& x : v) x = static_cast<T>(d(rng));
  return v;
}

const MultirateCase kCases[] = {
    {1, 1, 1, 0, 0},        {1, 1, 37, 0, 0},          {2, 1, 64, 0, 0},
    {2, 1, 63, 1, 0},       {1, 2, 48, 0, 1},          {1, 2, 5, 0, 0},
    {3, 2, 96, 2, 1},       {3, 2, 100, 0, 1},         {2, 3, 64, 1, 2},
    {2, 3, 7, 0, 0},        {160, 147, 7680, 0, 0},    {160, 147, 5000, 37, 146},
    {147, 160, 7056, 0, 0}, {147, 160, 4410, 146, 93}, {5, 1, 160, 4, 0},
    {1, 7, 300, 0, 6},
};

// Enough iterations that most outputs read the caller's array, not the staged start.
int ItersFor(const MultirateCase& c) {
  const int inputs_wanted = 3 * PhaseTaps(c) + 200;
  return (inputs_wanted + c.down - 1) / c.down;
}

template <class T>
void MatchReference(const Variant<T>& v, const MultirateCase& c, unsigned seed) {
  SCOPED_TRACE(testing::Message() << v.name << " up " << c.up << " down " << c.down << " taps "
                                  << c.taps_len << " phases " << c.up_phase << "/" << c.down_phase
                                  << " seed " << seed);
  const std::vector<T> taps = Noise<T>(static_cast<std::size_t>(c.taps_len), seed);
  Prepared<T> p(v, c, taps);
  ASSERT_EQ(p.status, engStsNoErr);
  const int iters = ItersFor(c);
  const std::size_t history_len = static_cast<std::size_t>(PhaseTaps(c));
  const std::vector<T> history = Noise<T>(history_len, seed + 1);
  const std::vector<T> src = Noise<T>(static_cast<std::size_t>(iters) * c.down, seed + 2);
  const std::size_t outputs = static_cast<std::size_t>(iters) * c.up;
  std::vector<T> dst(outputs + 16, T(7));
  std::vector<T> line(history_len + 16, T(7));
  std::copy(history.begin(), history.end(), line.begin());
  ASSERT_EQ(
      v.filter(src.data(), dst.data(), iters, p.spec, line.data(), line.data(), p.work.data()),
      engStsNoErr);

  std::vector<long double> magnitude;
  const std::vector<long double> want =
      MultirateReference(c, taps, history, src, iters, &magnitude);
  const long double eps = std::numeric_limits<T>::epsilon();
  int reported = 0;
  for (std::size_t m = 0; m < outputs; ++m) {
    const long double bound = (PhaseTaps(c) + 2) * eps * magnitude[m];
    const long double error = std::fabs(static_cast<long double>(dst[m]) - want[m]);
    if (!(error <= bound) && reported++ < 5) {
      ADD_FAILURE() << "output " << m << ": " << dst[m] << " want " << static_cast<double>(want[m]);
    }
  }
  for (std::size_t i = outputs; i < dst.size(); ++i) EXPECT_EQ(dst[i], T(7)) << "past the end";
  // The delay line now holds the last inputs, oldest first.
  for (std::size_t i = 0; i < history_len; ++i) {
    EXPECT_EQ(line[i], src[src.size() - history_len + i]) << "delay line " << i;
  }
  for (std::size_t i = history_len; i < line.size(); ++i) EXPECT_EQ(line[i], T(7));
  EXPECT_TRUE(p.GuardsIntact());
}

TEST(Multirate, OutputsMatchTheDefinition) {
  for (const MultirateCase& c : kCases) {
    for (const auto& v : kFloatVariants) MatchReference(v, c, 11);
    for (const auto& v : kDoubleVariants) MatchReference(v, c, 12);
  }
}

// Calls of few iterations (fewer inputs than the delay line, so the line shifts through itself)
// and of many, in one array shared as input and output line: the same bits as one call.
template <class T>
void SplitEqualsWhole(const Variant<T>& v, const MultirateCase& c) {
  SCOPED_TRACE(testing::Message() << v.name << " up " << c.up << " down " << c.down << " taps "
                                  << c.taps_len);
  const std::vector<T> taps = Noise<T>(static_cast<std::size_t>(c.taps_len), 3);
  Prepared<T> p(v, c, taps);
  ASSERT_EQ(p.status, engStsNoErr);
  const int pieces[] = {1, 2, 1, 5, 3, 17, 1, 40, 2, 9};
  int iters = 0;
  for (int k : pieces) iters += k;
  const std::vector<T> src = Noise<T>(static_cast<std::size_t>(iters) * c.down, 4);
  const std::vector<T> start = Noise<T>(static_cast<std::size_t>(PhaseTaps(c)), 5);
  std::vector<T> whole(static_cast<std::size_t>(iters) * c.up);
  std::vector<T> line = start;
  ASSERT_EQ(
      v.filter(src.data(), whole.data(), iters, p.spec, line.data(), line.data(), p.work.data()),
      engStsNoErr);
  const std::vector<T> whole_line = line;
  std::vector<T> split(whole.size());
  line = start;
  int done = 0;
  for (int k : pieces) {
    ASSERT_EQ(v.filter(src.data() + static_cast<std::ptrdiff_t>(done) * c.down,
                       split.data() + static_cast<std::ptrdiff_t>(done) * c.up, k, p.spec,
                       line.data(), line.data(), p.work.data()),
              engStsNoErr);
    done += k;
  }
  EXPECT_EQ(split, whole);
  EXPECT_EQ(line, whole_line);
}

TEST(Multirate, SplitCallsEqualOneCall) {
  for (const MultirateCase& c : kCases) {
    for (const auto& v : kFloatVariants) SplitEqualsWhole(v, c);
    for (const auto& v : kDoubleVariants) SplitEqualsWhole(v, c);
  }
}

// Without delay lines a call starts from silence: the same as a line of zeros, twice over.
template <class T>
void NoLineIsSilence(const Variant<T>& v) {
  const MultirateCase c{3, 2, 50, 1, 1};
  const std::vector<T> taps = Noise<T>(50, 6);
  Prepared<T> p(v, c, taps);
  ASSERT_EQ(p.status, engStsNoErr);
  const std::vector<T> src = Noise<T>(2 * 30, 7);
  std::vector<T> zeros(static_cast<std::size_t>(PhaseTaps(c)), T(0));
  std::vector<T> with_zeros(3 * 30);
  std::vector<T> first(3 * 30);
  std::vector<T> second(3 * 30);
  ASSERT_EQ(
      v.filter(src.data(), with_zeros.data(), 30, p.spec, zeros.data(), nullptr, p.work.data()),
      engStsNoErr);
  ASSERT_EQ(v.filter(src.data(), first.data(), 30, p.spec, nullptr, nullptr, p.work.data()),
            engStsNoErr);
  ASSERT_EQ(v.filter(src.data(), second.data(), 30, p.spec, nullptr, nullptr, p.work.data()),
            engStsNoErr);
  EXPECT_EQ(first, with_zeros) << v.name;
  EXPECT_EQ(second, first) << v.name;
}

TEST(Multirate, NoDelayLineStartsFromSilence) {
  for (const auto& v : kFloatVariants) NoLineIsSilence(v);
  for (const auto& v : kDoubleVariants) NoLineIsSilence(v);
}

TEST(Multirate, SizeQueryRefusals) {
  struct Query {
    int up, down, taps_len, data_type;
    EngStatus want;
  };
  const Query queries[] = {
      {0, 1, 8, 13, engStsFIRMRFactorErr},
      {1, 0, 8, 13, engStsFIRMRFactorErr},
      {-3, 1, 8, 19, engStsFIRMRFactorErr},
      {2, 1, 0, 13, engStsFIRLenErr},
      {2, 1, -1, 19, engStsFIRLenErr},
      {2, 1, 8, 12, engStsDataTypeErr},
      {2, 1, 8, 0, engStsDataTypeErr},
      // A bank past the 32-bit range.
      {0x40000000, 1, 0x7FFFFFFF, 19, engStsSizeErr},
      {1, 1, 0x7FFFFFFF, 13, engStsSizeErr},
  };
  for (const Query& q : queries) {
    int spec_size = -7;
    int buf_size = -7;
    EXPECT_EQ(engine::dispatch::MultirateFirGetSize(q.up, q.down, q.taps_len, q.data_type,
                                                    &spec_size, &buf_size),
              q.want)
        << q.up << "/" << q.down << " taps " << q.taps_len << " type " << q.data_type;
    EXPECT_EQ(spec_size, -7);
    EXPECT_EQ(buf_size, -7);
  }
  int size = 0;
  EXPECT_EQ(engine::dispatch::MultirateFirGetSize(2, 1, 8, 13, nullptr, &size), engStsNullPtrErr);
  EXPECT_EQ(engine::dispatch::MultirateFirGetSize(2, 1, 8, 13, &size, nullptr), engStsNullPtrErr);
}

template <class T>
void InitRefusals(const Variant<T>& v) {
  SCOPED_TRACE(v.name);
  const std::vector<T> taps(16, T(1));
  std::vector<unsigned char> block(4096, kGuard);
  struct Bad {
    int up, up_phase, down, down_phase, taps_len;
    EngStatus want;
  };
  const Bad bad[] = {
      {2, 2, 1, 0, 16, engStsFIRMRPhaseErr},  {2, -1, 1, 0, 16, engStsFIRMRPhaseErr},
      {2, 0, 3, 3, 16, engStsFIRMRPhaseErr},  {2, 0, 3, -2, 16, engStsFIRMRPhaseErr},
      {0, 0, 1, 0, 16, engStsFIRMRFactorErr}, {1, 0, 0, 0, 16, engStsFIRMRFactorErr},
      {2, 0, 1, 0, 0, engStsFIRLenErr},
  };
  for (const Bad& b : bad) {
    MRFSpec* spec = nullptr;
    EXPECT_EQ(v.init(&spec, taps.data(), b.taps_len, b.up, b.up_phase, b.down, b.down_phase,
                     block.data()),
              b.want);
    EXPECT_EQ(spec, nullptr);
  }
  MRFSpec* spec = nullptr;
  EXPECT_EQ(v.init(nullptr, taps.data(), 16, 2, 0, 1, 0, block.data()), engStsNullPtrErr);
  EXPECT_EQ(v.init(&spec, nullptr, 16, 2, 0, 1, 0, block.data()), engStsNullPtrErr);
  EXPECT_EQ(v.init(&spec, taps.data(), 16, 2, 0, 1, 0, nullptr), engStsNullPtrErr);
  EXPECT_TRUE(GuardIntact(block, 0));
}

TEST(Multirate, InitRefusals) {
  for (const auto& v : kFloatVariants) InitRefusals(v);
  for (const auto& v : kDoubleVariants) InitRefusals(v);
}

template <class T, class Other>
void FilterRefusals(const Variant<T>& v, const Variant<Other>& other) {
  SCOPED_TRACE(v.name);
  const MultirateCase c{3, 2, 24, 0, 0};
  Prepared<T> p(v, c, std::vector<T>(24, T(1)));
  Prepared<Other> foreign(other, c, std::vector<Other>(24, Other(1)));
  ASSERT_EQ(p.status, engStsNoErr);
  ASSERT_EQ(foreign.status, engStsNoErr);
  const std::vector<T> src(64, T(1));
  std::vector<T> dst(96, T(7));
  std::vector<T> line(8, T(7));
  unsigned char* work = p.work.data();
  const MRFSpec* foreign_spec = foreign.spec;
  struct Bad {
    const T* src;
    T* dst;
    int iters;
    const MRFSpec* spec;
    unsigned char* work;
    EngStatus want;
  };
  const Bad bad[] = {
      {nullptr, dst.data(), 4, p.spec, work, engStsNullPtrErr},
      {src.data(), nullptr, 4, p.spec, work, engStsNullPtrErr},
      {src.data(), dst.data(), 4, nullptr, work, engStsNullPtrErr},
      {src.data(), dst.data(), 4, p.spec, nullptr, engStsNullPtrErr},
      {src.data(), dst.data(), 0, p.spec, work, engStsSizeErr},
      {src.data(), dst.data(), -1, p.spec, work, engStsSizeErr},
      {src.data(), dst.data(), std::numeric_limits<int>::min(), p.spec, work, engStsSizeErr},
      // 3 x 2^30 outputs do not fit the engine's 32-bit lengths.
      {src.data(), dst.data(), 0x40000000, p.spec, work, engStsSizeErr},
      {src.data(), dst.data(), 4, foreign_spec, work, engStsContextMatchErr},
  };
  for (const Bad& b : bad) {
    EXPECT_EQ(v.filter(b.src, b.dst, b.iters, b.spec, line.data(), line.data(), b.work), b.want);
  }
  for (T x : dst) EXPECT_EQ(x, T(7));
  for (T x : line) EXPECT_EQ(x, T(7));
  EXPECT_TRUE(p.GuardsIntact());
}

TEST(Multirate, FilterRefusesBadArgumentsWithoutWriting) {
  FilterRefusals(kFloatVariants[0], kDoubleVariants[0]);
  FilterRefusals(kFloatVariants[1], kDoubleVariants[1]);
  FilterRefusals(kDoubleVariants[0], kFloatVariants[0]);
  FilterRefusals(kDoubleVariants[1], kFloatVariants[1]);
}

}  // namespace
}  // namespace zal::test
