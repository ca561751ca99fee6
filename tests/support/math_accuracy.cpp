#include "tests/support/math_accuracy.h"

#include <mpfr.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <type_traits>

#include "engine/core/dispatch.h"

namespace zal::test::math {
namespace {

using engine::Accuracy;

constexpr Function kFunctions[] = {
    {"AbsF32", Accuracy::kExact, false, false},
    {"SqrF32", Accuracy::kExact, false, false},
    {"SqrtF32", Accuracy::kExact, false, false},
    {"InverseF32", Accuracy::kExact, false, false},
    {"RoundF32", Accuracy::kExact, false, false},
    {"ExpF32", Accuracy::kUlp1, false, false},
    {"LnF32", Accuracy::kUlp1, false, false},
    {"LnF32Prec24", Accuracy::kCorrectBits24, false, false},
    {"LnF32Prec21", Accuracy::kCorrectBits21, false, false},
    {"LnF32Prec11", Accuracy::kCorrectBits11, false, false},
    {"PowF32", Accuracy::kUlp1, false, true},
    {"AbsF64", Accuracy::kExact, true, false},
    {"SqrF64", Accuracy::kExact, true, false},
    {"SqrtF64", Accuracy::kExact, true, false},
    {"InverseF64", Accuracy::kExact, true, false},
    {"InverseF64Prec26", Accuracy::kCorrectBits26, true, false},
    {"RoundF64", Accuracy::kExact, true, false},
    {"ExpF64", Accuracy::kUlp1, true, false},
    {"LnF64", Accuracy::kUlp1, true, false},
    {"PowF64", Accuracy::kUlp1, true, true},
    {"PowF64Prec26", Accuracy::kCorrectBits26, true, true},
};

// SplitMix64.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t operator()() {
    std::uint64_t z = state_ += 0x9e3779b97f4a7c15;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
  }
  double Uniform(double lo, double hi) {
    return lo + (hi - lo) * static_cast<double>((*this)() >> 11) * 0x1p-53;
  }
  bool OneIn(unsigned n) { return (*this)() % n == 0; }

 private:
  std::uint64_t state_;
};

// Every finite value of the type with the same chance per binade: random bits, exponent uniform,
// subnormals and both signs included.
double AnyFinite(Random& random, bool is_double, bool positive) {
  double x;
  if (is_double) {
    std::uint64_t bits = random() & 0x7FFFFFFFFFFFFFFFu;
    if ((bits >> 52) == 0x7FF) bits &= 0x7FEFFFFFFFFFFFFFu;
    x = std::bit_cast<double>(bits);
  } else {
    std::uint32_t bits = static_cast<std::uint32_t>(random()) & 0x7FFFFFFFu;
    if ((bits >> 23) == 0xFF) bits &= 0x7F7FFFFFu;
    x = std::bit_cast<float>(bits);
  }
  return positive || random.OneIn(2) ? x : -x;
}

double Special(Random& random) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  const double specials[] = {0.0, -0.0, kInf, -kInf, std::nan(""), 1.0, -1.0, 0.5, -2.0};
  return specials[random() % std::size(specials)];
}

// Rounded to the function's element type.
double ToType(double x, bool is_double) {
  return is_double ? x : static_cast<double>(static_cast<float>(x));
}

