// The demo's default input, made in code so that the demo needs no file: a few seconds of a
// chord at 48 kHz in stereo, 24-bit, with what each stage of the pipeline is there to remove —
// a low rumble (the high-pass), a tone above 20 kHz and white noise (the lowpass and the
// resampler's anti-alias filter).
#pragma once

#include "wav_file.h"

namespace demo {

PcmAudio MakeTestSignal(double seconds);

}  // namespace demo
