#include "test_signal.h"

#include <cmath>
#include <cstdint>
#include <numbers>

namespace demo {
namespace {

struct Partial {
  double hz;
  double amplitude;
};

// An A major chord with two overtones per note, a rumble at 12 Hz and a 21 kHz whistle.
constexpr Partial kPartials[] = {
    {220.0, 0.12},   {440.0, 0.04},   {660.0, 0.02},   {277.18, 0.10},
    {554.37, 0.035}, {831.55, 0.015}, {329.63, 0.10},  {659.26, 0.03},
    {988.89, 0.012}, {12.0, 0.20},    {21000.0, 0.05},
};
constexpr double kNoiseAmplitude = 0.01;
constexpr unsigned kRate = 48000;

// A fixed-seed generator, so that every run gets the same input.
class Noise {
 public:
  double Next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return static_cast<double>(state_ >> 11) * 0x1p-53 * 2.0 - 1.0;
  }

 private:
  std::uint64_t state_ = 0x9E3779B97F4A7C15u;
};

}  // namespace

PcmAudio MakeTestSignal(double seconds) {
  PcmAudio audio{.channels = 2, .sampleRate = kRate, .bitsPerSample = 24, .samples = {}};
  const auto frames = static_cast<std::size_t>(seconds * kRate);
  audio.samples.reserve(frames * audio.BytesPerFrame());
  Noise noise;
  for (std::size_t n = 0; n < frames; ++n) {
    const double t = static_cast<double>(n) / kRate;
    for (unsigned channel = 0; channel < audio.channels; ++channel) {
      double value = kNoiseAmplitude * noise.Next();
      for (const Partial& partial : kPartials) {
        // The right channel's partials start a little later in their cycle: a stereo image.
        const double phase = channel * 0.3 * partial.hz / 220.0;
        value += partial.amplitude * std::sin(2 * std::numbers::pi * partial.hz * t + phase);
      }
      const auto sample = static_cast<std::int32_t>(std::lround(value * 8388607.0));
      for (int shift = 0; shift < 24; shift += 8) {
        audio.samples.push_back(static_cast<std::uint8_t>(sample >> shift));
      }
    }
  }
  return audio;
}

}  // namespace demo
