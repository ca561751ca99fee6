// Accuracy of the math kernels, beyond what the tests sample.
//
//   zal_math_accuracy [--samples N] [--level L]   every function against MPFR over N random
//                                                  arguments (default 10^7), at level L or at
//                                                  every level this processor runs
//   zal_math_accuracy --exhaustive [--level L]     every one of the 2^32 float arguments of the
//                                                  one-argument float functions, against the
//                                                  C library's double functions (within 2^-52,
//                                                  so float errors come out to better than 2^-28
//                                                  ulp)
//   --only NAME                                    just the function NAME (e.g. LnF32Prec21)
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "engine/core/cpu_features.h"
#include "engine/core/cpuid_source.h"
#include "engine/core/dispatch.h"
#include "engine/core/level.h"
#include "tests/support/math_accuracy.h"

namespace {

using zal::engine::g_dispatch_tables;
namespace math = zal::test::math;

constexpr const char* kLevelNames[] = {"sse2", "ssse3", "sse42", "avx", "avx2", "avx512"};

std::vector<int> Levels(int forced) {
  if (forced >= 0) return {forced};
  std::uint64_t features = 0;
  zal::engine::DetectFeatures(zal::engine::ThisProcessor(), &features);
  std::vector<int> levels;
  for (int level = 0; level < zal::engine::kLevelCount; ++level) {
    if ((features & zal::engine::kLevelNeeds[level]) == zal::engine::kLevelNeeds[level]) {
      levels.push_back(level);
    }
  }
  return levels;
}

// The function named by --only, or every function when none was named.
const char* g_only = nullptr;
bool Chosen(const char* name) {
  return !g_only || !std::strcmp(g_only, name);
}

int Sampled(std::uint64_t samples, int forced) {
  std::printf("| function | bound | level | max ulp | min correct bits | worst case |\n");
  std::printf("|---|---|---|---|---|---|\n");
  int failures = 0;
  for (const math::Function& f : math::Functions()) {
    if (!Chosen(f.name)) continue;
    const math::Sample sample(f, samples, 0xacc0000 + std::strlen(f.name));
    for (int level : Levels(forced)) {
      const math::Errors e = sample.Measure(level);
      const bool ok = math::WithinClass(f, e);
      failures += !ok;
      std::printf("| %s | %s | %s | %.4f | %.2f | %s%s%s |\n", f.name, math::Bound(f).c_str(),
                  kLevelNames[level], e.max_ulps, e.min_bits, e.worst.c_str(),
                  e.worst_special.empty() ? "" : "; special ", e.worst_special.c_str());
      std::fflush(stdout);
    }
  }
  return failures;
}

// The float functions of one argument and their double references.
struct FloatFunction {
  const char* name;
  zal::engine::Unary<float>* const* table;
  double (*reference)(double);
  double bound_ulps;  // 1 for the full-accuracy class, 0 for the exact ones
  int bits;           // correct bits of a reduced class, else 0
};

double Inverse(double x) {
  return 1 / x;
}
double Square(double x) {
  return x * x;
}
double RoundHalfAway(double x) {
  return std::round(x);
}
double Magnitude(double x) {
  return std::fabs(x);
}
double Root(double x) {
  return std::sqrt(x);
}
double Exponential(double x) {
  return std::exp(x);
}
double Logarithm(double x) {
  return std::log(x);
}

int Exhaustive(int forced) {
  const FloatFunction functions[] = {
      {"ExpF32", g_dispatch_tables.ExpF32, Exponential, 1, 0},
      {"LnF32", g_dispatch_tables.LnF32, Logarithm, 1, 0},
      {"LnF32Prec24", g_dispatch_tables.LnF32Prec24, Logarithm, 0, 24},
      {"LnF32Prec21", g_dispatch_tables.LnF32Prec21, Logarithm, 0, 21},
      {"LnF32Prec11", g_dispatch_tables.LnF32Prec11, Logarithm, 0, 11},
      {"SqrtF32", g_dispatch_tables.SqrtF32, Root, 0, 0},
      {"InverseF32", g_dispatch_tables.InverseF32, Inverse, 0, 0},
      {"SqrF32", g_dispatch_tables.SqrF32, Square, 0, 0},
      {"AbsF32", g_dispatch_tables.AbsF32, Magnitude, 0, 0},
      {"RoundF32", g_dispatch_tables.RoundF32, RoundHalfAway, 0, 0},
  };
  constexpr std::uint32_t kBlock = 1 << 16;
  std::vector<float> x(kBlock), y(kBlock);
  std::printf(
      "| function | level | max ulp | min correct bits | not correctly rounded | worst |\n");
  std::printf("|---|---|---|---|---|---|\n");
  int failures = 0;
  for (const FloatFunction& f : functions) {
    if (!Chosen(f.name)) continue;
    for (int level : Levels(forced)) {
      double max_ulps = 0;
      double min_bits = 99;
      std::uint64_t inexact = 0;
      std::uint64_t special_errors = 0;
      float worst = 0;
      for (std::uint64_t start = 0; start < (std::uint64_t{1} << 32); start += kBlock) {
        for (std::uint32_t i = 0; i < kBlock; ++i) {
          const auto bits = static_cast<std::uint32_t>(start + i);
          std::memcpy(&x[i], &bits, 4);
        }
        f.table[1 + level](x.data(), y.data(), static_cast<int>(kBlock));
        for (std::uint32_t i = 0; i < kBlock; ++i) {
          const double exact = f.reference(x[i]);
          const auto rounded = static_cast<float>(exact);
          const double got = y[i];
          if (std::isnan(exact) || std::isnan(got) || std::isinf(rounded) || std::isinf(got) ||
              exact == 0) {
            const bool same =
                (std::isnan(exact) && std::isnan(got)) || static_cast<double>(rounded) == got;
            special_errors += !same;
            continue;
          }
          if (got != static_cast<double>(rounded)) ++inexact;
          int exponent;
          std::frexp(exact, &exponent);
          const double ulp = std::ldexp(1.0, std::max(exponent - 24, -149));
          const double ulps = std::fabs(got - exact) / ulp;
          if (ulps > max_ulps) {
            max_ulps = ulps;
            worst = x[i];
          }
          if (std::fabs(exact) >= std::numeric_limits<float>::min()) {
            const double relative = std::fabs(got - exact) / std::fabs(exact);
            if (relative > 0) min_bits = std::fmin(min_bits, 1 - std::log2(relative));
          }
        }
      }
      const bool ok = special_errors == 0 &&
                      (f.bits ? min_bits >= f.bits : (f.bound_ulps ? max_ulps <= 1 : inexact == 0));
      failures += !ok;
      std::printf("| %s | %s | %.4f | %.2f | %llu | %a%s |\n", f.name, kLevelNames[level], max_ulps,
                  min_bits, static_cast<unsigned long long>(inexact), static_cast<double>(worst),
                  special_errors ? " (special cases wrong)" : "");
      std::fflush(stdout);
    }
  }
  return failures;
}

}  // namespace

int main(int argc, char** argv) {
  std::uint64_t samples = 10000000;
  int level = -1;
  bool exhaustive = false;
  for (int i = 1; i < argc; ++i) {
    if (!std::strcmp(argv[i], "--samples") && i + 1 < argc) {
      samples = std::strtoull(argv[++i], nullptr, 10);
    } else if (!std::strcmp(argv[i], "--level") && i + 1 < argc) {
      level = std::atoi(argv[++i]);
    } else if (!std::strcmp(argv[i], "--exhaustive")) {
      exhaustive = true;
    } else if (!std::strcmp(argv[i], "--only") && i + 1 < argc) {
      g_only = argv[++i];
    } else {
      std::fprintf(stderr, "usage: %s [--samples N | --exhaustive] [--level 0..5] [--only NAME]\n",
                   argv[0]);
      return 2;
    }
  }
  return (exhaustive ? Exhaustive(level) : Sampled(samples, level)) == 0 ? 0 : 1;
}
