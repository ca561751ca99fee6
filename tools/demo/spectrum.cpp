#include "spectrum.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "zalaccelerate/transform.h"
#include "zalaccelerate/utility.h"

namespace demo {
namespace {

namespace zt = zalaccelerate::transform;
namespace zu = zalaccelerate::utility;

constexpr unsigned kOrder = 13;
constexpr unsigned kLength = 1u << kOrder;

}  // namespace

std::vector<Point> PowerSpectrumDb(const std::vector<float>& signal, double rate) {
  zt::FFTState_Float* fft = nullptr;
  zt::FFTInit(&fft, kOrder);
  unsigned workSize = 0;
  zt::FFTGetBufSize(fft, &workSize);
  std::vector<unsigned char> work(workSize);
  std::vector<float> segment(kLength), spectrum(kLength + 2), power(kLength / 2 + 1);
  std::vector<double> sum(kLength / 2 + 1);

  std::size_t segments = 0;
  for (std::size_t at = 0; at + kLength <= signal.size(); at += kLength / 2, ++segments) {
    zu::WindowHann(kLength, signal.data() + at, segment.data());
    zt::FFTFwd(segment.data(), spectrum.data(), fft, work.data());
    zu::PowerSpectr(kLength / 2 + 1, reinterpret_cast<const std::complex<float>*>(spectrum.data()),
                    power.data());
    for (std::size_t k = 0; k < sum.size(); ++k) sum[k] += power[k];
  }
  zt::FFTFree(fft);

  // A sine of amplitude A peaks at A * (sum of the window) / 2; the Hann window sums to N / 2.
  const double fullScale = (kLength / 4.0) * (kLength / 4.0);
  std::vector<Point> points;
  for (std::size_t k = 1; k < sum.size(); ++k) {
    const double mean = sum[k] / static_cast<double>(std::max<std::size_t>(segments, 1));
    points.push_back({k * rate / kLength, 10 * std::log10(std::max(mean / fullScale, 1e-20))});
  }
  return points;
}

}  // namespace demo
