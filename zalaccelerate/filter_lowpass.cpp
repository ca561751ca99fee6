// The lowpass design front: the window type folded onto the engine's four codes (0 Bartlett,
// 1 Blackman, 2 Hamming, 3 Hann; every other value, above Hann or negative, designs with Hann).
#include "engine/core/dispatch.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/filter.h"

namespace zalaccelerate::filter {

void GenerateLowpassFIRCoefficients(double rFreq, unsigned int tapsLen, double* taps,
                                    utility::DSPWindowType window, bool normalize,
                                    unsigned char* buffer) {
  const auto code = static_cast<unsigned int>(window);
  const int engine_window = code < 3 ? static_cast<int>(code) : 3;
  zal::engine::dispatch::FIRGenLowpassF64(rFreq, taps, engine_arguments::Length(tapsLen),
                                          engine_window, normalize ? 1 : 0, buffer);
}

}  // namespace zalaccelerate::filter
