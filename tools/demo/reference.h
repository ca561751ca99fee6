// The whole pipeline in long double, from the same input samples and the same (float) taps: the
// exact answer the float pipeline approximates.
#pragma once

#include <vector>

#include "filter_design.h"
#include "wav_file.h"

namespace demo {

// One array per channel at the output rate, before the conversion to 24-bit.
std::vector<std::vector<long double>> ReferencePipeline(const Filters& filters,
                                                        const PcmAudio& input);

}  // namespace demo
