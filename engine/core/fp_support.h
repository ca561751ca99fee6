// What the floating-point mode kernels need to know of the processor.
#pragma once

namespace zal::engine {

// SSE, from the detected feature word (leaf 1, EDX bit 25).
bool ProcessorHasSse();

// DAZ support: the FXSAVE image's MXCSR mask field is non-zero and has bit 6.
bool ProcessorHasDenormalsAreZero();

}  // namespace zal::engine
