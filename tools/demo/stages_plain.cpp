// The pipeline as plain loops over whole channels: what the library's stages are timed against.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "stages.h"

namespace demo {
namespace {

void Shape(Planar& out, unsigned rate, std::size_t channels, std::size_t frames) {
  out.rate = rate;
  out.channels.assign(channels, std::vector<float>(frames));
}

// The sample in the top bits of a 32-bit word: full scale is 2^31 for both sizes.
std::int32_t ReadSample(const std::uint8_t* p, std::size_t bytes) {
  std::uint32_t bits = 0;
  for (std::size_t b = 0; b < bytes; ++b) bits |= std::uint32_t{p[b]} << (8 * (4 - bytes + b));
  return static_cast<std::int32_t>(bits);
}

void Decode(const PcmAudio& in, Planar& out) {
  Shape(out, in.sampleRate, in.channels, in.Frames());
  const std::size_t bytes = in.bitsPerSample / 8;
  const std::uint8_t* p = in.samples.data();
  for (std::size_t f = 0; f < in.Frames(); ++f) {
    for (auto& channel : out.channels) {
      channel[f] = static_cast<float>(ReadSample(p, bytes)) * 0x1p-31f;
      p += bytes;
    }
  }
}

void Lowpass(const Filters& filters, const Planar& in, Planar& out) {
  Shape(out, in.rate, in.channels.size(), in.Frames());
  const std::vector<float>& h = filters.lowpass;
  for (std::size_t c = 0; c < in.channels.size(); ++c) {
    const std::vector<float>& x = in.channels[c];
    for (std::size_t n = 0; n < x.size(); ++n) {
      float sum = 0;
      for (std::size_t k = 0; k < h.size() && k <= n; ++k) sum += h[k] * x[n - k];
      out.channels[c][n] = sum;
    }
  }
}

// Transposed direct form II, one section after the other.
void Highpass(const Filters& filters, const Planar& in, Planar& out) {
  out = in;
  for (unsigned s = 0; s < filters.highpassSections; ++s) {
    const float* t = &filters.highpass[6 * s];
    const float b0 = t[0] / t[3], b1 = t[1] / t[3], b2 = t[2] / t[3];
    const float a1 = t[4] / t[3], a2 = t[5] / t[3];
    for (auto& channel : out.channels) {
      float z1 = 0, z2 = 0;
      for (float& sample : channel) {
        const float x = sample;
        const float y = b0 * x + z1;
        z1 = b1 * x - a1 * y + z2;
        z2 = b2 * x - a2 * y;
        sample = y;
      }
    }
  }
}

// Polyphase: output j is sample 160 j of the upsampled and filtered signal, which only the taps
// of one phase reach.
void Resample(const Filters& filters, const Planar& in, Planar& out) {
  const std::size_t frames = ResampledFrames(in.Frames());
  Shape(out, ResampledRate(in.rate), in.channels.size(), frames);
  const std::vector<float>& h = filters.resampler;
  for (std::size_t c = 0; c < in.channels.size(); ++c) {
    const std::vector<float>& x = in.channels[c];
    for (std::size_t j = 0; j < frames; ++j) {
      const std::size_t m = j * kDownFactor;
      float sum = 0;
      for (std::size_t k = m % kUpFactor; k < h.size() && k <= m; k += kUpFactor) {
        sum += h[k] * x[(m - k) / kUpFactor];
      }
      out.channels[c][j] = sum;
    }
  }
}

void Encode(const Planar& in, PcmAudio& out) {
  out = PcmAudio{.channels = static_cast<unsigned>(in.channels.size()),
                 .sampleRate = in.rate,
                 .bitsPerSample = 24,
                 .samples = {}};
  out.samples.reserve(in.Frames() * out.BytesPerFrame());
  for (std::size_t f = 0; f < in.Frames(); ++f) {
    for (const auto& channel : in.channels) {
      const float scaled = std::min(channel[f] * 8388608.0f, 8388607.0f);
      const auto sample = static_cast<std::int32_t>(
          std::clamp(std::trunc(scaled + std::copysign(0.5f, scaled)), -8388608.0f, 8388607.0f));
      for (int shift = 0; shift < 24; shift += 8) {
        out.samples.push_back(static_cast<std::uint8_t>(sample >> shift));
      }
    }
  }
}

}  // namespace

const Stages kPlainStages = {"plain loops", Decode, Lowpass, Highpass, Resample, Encode};

}  // namespace demo
