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

// Recursive filters in float and double: one direct form of order N (IIRInit), or a cascade of M
// second-order sections (IIRInit_BiQuad), the output of each section feeding the next.
//
// Taps. Direct form: 2(N+1) values b0..bN, a0..aN, for
//   y[n] = (b0 x[n] + ... + bN x[n-N] - a1 y[n-1] - ... - aN y[n-N]) / a0.
// Cascade: 6M values, per section b0, b1, b2, a0, a1, a2, the same equation with N = 2. Every
// a0 must be non-zero; the taps are normalised by their a0 when the filter is built.
// Accepted: orders 0 .. 32, 1 .. 1024 sections. Anything else, null taps or an a0 of 0 makes
// the Init fail.
//
// Delay line: the filter runs in the transposed direct form II, whose N states (2 per section,
// section by section) are the delay line: s[j] = sum over k > j of (b_k x[n+j+1-k] - a_k
// y[n+j+1-k]), all over a0, as it stands after the last sample filtered. A zero delay line is a
// filter at rest.
//
// How it computes. Whole blocks of 16 samples are computed at once, as the block's inputs through
// the section's impulse response plus its state through its zero-input responses; the state then
// advances by one 16-step transition. These matrices are the exact ones of the normalised taps
// (built in long double), rounded to T; the state's own to twice T's precision (see Error). So the
// recursion costs one step per 16 samples and the arithmetic is vectorised. The samples of a block
// that is not yet complete are kept, and each output is computed by the same operations whether it
// comes in a long call, in pieces or one sample at a time: any split of a stream gives the same
// outputs, bit for bit (but for the sign of a zero). A non-finite input affects its own and later
// outputs only.
//
// Error. Against the exact recursion on the same taps (computed in long double), each output's
// error stays within three times that of a plain per-sample transposed-direct-form-II loop in T
// on the same taps, plus 2 eps max|x| sum|h| (eps = 2^-23 for float, 2^-52 for double; h the
// impulse response): so tested on Butterworth and Chebyshev cascades of orders 1 .. 12 with poles
// up to radius 0.999 over 10^5 samples (impulse, step, noise), and on direct forms of order 2 at
// any radius and up to 4 with poles away from z = 1. The state's block matrices are carried to
// twice the precision of T, so the poles do not move by their rounding. A direct form with
// clustered poles (a high-order design near z = 1) is ill conditioned: its block matrices grow
// large and its error can exceed the per-sample loop's many times over; run such designs as
// cascades of sections.
//
// Denormals. Each filtering call runs with flush-to-zero and denormals-are-zero set in MXCSR (the
// latter where the processor has it) and restores the caller's MXCSR, status flags included,
// before it returns, whatever the caller's modes: a decaying filter never slows down in subnormal
// numbers. Effect on results: subnormal inputs, states and intermediate results count as zero,
// an absolute change below 2^-126 (float) or 2^-1022 (double) times the sum of the magnitudes of
// the block coefficients involved; results in the normal range are unchanged.
//
// Latency and memory. No delay: each output leaves in the call that brings its input. A call
// costs a fixed few tens of cycles (MXCSR save and restore); single-sample calls and the samples
// of a call that do not fill a whole block cost about 16 multiply-adds per sample and section
// more than whole blocks. workBuffer is 128 bytes plus, per section, 976 values of T (3904 bytes
// for float, 7808 for double); for a direct form of order N, 272 + 48 N + 2 N P + 33 P +
// ceil16(2 N + 2) values, P = ceil16(N), ceil16 rounding up to a multiple of 16 (order 8: 1472
// values). The record itself and dlyScratch (N or 2M values) come on top.
//
// A state serves one thread at a time. No function here allocates except the Inits.

// State records. engineState points into workBuffer (bufSize bytes of aligned memory);
// dlyScratch carries the delay line across IIRSetTaps (dlyScratchBytes bytes); order is N, or 2
// for a cascade; numBiquads is M, or 0 for the direct form.
#define ZAL_IIR_STATE_RECORD(Name) \
  struct Name {                    \
    void* engineState;             \
    unsigned char* workBuffer;     \
    unsigned char* dlyScratch;     \
    std::uint32_t bufSize;         \
    std::uint32_t order;           \
    std::uint32_t numBiquads;      \
    std::uint32_t dlyScratchBytes; \
  };
ZAL_IIR_STATE_RECORD(IIRState_Float)
ZAL_IIR_STATE_RECORD(IIRState_Double)
#undef ZAL_IIR_STATE_RECORD

namespace filter {

// IIRInit(&state, taps, order, dlyLine): builds a direct form of `order` from 2(order+1) taps and
// the delay line (order values; null for a filter at rest) and stores a new record in *state. On
// any failure *state is left as it was: preset it to null.
ZAL_API void IIRInit(IIRState_Float** state, const float* taps, unsigned int order,
                     const float* dlyLine);
ZAL_API void IIRInit(IIRState_Double** state, const double* taps, unsigned int order,
                     const double* dlyLine);
// IIRInit_BiQuad(&state, taps, numBiquads, dlyLine): the same for a cascade of numBiquads
// sections from 6 numBiquads taps and 2 numBiquads delay-line values.
ZAL_API void IIRInit_BiQuad(IIRState_Float** state, const float* taps, unsigned int numBiquads,
                            const float* dlyLine);
ZAL_API void IIRInit_BiQuad(IIRState_Double** state, const double* taps, unsigned int numBiquads,
                            const double* dlyLine);

// IIR(x, state): filters one sample and returns its output (0 if state is null).
ZAL_API float IIR(float x, IIRState_Float* state);
ZAL_API double IIR(double x, IIRState_Double* state);
// IIR(len, src, dst, state): filters len samples of a stream from src to dst (separate arrays).
// Null pointers or len of 0 or at least 2^31: nothing happens.
ZAL_API void IIR(unsigned int len, const float* src, float* dst, IIRState_Float* state);
ZAL_API void IIR(unsigned int len, const double* src, double* dst, IIRState_Double* state);
// IIR_InPlace(len, srcDst, state): the same with the output over the input.
ZAL_API void IIR_InPlace(unsigned int len, float* srcDst, IIRState_Float* state);
ZAL_API void IIR_InPlace(unsigned int len, double* srcDst, IIRState_Double* state);

// IIRSetTaps(state, taps): new taps of the same form and size (a cascade stays a cascade), the
// delay line kept as IIRGetDlyLine reads it; the next sample starts a new 16-sample block. Null
// taps, or an a0 of 0, leave the filter as it was.
ZAL_API void IIRSetTaps(IIRState_Float* state, const float* taps);
ZAL_API void IIRSetTaps(IIRState_Double* state, const double* taps);

// IIRGetDlyLine / IIRSetDlyLine: read or write the delay line where the stream stands (N or 2M
// values, layout above). Null pointers: nothing happens.
ZAL_API void IIRGetDlyLine(const IIRState_Float* state, float* dlyLine);
ZAL_API void IIRGetDlyLine(const IIRState_Double* state, double* dlyLine);
ZAL_API void IIRSetDlyLine(IIRState_Float* state, const float* dlyLine);
ZAL_API void IIRSetDlyLine(IIRState_Double* state, const double* dlyLine);

// IIRFree(state): releases the record and its buffers; null is ignored.
ZAL_API void IIRFree(IIRState_Float* state);
ZAL_API void IIRFree(IIRState_Double* state);

}  // namespace filter

// ---- Multirate FIR filter -----------------------------------------------------------------------

}  // namespace zalaccelerate
