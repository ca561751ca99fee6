// The decisions of the math primitives, through the dispatched engine at the run's level and in
// the portable variant: rounding halves away from zero, the double logarithm's special cases in
// their order with the error hook's calls, and the power function's reports.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "engine/core/dispatch.h"
#include "engine/core/streaming.h"
#include "tests/engine/harness/elements.h"
#include "tests/engine/harness/fp_environment.h"

namespace zal::engine {
namespace {

using test::harness::SameBits;
using test::harness::Show;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Calls of the error hook, recorded.
struct Report {
  int index;
  EngStatus code;
  std::string tag;
  bool operator==(const Report&) const = default;
};
std::vector<Report> g_reports;
void Record(int index, EngStatus code, const char* tag) {
  g_reports.push_back({index, code, tag});
}

class HookRecorder {
 public:
  HookRecorder() : previous_(engSetErrorHook(&Record)) { g_reports.clear(); }
  ~HookRecorder() { engSetErrorHook(previous_); }

 private:
  EngErrorHook previous_;
};

// Values placed at spread-out indices among ones, so that they fall in different lanes and
// registers and in the tail; returns the indices.
template <class T>
std::vector<int> Scatter(const std::vector<T>& values, std::vector<T>& arguments) {
  arguments.assign(5 * values.size() + 3, T(1));
  std::vector<int> at;
  for (std::size_t i = 0; i < values.size(); ++i) {
    at.push_back(static_cast<int>(5 * i + 2));
    arguments[at.back()] = values[i];
  }
  return at;
}

// Under every rounding mode of the caller: the result does not depend on it, and the mode is
// left as it was.
TEST(MathSemantics, RoundsHalvesAwayFromZeroKeepingTheSign) {
  struct Case {
    double x, rounded;
  };
  const Case cases[] = {{1.5, 2},           {2.5, 3},
                        {-2.5, -3},         {-0.4, -0.0},
                        {0.5, 1},           {-0.5, -1},
                        {1.7, 2},           {0.4, 0},
                        {3.2, 3},           {-3.7, -4},
                        {0.49999997, 0},    {-1e300, -1e300},
                        {8388609, 8388609}, {4503599627370497.0, 4503599627370497.0},
                        {-kInf, -kInf}};
  for (unsigned mode : test::harness::kRoundingModes) {
    const test::harness::FpModes rounding(mode);
    const unsigned control = test::harness::MxcsrControl();
    for (const Case& c : cases) {
      std::vector<double> d_in, d_out(0);
      const std::vector<int> at = Scatter<double>({c.x}, d_in);
      d_out.resize(d_in.size());
      ASSERT_EQ(dispatch::RoundF64(d_in.data(), d_out.data(), static_cast<int>(d_in.size())), 0);
      EXPECT_TRUE(SameBits(d_out[at[0]], c.rounded))
          << c.x << " -> " << Show(d_out[at[0]]) << ", MXCSR " << std::hex << _mm_getcsr();
      std::vector<float> f_in, f_out;
      Scatter<float>({static_cast<float>(c.x)}, f_in);
      f_out.resize(f_in.size());
      ASSERT_EQ(dispatch::RoundF32(f_in.data(), f_out.data(), static_cast<int>(f_in.size())), 0);
      // Not the C library's roundf: some runtimes round 0.49999997f up.
      const float expected = static_cast<float>(c.rounded);
      EXPECT_TRUE(SameBits(f_out[at[0]], expected))
          << c.x << " -> " << Show(f_out[at[0]]) << ", MXCSR " << std::hex << _mm_getcsr();
      EXPECT_EQ(test::harness::MxcsrControl(), control);
    }
  }
}

// The double logarithm in the stated order: poles, +inf, NaN, domain errors, subnormals.
TEST(MathSemantics, DoubleLnSpecialCasesAndReports) {
  const std::vector<double> values = {
      0.0, -0.0,         kInf, kNaN, -1.0, -kInf, std::numeric_limits<double>::denorm_min(),
      1.0, std::exp(1.0)};
  std::vector<double> x;
  const std::vector<int> at = Scatter(values, x);
  for (auto* ln : {&dispatch::LnF64, &portable::LnF64}) {
    HookRecorder recorder;
    std::vector<double> y(x.size());
    ASSERT_EQ((*ln)(x.data(), y.data(), static_cast<int>(x.size())), 0);
    EXPECT_TRUE(SameBits(y[at[0]], -kInf));
    EXPECT_TRUE(SameBits(y[at[1]], -kInf));
    EXPECT_TRUE(SameBits(y[at[2]], kInf));
    EXPECT_TRUE(std::isnan(y[at[3]]));
    EXPECT_EQ(std::bit_cast<std::uint64_t>(y[at[4]]), 0xFFF8000000000000u);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(y[at[5]]), 0xFFF8000000000000u);
    EXPECT_NEAR(y[at[6]], -744.4400719213812, 1e-12);
    EXPECT_EQ(y[at[7]], 0.0);
    EXPECT_EQ(y[at[8]], 1.0);
    const std::vector<Report> expected = {
        {at[0], 18, "Ln64"}, {at[1], 18, "Ln64"}, {at[4], 19, "Ln64"}, {at[5], 19, "Ln64"}};
    EXPECT_EQ(g_reports, expected);
  }
}

TEST(MathSemantics, DoublePowReportsPolesAndDomainErrors) {
  const std::vector<double> bases = {0.0, -0.0, -2.0, -2.0, 2.0, -8.0};
  const std::vector<double> exponents = {-1.0, -3.0, 0.5, 3.0, -0.5, 1.0 / 3};
  std::vector<double> x, y;
  const std::vector<int> at = Scatter(bases, x);
  Scatter(exponents, y);
  for (auto* pow : {&dispatch::PowF64, &dispatch::PowF64Prec26, &portable::PowF64}) {
    HookRecorder recorder;
    std::vector<double> r(x.size());
    ASSERT_EQ((*pow)(x.data(), y.data(), r.data(), static_cast<int>(x.size())), 0);
    EXPECT_TRUE(SameBits(r[at[0]], kInf));
    EXPECT_TRUE(SameBits(r[at[1]], -kInf));
    EXPECT_TRUE(std::isnan(r[at[2]]));
    EXPECT_NEAR(r[at[3]], -8.0, 1e-6);
    EXPECT_NEAR(r[at[4]], std::sqrt(0.5), 1e-7);
    EXPECT_TRUE(std::isnan(r[at[5]]));
    const std::vector<Report> expected = {
        {at[0], 18, "Pow64"}, {at[1], 18, "Pow64"}, {at[2], 19, "Pow64"}, {at[5], 19, "Pow64"}};
    EXPECT_EQ(g_reports, expected);
  }
}

// Destinations large enough to be streamed start with a partial vector until they reach the
// register's alignment; reports still name the element, whatever that head's length.
TEST(MathSemantics, ReportsNameTheElementAtEveryDestinationAlignment) {
  const std::ptrdiff_t n = StreamingStoreThresholdBytes() / 8 + 31080;
  const std::vector<std::ptrdiff_t> bad = {0, 5, n / 2, n - 1};
  std::vector<double> x(n, 2.0);
  const std::vector<double> y(n, 0.5);
  for (std::ptrdiff_t i : bad) x[i] = -1.0;
  std::vector<double> block(n + 16);
  double* const aligned = reinterpret_cast<double*>(
      (reinterpret_cast<std::uintptr_t>(block.data()) + 63) & ~std::uintptr_t{63});
  struct Function {
    const char* name;
    EngStatus (*ln)(const double*, double*, int);
    EngStatus (*pow)(const double*, const double*, double*, int);
  };
  const Function functions[] = {{"Ln", &dispatch::LnF64, nullptr},
                                {"Pow", nullptr, &dispatch::PowF64},
                                {"Pow_Prec26", nullptr, &dispatch::PowF64Prec26}};
  for (const Function& f : functions) {
    const std::string tag = f.ln ? "Ln64" : "Pow64";
    std::vector<Report> expected;
    for (std::ptrdiff_t i : bad) expected.push_back({static_cast<int>(i), 19, tag});
    for (int offset = 0; offset < 8; ++offset) {
      HookRecorder recorder;
      double* const dst = aligned + offset;
      ASSERT_EQ(f.ln ? f.ln(x.data(), dst, static_cast<int>(n))
                     : f.pow(x.data(), y.data(), dst, static_cast<int>(n)),
                0);
      EXPECT_EQ(g_reports, expected) << f.name << ", destination at 64-byte block + " << offset;
    }
  }
}

// IEEE results at the edges of the float and double exponentials and logarithms.
TEST(MathSemantics, ExpAndLnEdges) {
  const std::vector<float> fx = {89.0f, -104.0f, std::numeric_limits<float>::infinity(),
                                 -std::numeric_limits<float>::infinity(), 0.0f};
  std::vector<float> x, y;
  const std::vector<int> at = Scatter(fx, x);
  y.resize(x.size());
  ASSERT_EQ(dispatch::ExpF32(x.data(), y.data(), static_cast<int>(x.size())), 0);
  EXPECT_TRUE(std::isinf(y[at[0]]));
  EXPECT_EQ(y[at[1]], 0.0f);
  EXPECT_TRUE(std::isinf(y[at[2]]));
  EXPECT_EQ(y[at[3]], 0.0f);
  EXPECT_EQ(y[at[4]], 1.0f);
  for (auto* ln :
       {&dispatch::LnF32, &dispatch::LnF32Prec24, &dispatch::LnF32Prec21, &dispatch::LnF32Prec11}) {
    ASSERT_EQ((*ln)(x.data(), y.data(), static_cast<int>(x.size())), 0);
    EXPECT_NEAR(y[at[0]], std::log(89.0f), 1e-2);
    EXPECT_TRUE(std::isnan(y[at[1]]));
    EXPECT_TRUE(std::isinf(y[at[2]]) && y[at[2]] > 0);
    EXPECT_TRUE(std::isnan(y[at[3]]));
    EXPECT_TRUE(std::isinf(y[at[4]]) && y[at[4]] < 0);
  }
}

// Without a hook installed, reports go nowhere; installing returns the one replaced.
TEST(MathSemantics, ErrorHookInstallation) {
  const EngErrorHook original = engSetErrorHook(&Record);
  EXPECT_EQ(engSetErrorHook(nullptr), &Record);
  EXPECT_EQ(engSetErrorHook(original), original);
}

}  // namespace
}  // namespace zal::engine
