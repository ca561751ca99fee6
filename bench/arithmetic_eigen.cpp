// Eigen arrays over the caller's buffers, as a user maps existing memory. Built with
// -O3 -march=native: Eigen picks its vector width when it is compiled.
#include <Eigen/Core>

#include "bench/arithmetic_contenders.h"

namespace zal::bench {
namespace {

template <class T>
using Vector = Eigen::Map<Eigen::Array<T, Eigen::Dynamic, 1>>;
template <class T>
using ConstVector = Eigen::Map<const Eigen::Array<T, Eigen::Dynamic, 1>>;

template <class T>
Runners<T> Arrays() {
  Runners<T> runners{};
  runners[kAdd] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T* b, T* dst, T) {
      Vector<T>(dst, n) = ConstVector<T>(a, n) + ConstVector<T>(b, n);
    });
  };
  runners[kSub] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T* b, T* dst, T) {
      Vector<T>(dst, n) = ConstVector<T>(b, n) - ConstVector<T>(a, n);
    });
  };
  runners[kMul] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T* b, T* dst, T) {
      Vector<T>(dst, n) = ConstVector<T>(a, n) * ConstVector<T>(b, n);
    });
  };
  runners[kDiv] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T* b, T* dst, T) {
      Vector<T>(dst, n) = ConstVector<T>(b, n) / ConstVector<T>(a, n);
    });
  };
  runners[kAddProduct] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T* b, T* dst, T) {
      Vector<T>(dst, n) += ConstVector<T>(a, n) * ConstVector<T>(b, n);
    });
  };
  runners[kAddConstant] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T c) {
      Vector<T>(dst, n) = ConstVector<T>(a, n) + c;
    });
  };
  runners[kMulConstant] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T c) {
      Vector<T>(dst, n) = ConstVector<T>(a, n) * c;
    });
  };
  runners[kDivConstant] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T c) {
      Vector<T>(dst, n) = ConstVector<T>(a, n) / c;
    });
  };
  runners[kAddInPlace] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T) {
      Vector<T>(dst, n) += ConstVector<T>(a, n);
    });
  };
  runners[kMulInPlace] = [](benchmark::State& state, const Operands<T>& operands) {
    Repeat(state, operands, [](unsigned n, const T* a, const T*, T* dst, T) {
      Vector<T>(dst, n) *= ConstVector<T>(a, n);
    });
  };
  return runners;
}

}  // namespace

Contender EigenContender() {
  return {"eigen",
          Eigen::SimdInstructionSetsInUse(),
          Arrays<float>(),
          Arrays<double>(),
          Arrays<std::complex<float>>(),
          Arrays<std::complex<double>>(),
          {}};
}

}  // namespace zal::bench