void Arguments(const Function& f, Random& random, double& x, double& y) {
  const std::string name = f.name;
  const bool d = f.is_double;
  y = 0;
  if (random.OneIn(64)) {
    x = Special(random);
    y = Special(random);
    if (!f.binary && !random.OneIn(4)) x = AnyFinite(random, d, false);
    return;
  }
  if (name.rfind("Exp", 0) == 0) {
    const double lo = d ? -746.0 : -104.0;
    const double hi = d ? 710.0 : 89.0;
    switch (random() % 4) {
      case 0:  // the overflow and underflow limits
        x = random.OneIn(2) ? hi - random.Uniform(0, 2) : lo + random.Uniform(0, 40);
        break;
      case 1:  // small magnitudes
        x = std::ldexp(random.Uniform(-1, 1), -static_cast<int>(random() % 60));
        break;
      default:
        x = random.Uniform(lo, hi);
    }
  } else if (name.rfind("Ln", 0) == 0) {
    x = random.OneIn(4) ? 1.0 + std::ldexp(random.Uniform(-1, 1), -static_cast<int>(random() % 40))
                        : AnyFinite(random, d, true);
  } else if (name.rfind("Pow", 0) == 0) {
    x = AnyFinite(random, d, !random.OneIn(4));
    if (random.OneIn(4))
      x = ToType(std::copysign(
                     1.0 + std::ldexp(random.Uniform(-1, 1), -static_cast<int>(random() % 30)), x),
                 d);
    // The exponent mostly keeps |y ln x| within the range, sometimes just past it.
    const double ln = std::fabs(std::log(std::fabs(ToType(x, d))));
    const double reach = (d ? 760.0 : 110.0) / (ln > 0 ? ln : 1.0);
    y = random.OneIn(3) ? std::round(random.Uniform(-1, 1) * std::fmin(reach, 0x1p40))
                        : random.Uniform(-1, 1) * std::fmin(reach, 1e300);
  } else if (name.rfind("Round", 0) == 0) {
    x = random.OneIn(2) ? std::ldexp(std::round(random.Uniform(-64, 64)) + 0.5,
                                     -static_cast<int>(random() % 3)) +
                              (random.OneIn(2) ? 0.0 : std::ldexp(random.Uniform(-1, 1), -30))
                        : AnyFinite(random, d, false);
  } else if (name.rfind("InverseF64Prec26", 0) == 0 && !random.OneIn(8)) {
    // Mostly the range its approximation serves; a vector with one lane outside divides.
    x = std::ldexp(random.Uniform(1, 2), static_cast<int>(random() % 240) - 120);
    if (random.OneIn(2)) x = -x;
  } else {
    x = AnyFinite(random, d, false);
  }
  x = ToType(x, d);
  y = ToType(y, d);
}

// The exact result at 160 bits, by the primitive's definition.
void Exact(const Function& f, double x, double y, mpfr_t result) {
  mpfr_t a, b;
  mpfr_inits2(160, a, b, static_cast<mpfr_ptr>(nullptr));
  mpfr_set_d(a, x, MPFR_RNDN);
  mpfr_set_d(b, y, MPFR_RNDN);
  const std::string name = f.name;
  if (name.rfind("Abs", 0) == 0) {
    mpfr_abs(result, a, MPFR_RNDN);
  } else if (name.rfind("Sqrt", 0) == 0) {
    mpfr_sqrt(result, a, MPFR_RNDN);
  } else if (name.rfind("Sqr", 0) == 0) {
    mpfr_sqr(result, a, MPFR_RNDN);
  } else if (name.rfind("Inverse", 0) == 0) {
    mpfr_ui_div(result, 1, a, MPFR_RNDN);
  } else if (name.rfind("Round", 0) == 0) {
    mpfr_round(result, a);
  } else if (name.rfind("Exp", 0) == 0) {
    mpfr_exp(result, a, MPFR_RNDN);
  } else if (name.rfind("Ln", 0) == 0) {
    mpfr_log(result, a, MPFR_RNDN);
  } else {
    mpfr_pow(result, a, b, MPFR_RNDN);
  }
  mpfr_clears(a, b, static_cast<mpfr_ptr>(nullptr));
}

