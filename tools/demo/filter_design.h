// The demo pipeline's three filters, designed once for a 48 kHz input:
// - a lowpass FIR (63 taps, Hamming window, cut-off 18 kHz) that removes the ultrasonic whistle
//   and the top of the noise;
// - a 4th-order Butterworth high-pass at 40 Hz as two biquad sections, against the rumble;
// - the anti-alias filter of the 48 kHz -> 44.1 kHz resampler (up 147, down 160): 32 taps per
//   phase, Blackman window, cut-off 20 kHz at the upsampled rate, gain 147 to make up for the
//   zeros the upsampling inserts.
#pragma once

#include <vector>

namespace demo {

inline constexpr unsigned kInputRate = 48000;
inline constexpr unsigned kUpFactor = 147;
inline constexpr unsigned kDownFactor = 160;

struct Filters {
  std::vector<float> lowpass;
  std::vector<float> highpass;  // b0 b1 b2 a0 a1 a2 per section
  unsigned highpassSections = 0;
  std::vector<float> resampler;
};

Filters DesignFilters();

// Each filter's gain in dB at `hz` (the resampler's at the upsampled rate), from its taps.
double LowpassGainDb(const Filters& filters, double hz);
double HighpassGainDb(const Filters& filters, double hz);
double ResamplerGainDb(const Filters& filters, double hz);

}  // namespace demo
