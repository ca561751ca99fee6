// The library, called through its public API as a user calls it: every call dispatched.
#include "bench/arithmetic_contenders.h"
#include "zalaccelerate/utility.h"

namespace zal::bench {
namespace {

namespace utility = zalaccelerate::utility;

template <class T>
Runners<T> Calls() {
  Runners<T> runners{};
  runners[kAdd] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands,
           [](unsigned n, const T* a, const T* b, T* dst, T) { utility::Add(n, a, b, dst); });
  };
  runners[kSub] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands,
           [](unsigned n, const T* a, const T* b, T* dst, T) { utility::Sub(n, a, b, dst); });
  };
  runners[kMul] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands,
           [](unsigned n, const T* a, const T* b, T* dst, T) { utility::Mul(n, a, b, dst); });
  };
  runners[kDiv] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands,
           [](unsigned n, const T* a, const T* b, T* dst, T) { utility::Div(n, a, b, dst); });
  };
  runners[kAddProduct] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T* b, T* dst, T) {
      utility::AddProduct(n, a, b, dst);
    });
  };
  runners[kAddConstant] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T c) {
      utility::AddConstant(n, a, c, dst);
    });
  };
  runners[kMulConstant] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T c) {
      utility::MulConstant(n, a, dst, c);
    });
  };
  runners[kDivConstant] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T c) {
      utility::DivConstant(n, a, dst, c);
    });
  };
  runners[kAddInPlace] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands,
           [](unsigned n, const T* a, const T*, T* dst, T) { utility::Add_InPlace(n, a, dst); });
  };
  runners[kMulInPlace] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands,
           [](unsigned n, const T* a, const T*, T* dst, T) { utility::Mul_InPlace(n, a, dst); });
  };
  return runners;
}

Runners<short> Int16Calls() {
  Runners<short> runners{};
  runners[kMulConstantInPlace] = [](benchmark::State& state, const Operands<short>& operands) {
    Repeat(state, operands, [](unsigned n, const short*, const short*, short* dst, short c) {
      utility::MulConstant_InPlace(n, dst, c, kInt16Scale);
    });
  };
  return runners;
}

}  // namespace

Contender OursContender() {
  return {"ours",          "zalaccelerate, dispatched",  Calls<float>(),
          Calls<double>(), Calls<std::complex<float>>(), Calls<std::complex<double>>(),
          Int16Calls()};
}

}  // namespace zal::bench