// The exact result rounded to the element type, with IEEE subnormals.
double RoundToType(const mpfr_t exact, bool is_double) {
  const double e = mpfr_get_d(exact, MPFR_RNDN);
  if (is_double) {
    if (std::fabs(e) >= std::numeric_limits<double>::min() || e == 0 || std::isnan(e)) return e;
    // Subnormal: round at the subnormal quantum.
    mpfr_t scaled;
    mpfr_init2(scaled, 160);
    mpfr_mul_2si(scaled, exact, 1074, MPFR_RNDN);
    mpfr_rint(scaled, scaled, MPFR_RNDN);
    const double r = std::ldexp(mpfr_get_d(scaled, MPFR_RNDN), -1074);
    mpfr_clear(scaled);
    return r;
  }
  if (std::fabs(e) < std::numeric_limits<float>::min() && e != 0) {
    return std::ldexp(std::nearbyint(std::ldexp(e, 149)), -149);
  }
  return static_cast<double>(mpfr_get_flt(exact, MPFR_RNDN));
}

double UlpOf(double rounded, bool is_double) {
  const int digits = is_double ? 53 : 24;
  const int min_exponent = is_double ? -1074 : -149;
  int exponent;
  std::frexp(rounded, &exponent);
  return std::ldexp(1.0, std::max(exponent - digits, min_exponent));
}

