// The demo pipeline's stages, twice: through the library, and as the plain loops a developer
// would write without it. Both versions of a stage take the same input and give (nearly) the
// same output, so that the demo can time one against the other.
#pragma once

#include <vector>

#include "filter_design.h"
#include "wav_file.h"

namespace demo {

struct Planar {
  unsigned rate = 0;
  std::vector<std::vector<float>> channels;

  std::size_t Frames() const { return channels.empty() ? 0 : channels[0].size(); }
};

// The resampler's output for `frames` input frames (whole iterations of 160 in, 147 out), and
// its output rate.
std::size_t ResampledFrames(std::size_t frames);
unsigned ResampledRate(unsigned rate);

struct Stages {
  const char* name;
  void (*decode)(const PcmAudio& in, Planar& out);  // to float in [-1, 1)
  void (*lowpass)(const Filters& filters, const Planar& in, Planar& out);
  void (*highpass)(const Filters& filters, const Planar& in, Planar& out);
  void (*resample)(const Filters& filters, const Planar& in, Planar& out);
  void (*encode)(const Planar& in, PcmAudio& out);  // to 24-bit, rounded and saturated
};

extern const Stages kLibraryStages;
extern const Stages kPlainStages;

}  // namespace demo
