// Recursive filter designs and a long-double reference for the IIR tests: Butterworth and
// Chebyshev (type I) lowpass filters by the bilinear transform, as second-order sections or as
// one direct form, and the filters' equations evaluated in long double.
#pragma once

#include <cmath>
#include <complex>
#include <vector>

namespace zal::test {

using Wide = long double;

enum class Prototype { kButterworth, kChebyshev };

struct Design {
  Prototype prototype;
  int order;
  double cutoff;  // of the sample rate, below 0.5
  double ripple_db;
};

// Sections b0 b1 b2 a0 a1 a2, a0 left as the bilinear transform gives it (not 1). Poles of the
// analog prototype in conjugate pairs, a real one for odd orders.
inline std::vector<Wide> DesignSections(const Design& d) {
  const Wide pi = std::acos(Wide(-1));
  const Wide warped = std::tan(pi * d.cutoff);
  const int n = d.order;
  Wide mu = 0;
  if (d.prototype == Prototype::kChebyshev) {
    const Wide eps = std::sqrt(std::pow(Wide(10), d.ripple_db / 10) - 1);
    mu = std::asinh(1 / eps) / n;
  }
  const auto pole = [&](int k) {
    const Wide theta = pi * (2 * k + 1) / (2 * n);
    if (d.prototype == Prototype::kButterworth) {
      return std::complex<Wide>(-std::sin(theta), std::cos(theta));
    }
    return std::complex<Wide>(-std::sinh(mu) * std::sin(theta), std::cosh(mu) * std::cos(theta));
  };
  std::vector<Wide> taps;
  for (int k = 0; k < n / 2; ++k) {
    const std::complex<Wide> p = pole(k) * warped;
    const Wide alpha = -2 * p.real();
    const Wide beta = std::norm(p);
    taps.insert(taps.end(),
                {beta, 2 * beta, beta, 1 + alpha + beta, 2 * beta - 2, 1 - alpha + beta});
  }
  if (n % 2 == 1) {
    const Wide p = pole(n / 2).real() * warped;
    taps.insert(taps.end(), {-p, -p, 0, 1 - p, -1 - p, 0});
  }
  return taps;
}

// The product of the sections as one direct form: b0..bN, a0..aN.
inline std::vector<Wide> DirectForm(const std::vector<Wide>& sections, int order) {
  std::vector<Wide> b{1};
  std::vector<Wide> a{1};
  const auto multiply = [](const std::vector<Wide>& p, const Wide* q) {
    std::vector<Wide> r(p.size() + 2, 0);
    for (size_t i = 0; i < p.size(); ++i) {
      for (int j = 0; j < 3; ++j) r[i + j] += p[i] * q[j];
    }
    return r;
  };
  for (size_t s = 0; s < sections.size(); s += 6) {
    b = multiply(b, &sections[s]);
    a = multiply(a, &sections[s + 3]);
  }
  b.resize(order + 1);
  a.resize(order + 1);
  b.insert(b.end(), a.begin(), a.end());
  return b;
}

// Largest pole radius of a cascade: sqrt(a2 / a0), or |a1 / a0| for a first-order section.
inline Wide LargestPoleRadius(const std::vector<Wide>& sections) {
  Wide largest = 0;
  for (size_t s = 0; s < sections.size(); s += 6) {
    const Wide a0 = sections[s + 3];
    const Wide r =
        sections[s + 5] != 0 ? std::sqrt(sections[s + 5] / a0) : std::fabs(sections[s + 4] / a0);
    largest = std::max(largest, r);
  }
  return largest;
}

// The direct-form equation y[n] = (sum b_k x[n-k] - sum_{k>0} a_k y[n-k]) / a0, from rest.
template <class T>
std::vector<Wide> DirectReference(const std::vector<T>& taps, int order, const std::vector<T>& x) {
  std::vector<Wide> y(x.size());
  for (size_t n = 0; n < x.size(); ++n) {
    Wide sum = 0;
    for (int k = 0; k <= order && k <= static_cast<int>(n); ++k) {
      sum += Wide(taps[k]) * x[n - k];
      if (k > 0) sum -= Wide(taps[order + 1 + k]) * y[n - k];
    }
    y[n] = sum / Wide(taps[order + 1]);
  }
  return y;
}

// The transposed direct form II in long double from a given state; the state is updated.
template <class T>
Wide TransposedStep(const T* taps, int order, Wide* state, Wide x) {
  const Wide a0 = taps[order + 1];
  const Wide y = Wide(taps[0]) / a0 * x + (order > 0 ? state[0] : 0);
  for (int j = 0; j < order; ++j) {
    const Wide next = j + 1 < order ? state[j + 1] : 0;
    state[j] = Wide(taps[j + 1]) / a0 * x - Wide(taps[order + 2 + j]) / a0 * y + next;
  }
  return y;
}

// A cascade of sections in long double, section by section, from the given states (2 per
// section), which are updated.
template <class T>
std::vector<Wide> CascadeReference(const std::vector<T>& taps, std::vector<Wide>& state,
                                   const std::vector<T>& x) {
  std::vector<Wide> y(x.begin(), x.end());
  const size_t sections = taps.size() / 6;
  for (size_t s = 0; s < sections; ++s) {
    for (auto& v : y) v = TransposedStep(&taps[6 * s], 2, &state[2 * s], v);
  }
  return y;
}

// The same recursion computed in T, one sample at a time, on taps normalised in T: the per-sample
// loop whose rounding the block evaluation is compared with.
template <class T>
std::vector<T> PlainReference(const std::vector<T>& taps, int order, size_t systems,
                              const std::vector<T>& x) {
  std::vector<T> y = x;
  const size_t stride = 2 * (order + 1);
  for (size_t s = 0; s < systems; ++s) {
    const T* t = &taps[s * stride];
    std::vector<T> state(order + 1, 0);
    for (auto& v : y) {
      const T in = v;
      const T out = t[0] / t[order + 1] * in + state[0];
      for (int j = 0; j < order; ++j) {
        state[j] =
            t[j + 1] / t[order + 1] * in - t[order + 2 + j] / t[order + 1] * out + state[j + 1];
      }
      v = out;
    }
  }
  return y;
}

template <class T>
std::vector<T> Rounded(const std::vector<Wide>& v) {
  return std::vector<T>(v.begin(), v.end());
}

}  // namespace zal::test
