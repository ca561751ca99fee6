// The elementwise arithmetic benchmark: what every contender implements, and how the harness
// hands it its operands. Each contender lives in its own translation unit, built with its own
// flags, and exposes one table of runners; the harness allocates, fills, times and counts.
#pragma once

#include <benchmark/benchmark.h>

#include <array>
#include <complex>

namespace zal::bench {

// The library's operand roles: Sub gives b - a and Div b / a; the in-place forms read a and
// update dst; the constant forms read a and c.
template <class T>
struct Operands {
  unsigned n;
  const T* a;
  const T* b;
  T* dst;
  T c;
};

// MulConstant_InPlace on int16 computes dst * c * 2^-kInt16Scale. With c = -2 and scale 1 every
// call negates exactly, so values neither drift nor pile up at the saturation bounds however
// often the loop repeats, and the rounding and saturation are still done in full.
inline constexpr short kInt16Constant = -2;
inline constexpr int kInt16Scale = 1;

enum Member {
  kAdd,
  kSub,
  kMul,
  kDiv,
  kAddProduct,
  kAddConstant,
  kMulConstant,
  kDivConstant,
  kAddInPlace,
  kMulInPlace,
  kMulConstantInPlace,
  kMemberCount,
};

// Runs the member over the operands in the state's timing loop. A null runner: the contender
// lacks the member.
template <class T>
using Runner = void (*)(benchmark::State& state, const Operands<T>& operands);
template <class T>
using Runners = std::array<Runner<T>, kMemberCount>;

struct Contender {
  const char* name;   // in benchmark names: <type>.<member>/<name>/...
  const char* about;  // how it is built or dispatched, for the report's context
  Runners<float> f32;
  Runners<double> f64;
  Runners<std::complex<float>> c32;
  Runners<std::complex<double>> c64;
  Runners<short> s16;
};

// The timing loop every contender shares: the operands in locals, as a caller holds them, and
// the loop body inlined into it, as a loop written at the call site would be.
template <class T, class Body>
void Repeat(benchmark::State& state, const Operands<T>& operands, Body body) {
  const unsigned n = operands.n;
  const T* a = operands.a;
  const T* b = operands.b;
  T* dst = operands.dst;
  const T c = operands.c;
  for (auto _ : state) {
    body(n, a, b, dst, c);
    benchmark::ClobberMemory();
  }
}

Contender OursContender();
// The same loops, compiled once with the build's flags and once with -O3 -march=native.
Contender PlainLoopsContender();
Contender PlainLoopsNativeContender();
Contender VolkContender();
Contender EigenContender();

}  // namespace zal::bench