template <class T>
void Run(const Function& f, int level, const std::vector<double>& x, const std::vector<double>& y,
         std::vector<double>& got) {
  const std::size_t n = x.size();
  std::vector<T> a(n), b(n), d(n);
  for (std::size_t i = 0; i < n; ++i) {
    a[i] = static_cast<T>(x[i]);
    b[i] = static_cast<T>(y[i]);
  }
  bool found = false;
#define ZAL_CALL_IF_NAMED(family, primitive, shape, accuracy)                                  \
  if constexpr (std::is_same_v<engine::shape, engine::Unary<T>>) {                             \
    if (!found && std::strcmp(#primitive, f.name) == 0) {                                      \
      engine::g_dispatch_tables.primitive[1 + level](a.data(), d.data(), static_cast<int>(n)); \
      found = true;                                                                            \
    }                                                                                          \
  } else if constexpr (std::is_same_v<engine::shape, engine::Binary<T>>) {                     \
    if (!found && std::strcmp(#primitive, f.name) == 0) {                                      \
      engine::g_dispatch_tables.primitive[1 + level](a.data(), b.data(), d.data(),             \
                                                     static_cast<int>(n));                     \
      found = true;                                                                            \
    }                                                                                          \
  }
  ZAL_MATH_PRIMITIVES(ZAL_CALL_IF_NAMED)
#undef ZAL_CALL_IF_NAMED
  got.assign(d.begin(), d.end());
}

std::string Describe(double x, double y, bool binary, double exact, double got) {
  char text[160];
  if (binary) {
    std::snprintf(text, sizeof text, "x %a y %a: exact %a, got %a", x, y, exact, got);
  } else {
    std::snprintf(text, sizeof text, "x %a: exact %a, got %a", x, exact, got);
  }
  return text;
}

}  // namespace

std::span<const Function> Functions() {
  return kFunctions;
}

Sample::Sample(const Function& function, std::uint64_t count, std::uint64_t seed)
    : function_(&function) {
  Random random(seed);
  x_.resize(count);
  y_.resize(count);
  for (std::uint64_t i = 0; i < count; ++i) Arguments(function, random, x_[i], y_[i]);
  ComputeExact();
}

Sample::Sample(const Function& function, std::vector<double> x, std::vector<double> y)
    : function_(&function), x_(std::move(x)), y_(std::move(y)) {
  y_.resize(x_.size());
  ComputeExact();
}

void Sample::ComputeExact() {
  const Function& function = *function_;
  exact_.resize(x_.size());
  error_base_.resize(x_.size());
  mpfr_t exact, rest;
  mpfr_inits2(160, exact, rest, static_cast<mpfr_ptr>(nullptr));
  for (std::size_t i = 0; i < x_.size(); ++i) {
    Exact(function, x_[i], y_[i], exact);
    exact_[i] = RoundToType(exact, function.is_double);
    if (std::isfinite(exact_[i])) {
      mpfr_sub_d(rest, exact, exact_[i], MPFR_RNDN);
      error_base_[i] = mpfr_get_d(rest, MPFR_RNDN);
    } else {
      error_base_[i] = 0;
    }
  }
  mpfr_clears(exact, rest, static_cast<mpfr_ptr>(nullptr));
}

Errors Sample::Measure(int level) const {
  const Function& f = *function_;
  std::vector<double> got;
  if (f.is_double) {
    Run<double>(f, level, x_, y_, got);
  } else {
    Run<float>(f, level, x_, y_, got);
  }
  Errors errors;
  errors.count = got.size();
  const double min_normal =
      f.is_double ? std::numeric_limits<double>::min() : std::numeric_limits<float>::min();
  for (std::size_t i = 0; i < got.size(); ++i) {
    const double exact = exact_[i];
    const double g = got[i];
    const double y = f.binary ? y_[i] : 0;
    if (!std::isfinite(exact) || !std::isfinite(g) || exact == 0) {
      // Special results match exactly: NaN for NaN, the same infinity, a zero of either sign
      // (a signed zero where the exact result is zero and the function defines its sign).
      const bool same = (std::isnan(exact) && std::isnan(g)) || exact == g ||
                        (exact == 0 && std::fabs(g) < min_normal && g == 0);
      const bool sign_matters =
          std::string(f.name).rfind("Round", 0) == 0 || std::string(f.name).rfind("Abs", 0) == 0;
      const bool sign_ok = !sign_matters || std::isnan(g) || std::signbit(exact) == std::signbit(g);
      if (!(same && sign_ok) && errors.worst_special.empty()) {
        errors.worst_special = Describe(x_[i], y, f.binary, exact, g);
      }
      if (!(same && sign_ok)) errors.max_ulps = std::numeric_limits<double>::infinity();
      continue;
    }
    if (g != exact || std::signbit(g) != std::signbit(exact)) ++errors.inexact;
    // got - exact, with exact = rounded + base: the difference of two close values is exact.
    const double difference = (g - exact) - error_base_[i];
    const double ulps = std::fabs(difference) / UlpOf(exact, f.is_double);
    if (ulps > errors.max_ulps) {
      errors.max_ulps = ulps;
      errors.worst = Describe(x_[i], y, f.binary, exact, g);
    }
    if (std::fabs(exact) >= min_normal) {
      const double relative = std::fabs(difference) / std::fabs(exact + error_base_[i]);
      const double bits = relative > 0 ? 1 - std::log2(relative) : 99;
      if (bits < errors.min_bits) errors.min_bits = bits;
    }
  }
  return errors;
}

bool WithinClass(const Function& function, const Errors& errors) {
  switch (function.accuracy) {
    case Accuracy::kExact:
      return errors.inexact == 0 && errors.worst_special.empty();
    case Accuracy::kUlp1:
      return errors.max_ulps <= 1;
    case Accuracy::kCorrectBits11:
      return errors.worst_special.empty() && errors.min_bits >= 11;
    case Accuracy::kCorrectBits21:
      return errors.worst_special.empty() && errors.min_bits >= 21;
    case Accuracy::kCorrectBits24:
      return errors.worst_special.empty() && errors.min_bits >= 24;
    case Accuracy::kCorrectBits26:
      return errors.worst_special.empty() && errors.min_bits >= 26;
    case Accuracy::kService:
      break;
  }
  return false;
}

std::string Bound(const Function& function) {
  switch (function.accuracy) {
    case Accuracy::kExact:
      return "exact";
    case Accuracy::kUlp1:
      return "<= 1 ulp";
    case Accuracy::kCorrectBits11:
      return ">= 11 bits";
    case Accuracy::kCorrectBits21:
      return ">= 21 bits";
    case Accuracy::kCorrectBits24:
      return ">= 24 bits";
    case Accuracy::kCorrectBits26:
      return ">= 26 bits";
    case Accuracy::kService:
      break;
  }
  return "?";
}

}  // namespace zal::test::math
