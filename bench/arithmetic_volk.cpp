// VOLK through its plain entry points, which pick the aligned or unaligned kernel at each call.
// Its Sub and Div take the minuend and the dividend first: the operands are swapped to give
// the library's b - a and b / a.
#include <volk/volk.h>

#include "bench/arithmetic_contenders.h"

namespace zal::bench {
namespace {

Runners<float> Float() {
  Runners<float> runners{};
  runners[kAdd] = [](benchmark::State& state, const Operands<float>& operands) {
    Repeat(state, operands, [](unsigned n, const float* a, const float* b, float* dst, float) {
      volk_32f_x2_add_32f(dst, a, b, n);
    });
  };
  runners[kSub] = [](benchmark::State& state, const Operands<float>& operands) {
    Repeat(state, operands, [](unsigned n, const float* a, const float* b, float* dst, float) {
      volk_32f_x2_subtract_32f(dst, b, a, n);
    });
  };
  runners[kMul] = [](benchmark::State& state, const Operands<float>& operands) {
    Repeat(state, operands, [](unsigned n, const float* a, const float* b, float* dst, float) {
      volk_32f_x2_multiply_32f(dst, a, b, n);
    });
  };
  runners[kDiv] = [](benchmark::State& state, const Operands<float>& operands) {
    Repeat(state, operands, [](unsigned n, const float* a, const float* b, float* dst, float) {
      volk_32f_x2_divide_32f(dst, b, a, n);
    });
  };
  runners[kAddConstant] = [](benchmark::State& state, const Operands<float>& operands) {
    Repeat(state, operands, [](unsigned n, const float* a, const float*, float* dst, float c) {
      volk_32f_s32f_add_32f(dst, a, c, n);
    });
  };
  runners[kMulConstant] = [](benchmark::State& state, const Operands<float>& operands) {
    Repeat(state, operands, [](unsigned n, const float* a, const float*, float* dst, float c) {
      volk_32f_s32f_multiply_32f(dst, a, c, n);
    });
  };
  runners[kAddInPlace] = [](benchmark::State& state, const Operands<float>& operands) {
    Repeat(state, operands, [](unsigned n, const float* a, const float*, float* dst, float) {
      volk_32f_x2_add_32f(dst, dst, a, n);
    });
  };
  runners[kMulInPlace] = [](benchmark::State& state, const Operands<float>& operands) {
    Repeat(state, operands, [](unsigned n, const float* a, const float*, float* dst, float) {
      volk_32f_x2_multiply_32f(dst, dst, a, n);
    });
  };
  return runners;
}

Runners<double> Double() {
  Runners<double> runners{};
  runners[kAdd] = [](benchmark::State& state, const Operands<double>& operands) {
    Repeat(state, operands, [](unsigned n, const double* a, const double* b, double* dst, double) {
      volk_64f_x2_add_64f(dst, a, b, n);
    });
  };
  runners[kMul] = [](benchmark::State& state, const Operands<double>& operands) {
    Repeat(state, operands, [](unsigned n, const double* a, const double* b, double* dst, double) {
      volk_64f_x2_multiply_64f(dst, a, b, n);
    });
  };
  return runners;
}

using Complex = std::complex<float>;

Runners<Complex> ComplexFloat() {
  Runners<Complex> runners{};
  runners[kAdd] = [](benchmark::State& state, const Operands<Complex>& operands) {
    Repeat(state, operands,
           [](unsigned n, const Complex* a, const Complex* b, Complex* dst, Complex) {
             volk_32fc_x2_add_32fc(dst, a, b, n);
           });
  };
  runners[kMul] = [](benchmark::State& state, const Operands<Complex>& operands) {
    Repeat(state, operands,
           [](unsigned n, const Complex* a, const Complex* b, Complex* dst, Complex) {
             volk_32fc_x2_multiply_32fc(dst, a, b, n);
           });
  };
  runners[kDiv] = [](benchmark::State& state, const Operands<Complex>& operands) {
    Repeat(state, operands,
           [](unsigned n, const Complex* a, const Complex* b, Complex* dst, Complex) {
             volk_32fc_x2_divide_32fc(dst, b, a, n);
           });
  };
  runners[kMulConstant] = [](benchmark::State& state, const Operands<Complex>& operands) {
    Repeat(state, operands,
           [](unsigned n, const Complex* a, const Complex*, Complex* dst, Complex c) {
             volk_32fc_s32fc_multiply_32fc(dst, a, c, n);
           });
  };
  return runners;
}

}  // namespace

Contender VolkContender() {
  return {"volk", volk_get_machine(), Float(), Double(), ComplexFloat(), {}, {}};
}

}  // namespace zal::bench
