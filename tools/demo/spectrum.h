// Averaged power spectrum of a channel (Welch's method: Hann-windowed segments of 8192 samples
// overlapping by half), through the library's FFT, in dB relative to a full-scale sine.
#pragma once

#include <vector>

#include "svg_plot.h"

namespace demo {

std::vector<Point> PowerSpectrumDb(const std::vector<float>& signal, double rate);

}  // namespace demo
