#include "reference.h"

#include <cstdint>

#include "stages.h"

namespace demo {
namespace {

using Signal = std::vector<long double>;

// Each sample placed in the top bits of a 32-bit word, so that full scale is 2^31 for both sizes.
Signal Channel(const PcmAudio& in, unsigned channel) {
  const std::size_t bytes = in.bitsPerSample / 8;
  Signal x(in.Frames());
  for (std::size_t f = 0; f < x.size(); ++f) {
    const std::uint8_t* p = &in.samples[(f * in.channels + channel) * bytes];
    std::uint32_t bits = 0;
    for (std::size_t b = 0; b < bytes; ++b) bits |= std::uint32_t{p[b]} << (8 * (4 - bytes + b));
    x[f] = static_cast<long double>(static_cast<std::int32_t>(bits)) * 0x1p-31L;
  }
  return x;
}

Signal Fir(const std::vector<float>& h, const Signal& x) {
  Signal y(x.size());
  for (std::size_t n = 0; n < x.size(); ++n) {
    for (std::size_t k = 0; k < h.size() && k <= n; ++k) y[n] += h[k] * x[n - k];
  }
  return y;
}

Signal Biquads(const Filters& filters, Signal x) {
  for (unsigned s = 0; s < filters.highpassSections; ++s) {
    const float* t = &filters.highpass[6 * s];
    long double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
    for (long double& sample : x) {
      const long double y = (t[0] * sample + t[1] * x1 + t[2] * x2 - t[4] * y1 - t[5] * y2) / t[3];
      x2 = x1, x1 = sample, y2 = y1, y1 = y;
      sample = y;
    }
  }
  return x;
}

Signal Resample(const std::vector<float>& h, const Signal& x) {
  Signal y(ResampledFrames(x.size()));
  for (std::size_t j = 0; j < y.size(); ++j) {
    const std::size_t m = j * kDownFactor;
    for (std::size_t k = m % kUpFactor; k < h.size() && k <= m; k += kUpFactor) {
      y[j] += h[k] * x[(m - k) / kUpFactor];
    }
  }
  return y;
}

}  // namespace

std::vector<std::vector<long double>> ReferencePipeline(const Filters& filters,
                                                        const PcmAudio& input) {
  std::vector<Signal> output;
  for (unsigned c = 0; c < input.channels; ++c) {
    output.push_back(
        Resample(filters.resampler, Biquads(filters, Fir(filters.lowpass, Channel(input, c)))));
  }
  return output;
}

}  // namespace demo
