// Filters: the single-rate FIR filter and lowpass design, the IIR filter (direct form and biquad
// cascades) and the multirate polyphase FIR filter, in float (and double where stated).
//
// Each filter is a state record in namespace zalaccelerate, created by its Init function with the
// ordinary heap new and owned by the caller through the pointer Init hands back; its Free
// function releases it. The records' fields are listed for layout stability only: read and
// change a filter through the functions below.
#pragma once

#include <cstdint>

#include "zalaccelerate/export.h"

namespace zalaccelerate {

// ---- Single-rate FIR filter and lowpass design --------------------------------------------------

// ---- IIR filter ---------------------------------------------------------------------------------

// ---- Multirate FIR filter -----------------------------------------------------------------------

}  // namespace zalaccelerate
