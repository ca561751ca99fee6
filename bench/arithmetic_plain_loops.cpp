// The loops a user writes in place of the library, one element at a time with the language's own
// operators (std::complex's for complex vectors). Built twice: with the build's own flags, and
// with -O3 -march=native and ZAL_PLAIN_LOOPS_NATIVE defined.
#include <algorithm>
#include <cmath>

#include "bench/arithmetic_contenders.h"

namespace zal::bench {
namespace {

template <class T>
Runners<T> Loops() {
  Runners<T> runners{};
  runners[kAdd] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T* b, T* dst, T) {
      for (unsigned i = 0; i < n; ++i) dst[i] = a[i] + b[i];
    });
  };
  runners[kSub] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T* b, T* dst, T) {
      for (unsigned i = 0; i < n; ++i) dst[i] = b[i] - a[i];
    });
  };
  runners[kMul] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T* b, T* dst, T) {
      for (unsigned i = 0; i < n; ++i) dst[i] = a[i] * b[i];
    });
  };
  runners[kDiv] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T* b, T* dst, T) {
      for (unsigned i = 0; i < n; ++i) dst[i] = b[i] / a[i];
    });
  };
  runners[kAddProduct] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T* b, T* dst, T) {
      for (unsigned i = 0; i < n; ++i) dst[i] += a[i] * b[i];
    });
  };
  runners[kAddConstant] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T c) {
      for (unsigned i = 0; i < n; ++i) dst[i] = a[i] + c;
    });
  };
  runners[kMulConstant] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T c) {
      for (unsigned i = 0; i < n; ++i) dst[i] = a[i] * c;
    });
  };
  runners[kDivConstant] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T c) {
      for (unsigned i = 0; i < n; ++i) dst[i] = a[i] / c;
    });
  };
  runners[kAddInPlace] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T) {
      for (unsigned i = 0; i < n; ++i) dst[i] += a[i];
    });
  };
  runners[kMulInPlace] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T) {
      for (unsigned i = 0; i < n; ++i) dst[i] *= a[i];
    });
  };
  return runners;
}

// Rounded to nearest even and saturated, in double, where every int16 product is exact.
Runners<short> Int16Loops() {
  Runners<short> runners{};
  runners[kMulConstantInPlace] = [](benchmark::State& state, const Operands<short>& operands) {
    Repeat(state, operands, [](unsigned n, const short*, const short*, short* dst, short c) {
      const double factor = std::ldexp(static_cast<double>(c), -kInt16Scale);
      for (unsigned i = 0; i < n; ++i) {
        const double product = std::nearbyint(dst[i] * factor);
        dst[i] = static_cast<short>(std::clamp(product, -32768.0, 32767.0));
      }
    });
  };
  return runners;
}

}  // namespace

#ifdef ZAL_PLAIN_LOOPS_NATIVE
Contender PlainLoopsNativeContender() {
  return {
    "plain-native", "plain loops, -O3 -march=native",
#else
Contender PlainLoopsContender() {
  return {"plain",
          "plain loops, the build's flags",
#endif
        Loops<float>(), Loops<double>(), Loops<std::complex<float>>(),
        Loops<std::complex<double>>(), Int16Loops()
  };
}

}  // namespace zal::bench
