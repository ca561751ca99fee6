#include "bench/math_contenders.h"
#include "zalaccelerate/utility.h"

namespace zal::bench::math {
namespace {

namespace u = zalaccelerate::utility;

template <class T>
Runners<T> Table() {
  Runners<T> r{};
  r[kAbs] = [](const T* a, const T*, T* d, int n) { u::Abs(n, a, d); };
  r[kSqr] = [](const T* a, const T*, T* d, int n) { u::Sqr(n, a, d); };
  r[kSqrt] = [](const T* a, const T*, T* d, int n) { u::Sqrt(n, a, d); };
  r[kInverse] = [](const T* a, const T*, T* d, int n) { u::Inverse(n, a, d); };
  r[kRound] = [](const T* a, const T*, T* d, int n) { u::Round(n, a, d); };
  r[kExp] = [](const T* a, const T*, T* d, int n) { u::Exp(n, a, d); };
  r[kLn] = [](const T* a, const T*, T* d, int n) { u::Ln(n, a, d); };
  r[kPow] = [](const T* a, const T* b, T* d, int n) { u::Pow(n, a, b, d); };
  return r;
}

Runners<float> FloatTable() {
  Runners<float> r = Table<float>();
  r[kLnPrec24] = [](const float* a, const float*, float* d, int n) { u::Ln_Prec24(n, a, d); };
  r[kLnPrec21] = [](const float* a, const float*, float* d, int n) { u::Ln_Prec21(n, a, d); };
  r[kLnPrec11] = [](const float* a, const float*, float* d, int n) { u::Ln_Prec11(n, a, d); };
  return r;
}

Runners<double> DoubleTable() {
  Runners<double> r = Table<double>();
  r[kPowPrec26] = [](const double* a, const double* b, double* d, int n) {
    u::Pow_Prec26(n, a, b, d);
  };
  r[kInversePrec26] = [](const double* a, const double*, double* d, int n) {
    u::Inverse_Prec26(n, a, d);
  };
  return r;
}

}  // namespace

const Contender* Ours() {
  static const Contender contender{"ours", "zalaccelerate, natural level", FloatTable(),
                                   DoubleTable()};
  return &contender;
}

}  // namespace zal::bench::math
