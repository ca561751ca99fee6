// Plain loops over the C library, as a user writes them. Built twice: with the project's flags
// (scalar libm calls), and with -O3 -march=native -ffast-math (ZAL_LIBMVEC), where GCC calls
// glibc's vector math library for exp, log and pow.
#include <cmath>

#include "bench/math_contenders.h"

namespace zal::bench::math {
namespace {

template <class T>
Runners<T> Table() {
  Runners<T> r{};
  r[kAbs] = [](const T* a, const T*, T* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = std::fabs(a[i]);
  };
  r[kSqr] = [](const T* a, const T*, T* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = a[i] * a[i];
  };
  r[kSqrt] = [](const T* a, const T*, T* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = std::sqrt(a[i]);
  };
  r[kInverse] = [](const T* a, const T*, T* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = T(1) / a[i];
  };
  r[kRound] = [](const T* a, const T*, T* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = std::round(a[i]);
  };
  r[kExp] = [](const T* a, const T*, T* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = std::exp(a[i]);
  };
  r[kLn] = [](const T* a, const T*, T* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = std::log(a[i]);
  };
  r[kPow] = [](const T* a, const T* b, T* d, int n) {
    for (int i = 0; i < n; ++i) d[i] = std::pow(a[i], b[i]);
  };
  // The reduced classes have no counterpart: the full functions stand in.
  r[kLnPrec24] = r[kLnPrec21] = r[kLnPrec11] = r[kLn];
  r[kPowPrec26] = r[kPow];
  r[kInversePrec26] = r[kInverse];
  return r;
}

}  // namespace

#ifdef ZAL_LIBMVEC
const Contender* LibmvecLoop() {
  static const Contender contender{"libmvec", "C library loop, -O3 -march=native -ffast-math",
                                   Table<float>(), Table<double>()};
  return &contender;
}
#else
const Contender* LibmLoop() {
  static const Contender contender{"libm", "C library loop, project flags", Table<float>(),
                                   Table<double>()};
  return &contender;
}
#endif

}  // namespace zal::bench::math
