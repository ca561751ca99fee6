#include "tests/engine/fft_reference.h"

#include <cmath>
#include <complex>
#include <limits>

#if ZAL_HAVE_FFTW
#include <fftw3.h>
#endif

namespace zal::test {
namespace {

using LongComplex = std::complex<long double>;
constexpr long double kTwoPi = 6.283185307179586476925286766559005768L;

// exp(sign 2 pi i j / n) for j < n.
std::vector<LongComplex> Roots(std::size_t n, int sign) {
  std::vector<LongComplex> roots(n);
  for (std::size_t j = 0; j < n; ++j) {
    const long double angle = kTwoPi * static_cast<long double>(j) / static_cast<long double>(n);
    roots[j] = {std::cos(angle), sign * std::sin(angle)};
  }
  return roots;
}

std::vector<LongComplex> Dft(const std::vector<LongComplex>& x, int sign) {
  const std::size_t n = x.size();
  const std::vector<LongComplex> roots = Roots(n, sign);
  std::vector<LongComplex> out(n);
  for (std::size_t k = 0; k < n; ++k) {
    long double re = 0;
    long double im = 0;
    std::size_t j = 0;
    for (std::size_t t = 0; t < n; ++t) {
      re += x[t].real() * roots[j].real() - x[t].imag() * roots[j].imag();
      im += x[t].real() * roots[j].imag() + x[t].imag() * roots[j].real();
      j += k;
      if (j >= n) j -= n;
    }
    out[k] = {re, im};
  }
  return out;
}

constexpr std::size_t kLongestDirect = 4096;

#if ZAL_HAVE_FFTW
std::vector<LongComplex> LongFft(std::vector<LongComplex> x, int sign) {
  const int n = static_cast<int>(x.size());
  std::vector<LongComplex> out(x.size());
  fftwl_plan plan =
      fftwl_plan_dft_1d(n, reinterpret_cast<fftwl_complex*>(x.data()),
                        reinterpret_cast<fftwl_complex*>(out.data()), sign, FFTW_ESTIMATE);
  fftwl_execute(plan);
  fftwl_destroy_plan(plan);
  return out;
}
#endif

// exp(sign 2 pi i j / n) sums of x, unscaled.
std::vector<LongComplex> Transform(const std::vector<LongComplex>& x, int sign) {
#if ZAL_HAVE_FFTW
  if (x.size() > kLongestDirect) return LongFft(x, sign);
#endif
  return Dft(x, sign);
}

std::vector<LongComplex> AsComplex(const std::vector<long double>& pairs) {
  std::vector<LongComplex> x(pairs.size() / 2);
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = {pairs[2 * i], pairs[2 * i + 1]};
  return x;
}

std::vector<long double> AsPairs(const std::vector<LongComplex>& x, std::size_t size) {
  std::vector<long double> pairs(size, 0);
  for (std::size_t i = 0; i < x.size() && 2 * i + 1 < size; ++i) {
    pairs[2 * i] = x[i].real();
    pairs[2 * i + 1] = x[i].imag();
  }
  return pairs;
}

// The Hermitian extension of a packed spectrum.
std::vector<LongComplex> Unpacked(const std::vector<long double>& packed) {
  const std::size_t n = packed.size() - 2;
  std::vector<LongComplex> x(n);
  for (std::size_t k = 0; k <= n / 2; ++k) {
    const bool real_bin = k == 0 || 2 * k == n;
    x[k] = {packed[2 * k], real_bin ? 0.0L : packed[2 * k + 1]};
    if (k > 0 && k < n - k) x[n - k] = std::conj(x[k]);
  }
  return x;
}

}  // namespace

bool HavePeer() {
  return ZAL_HAVE_FFTW != 0;
}

std::vector<long double> ReferenceComplex(const std::vector<long double>& in, bool inverse) {
  std::vector<LongComplex> out = Transform(AsComplex(in), inverse ? 1 : -1);
  if (inverse) {
    for (auto& v : out) v /= static_cast<long double>(out.size());
  }
  return AsPairs(out, in.size());
}

std::vector<long double> ReferenceRealForward(const std::vector<long double>& samples) {
  std::vector<LongComplex> x(samples.begin(), samples.end());
  const std::vector<LongComplex> spectrum = Transform(x, -1);
  std::vector<LongComplex> half(spectrum.begin(), spectrum.begin() + spectrum.size() / 2 + 1);
  // Bins 0 and N/2 of a real signal are real: drop the rounding residue of the sums.
  half.front().imag(0);
  half.back().imag(0);
  return AsPairs(half, samples.size() + 2);
}

std::vector<long double> ReferenceRealInverse(const std::vector<long double>& packed) {
  const std::vector<LongComplex> x = Transform(Unpacked(packed), 1);
  std::vector<long double> samples(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    samples[i] = x[i].real() / static_cast<long double>(x.size());
  }
  return samples;
}

template <class T>
double RelativeRmsError(const std::vector<T>& actual, const std::vector<long double>& exact) {
  long double error = 0;
  long double norm = 0;
  for (std::size_t i = 0; i < exact.size(); ++i) {
    const long double d = static_cast<long double>(actual[i]) - exact[i];
    error += d * d;
    norm += exact[i] * exact[i];
  }
  return norm == 0 ? std::sqrt(static_cast<double>(error))
                   : std::sqrt(static_cast<double>(error / norm));
}
template double RelativeRmsError(const std::vector<float>&, const std::vector<long double>&);
template double RelativeRmsError(const std::vector<double>&, const std::vector<long double>&);
template double RelativeRmsError(const std::vector<long double>&, const std::vector<long double>&);

#if ZAL_HAVE_FFTW
namespace {

// The peer's plan functions and complex type for T.
template <class T>
struct Peer;
template <>
struct Peer<float> {
  using Complex = fftwf_complex;
  static constexpr auto kDft = fftwf_plan_dft_1d;
  static constexpr auto kR2c = fftwf_plan_dft_r2c_1d;
  static constexpr auto kC2r = fftwf_plan_dft_c2r_1d;
  static constexpr auto kExecute = fftwf_execute;
  static constexpr auto kDestroy = fftwf_destroy_plan;
};
template <>
struct Peer<double> {
  using Complex = fftw_complex;
  static constexpr auto kDft = fftw_plan_dft_1d;
  static constexpr auto kR2c = fftw_plan_dft_r2c_1d;
  static constexpr auto kC2r = fftw_plan_dft_c2r_1d;
  static constexpr auto kExecute = fftw_execute;
  static constexpr auto kDestroy = fftw_destroy_plan;
};

template <class T>
std::vector<T> PeerTransform(bool real, bool inverse, int order, std::vector<T> in) {
  using P = Peer<T>;
  const int n = 1 << order;
  std::vector<T> out;
  if (!real) {
    out.resize(2 * static_cast<std::size_t>(n));
    auto plan = P::kDft(n, reinterpret_cast<typename P::Complex*>(in.data()),
                        reinterpret_cast<typename P::Complex*>(out.data()),
                        inverse ? FFTW_BACKWARD : FFTW_FORWARD, FFTW_ESTIMATE);
    P::kExecute(plan);
    P::kDestroy(plan);
  } else if (!inverse) {
    out.resize(static_cast<std::size_t>(n) + 2 + (n == 1 ? 1 : 0));
    auto plan =
        P::kR2c(n, in.data(), reinterpret_cast<typename P::Complex*>(out.data()), FFTW_ESTIMATE);
    P::kExecute(plan);
    P::kDestroy(plan);
    out.resize(static_cast<std::size_t>(n) + 2);
    if (n == 1) out[2] = 0;
  } else {
    out.resize(static_cast<std::size_t>(n));
    auto plan =
        P::kC2r(n, reinterpret_cast<typename P::Complex*>(in.data()), out.data(), FFTW_ESTIMATE);
    P::kExecute(plan);
    P::kDestroy(plan);
  }
  if (inverse) {
    for (auto& v : out) v /= static_cast<T>(n);
  }
  return out;
}

}  // namespace
#endif

template <class T>
double PeerRelativeRmsError(bool real, bool inverse, int order, const std::vector<T>& src,
                            const std::vector<long double>& exact) {
#if ZAL_HAVE_FFTW
  return RelativeRmsError(PeerTransform<T>(real, inverse, order, src), exact);
#else
  (void)real;
  (void)inverse;
  (void)src;
  (void)exact;
  return std::numeric_limits<T>::epsilon() * (1 + order) / 4;
#endif
}
template double PeerRelativeRmsError(bool, bool, int, const std::vector<float>&,
                                     const std::vector<long double>&);
template double PeerRelativeRmsError(bool, bool, int, const std::vector<double>&,
                                     const std::vector<long double>&);

std::vector<long double> ImpulseSpectrum(std::size_t n, std::size_t m, bool real) {
  const std::size_t bins = real ? n / 2 + 1 : n;
  std::vector<long double> out(real ? n + 2 : 2 * n, 0);
  for (std::size_t k = 0; k < bins; ++k) {
    // Double precision suffices for these bounds, and is many times faster.
    const double angle = static_cast<double>(kTwoPi * static_cast<long double>((m * k) % n) /
                                             static_cast<long double>(n));
    out[2 * k] = std::cos(angle);
    out[2 * k + 1] = -std::sin(angle);
  }
  if (real) {
    out[1] = 0;
    out[n + 1] = 0;
  }
  return out;
}

std::vector<long double> ShiftedSpectrum(const std::vector<long double>& spectrum, std::size_t n,
                                         std::size_t s) {
  std::vector<long double> out(spectrum.size());
  for (std::size_t k = 0; 2 * k + 1 < spectrum.size(); ++k) {
    const double angle = static_cast<double>(kTwoPi * static_cast<long double>((s * k) % n) /
                                             static_cast<long double>(n));
    const LongComplex v = LongComplex(spectrum[2 * k], spectrum[2 * k + 1]) *
                          LongComplex(std::cos(angle), -std::sin(angle));
    out[2 * k] = v.real();
    out[2 * k + 1] = v.imag();
  }
  return out;
}

}  // namespace zal::test
