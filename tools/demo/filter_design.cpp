#include "filter_design.h"

#include <cmath>
#include <complex>
#include <numbers>

#include "zalaccelerate/filter.h"
#include "zalaccelerate/utility.h"

namespace demo {
namespace {

namespace zf = zalaccelerate::filter;
namespace zu = zalaccelerate::utility;

constexpr unsigned kLowpassTaps = 63;
constexpr double kLowpassHz = 18000;
constexpr unsigned kResamplerTapsPerPhase = 32;
constexpr double kResamplerHz = 20000;
constexpr double kHighpassHz = 40;
constexpr unsigned kHighpassOrder = 4;

std::vector<float> DesignLowpass(double cutoff, unsigned tapsLen, zu::DSPWindowType window,
                                 double gain) {
  std::vector<double> taps(tapsLen);
  unsigned char* buffer = zu::Malloc_Byte(zf::FIRGetWorkBufferSize(tapsLen));
  zf::GenerateLowpassFIRCoefficients(cutoff, tapsLen, taps.data(), window, true, buffer);
  zu::Free(buffer);
  std::vector<float> result(tapsLen);
  for (unsigned i = 0; i < tapsLen; ++i) result[i] = static_cast<float>(taps[i] * gain);
  return result;
}

// Butterworth high-pass sections by the bilinear transform, the cut-off prewarped.
std::vector<float> DesignHighpass(double hz, unsigned order, double rate) {
  const double k = std::tan(std::numbers::pi * hz / rate);
  std::vector<float> taps;
  for (unsigned section = 0; section < order / 2; ++section) {
    const double theta = std::numbers::pi * (2.0 * section + 1) / (2.0 * order);
    const double q2 = 2 * std::sin(theta);  // 1/Q of this pole pair
    const double a0 = 1 + q2 * k + k * k;
    const double coefficients[] = {1, -2, 1, a0, 2 * (k * k - 1), 1 - q2 * k + k * k};
    for (double c : coefficients) taps.push_back(static_cast<float>(c));
  }
  return taps;
}

double Db(double magnitude) {
  return 20 * std::log10(std::max(magnitude, 1e-12));
}

std::complex<double> Polynomial(const float* c, std::size_t n, std::complex<double> zInverse) {
  std::complex<double> sum = 0;
  for (std::size_t k = n; k-- > 0;) sum = sum * zInverse + static_cast<double>(c[k]);
  return sum;
}

double FirGainDb(const std::vector<float>& taps, double hz, double rate) {
  const auto zInverse = std::polar(1.0, -2 * std::numbers::pi * hz / rate);
  return Db(std::abs(Polynomial(taps.data(), taps.size(), zInverse)));
}

}  // namespace

Filters DesignFilters() {
  Filters filters;
  filters.lowpass = DesignLowpass(kLowpassHz / kInputRate, kLowpassTaps, zu::Hamming, 1.0);
  filters.highpass = DesignHighpass(kHighpassHz, kHighpassOrder, kInputRate);
  filters.highpassSections = kHighpassOrder / 2;
  filters.resampler = DesignLowpass(kResamplerHz / (double{kInputRate} * kUpFactor),
                                    kUpFactor * kResamplerTapsPerPhase, zu::Blackman, kUpFactor);
  return filters;
}

double LowpassGainDb(const Filters& filters, double hz) {
  return FirGainDb(filters.lowpass, hz, kInputRate);
}

double ResamplerGainDb(const Filters& filters, double hz) {
  return FirGainDb(filters.resampler, hz, double{kInputRate} * kUpFactor) - Db(kUpFactor);
}

double HighpassGainDb(const Filters& filters, double hz) {
  const auto zInverse = std::polar(1.0, -2 * std::numbers::pi * hz / kInputRate);
  std::complex<double> response = 1;
  for (unsigned s = 0; s < filters.highpassSections; ++s) {
    const float* section = &filters.highpass[6 * s];
    response *= Polynomial(section, 3, zInverse) / Polynomial(section + 3, 3, zInverse);
  }
  return Db(std::abs(response));
}

}  // namespace demo
