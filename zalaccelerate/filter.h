// Filters: the single-rate FIR filter and lowpass design, the IIR filter (direct form and biquad
// cascades) and the multirate polyphase FIR filter, in float (and double where stated).
//
// Each filter is a state record in namespace zalaccelerate, created by its Init function with the
// ordinary heap new and owned by the caller through the pointer Init hands back; its Free
// function releases it. The records' fields are listed for layout stability only: read and
// change a filter through the functions below.
#pragma once

#include <cstdint>
#include <vector>

#include "zalaccelerate/export.h"
#include "zalaccelerate/utility.h"
#include "zalcore/stl_allocator.h"

namespace zalaccelerate {

// ---- Single-rate FIR filter and lowpass design --------------------------------------------------

// A direct-form FIR filter on 32-bit float: y[n] = sum over k < tapsLen of h[k] x[n - k], h[0]
// applied to the newest sample.
//
// Delay line: tapsLen - 1 floats, the inputs before the current block, oldest first: element j
// holds x[j - (tapsLen - 1)], so the last one (x[-1]) meets h[1] and element 0 meets
// h[tapsLen - 1]. Zeros mean silence before the first sample.
//
// Latency: none beyond the filter's own; a symmetric (linear-phase) design such as the lowpass
// below delays the signal by its group delay, (tapsLen - 1) / 2 samples.
//
// Accuracy: each output is four chains of products (tap index modulo 4, each summed oldest sample
// first), added as (c0 + c2) + (c1 + c3); products are fused where the processor has fused
// multiply-add. Every output is within 2 (tapsLen + 2) 2^-24 sum |h[k] x[n - k]| of the exact sum
// (NaN and infinity propagate as in that sum, and an input only reaches the outputs it is a term
// of). The order does not depend on where a block starts: on one processor, filtering a stream in
// blocks of any sizes gives the bits of one call over the whole stream, but for the sign of a zero
// output and the sign and payload of a NaN, which depend on where a sample falls in a register.
//
// Memory, allocated by FIRInit with utility::Malloc_*: the prepared filter, at most
// 68 tapsLen + 3.4 KiB bytes (the taps reversed, and shifted once per lane of the widest
// registers); a work buffer of 4 (tapsLen + 2051) bytes; the delay line; a 5-float sample slot;
// and the record itself. Nothing is allocated while filtering.
//
// Threads: a state is used by one thread at a time; distinct states are independent.
struct FIRState_Float {
  unsigned char* spec;        // the prepared filter: the taps in the engine's form
  float* delayLine;           // tapsLen - 1 floats, oldest first
  unsigned char* workBuffer;  // engine scratch for filtering
  std::uint32_t tapsLen;
  std::uint32_t delayLineLen;  // tapsLen - 1
  float* sampleSlot;           // 5 floats; the first is the single-sample FIR's input
};

namespace filter {

// Creates a filter from tapsLen taps and an optional initial delay line (tapsLen - 1 floats, or
// null for zeros). *state is set to null first and stays null on any failure: tapsLen 0 or
// 2^31 or more, taps too many for the allocator (about 31 million), a null taps pointer, or
// memory exhausted.
ZAL_API void FIRInit(FIRState_Float** state, const float* taps, unsigned int tapsLen,
                     const float* dlyLine);
// One output for input x against the stored delay line, which stays as it is: the filter does
// not move on, and two calls with the same x return the same value; the output has the bits the
// block form gives x after the same delay line. Stream sample by sample with the block form
// (len 1) instead, or keep the delay line with FIRSetDlyLine.
ZAL_API float FIR(FIRState_Float* state, float x);
// len outputs of src into dst, moving the delay line on: afterwards it holds the stream's last
// tapsLen - 1 inputs, so consecutive calls equal one long call bit for bit. src may be dst.
// len 0 (or 2^31 and more) or a null pointer does nothing.
ZAL_API void FIR(FIRState_Float* state, unsigned int len, const float* src, float* dst);
// Replaces the taps (tapsLen of them, as given to FIRInit); the delay line is kept.
ZAL_API void FIRSetTaps(FIRState_Float* state, const float* taps);
// Copies tapsLen - 1 floats into the delay line, or zeros it when dlyLine is null; nothing for
// tapsLen 1.
ZAL_API void FIRSetDlyLine(FIRState_Float* state, const float* dlyLine);
// Copies the delay line (tapsLen - 1 floats, oldest first) out; nothing for tapsLen 1.
ZAL_API void FIRGetDlyLine(const FIRState_Float* state, float* dlyLine);
// Bytes of scratch GenerateLowpassFIRCoefficients needs for tapsLen taps (8 tapsLen); 0 for
// tapsLen 0 or too large. Not the size of a filter's own work buffer.
ZAL_API unsigned int FIRGetWorkBufferSize(unsigned int tapsLen);
// Releases a filter and everything it owns; null is ignored.
ZAL_API void FIRFree(FIRState_Float* state);

// Designs tapsLen lowpass taps by the window method, in double: with c = (tapsLen - 1) / 2,
// h[n] = 2 rFreq sinc(2 rFreq (n - c)) w[n], sinc(t) = sin(pi t) / (pi t), w the symmetric window
// of length tapsLen: Bartlett, Blackman (0.42, 0.5, 0.08), Hamming (0.54, 0.46), or Hann for
// Hann and every value above it. With normalize the taps are divided by their sum, so the gain at
// zero frequency is 1 within rounding. The taps are exactly symmetric: a linear-phase filter
// whose group delay is (tapsLen - 1) / 2 samples.
// rFreq is the cut-off in cycles per sample, strictly between 0 and 0.5. buffer is caller scratch
// of at least FIRGetWorkBufferSize(tapsLen) bytes, any alignment. taps is left unwritten for a
// null taps or buffer, tapsLen below 5, or rFreq out of range (NaN included).
ZAL_API void GenerateLowpassFIRCoefficients(double rFreq, unsigned int tapsLen, double* taps,
                                            utility::DSPWindowType window, bool normalize,
                                            unsigned char* buffer);

}  // namespace filter

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
//
// Polyphase resampling: the input is upsampled by upFactor, filtered with one set of taps and
// downsampled by downFactor in one pass. With u the upsampled input (u[j up + upPhase] = x[j],
// the other slots zero) and h the taps:
//   z[t] = sum_{k < tapsLen} h[k] u[t - k],     y[m] = z[m downFactor + downPhase].
// One iteration reads downFactor inputs and writes upFactor outputs; only the products with real
// inputs are computed (about tapsLen / upFactor per output).
//
// Use:
//   std::vector<float, zalcore::STLAllocator<float>> history((taps_len + 2 - 1) / 2, 0.0f);
//   MRFState_Float* state = nullptr;
//   filter::MRFInit(&state, 2, 1, taps, taps_len, history, 0, 0);   // 2/1, phases 0
//   if (state) filter::MRFProcess(src, dst, n, state);              // n inputs, 2n outputs
//   filter::MRFFree(state);
//
// Delay line: the last (tapsLen + upFactor - 1) / upFactor inputs before the stream, oldest
// first (element 0 is the oldest, the last element the input just before the first one). MRFInit
// copies the caller's vector into the state and the state carries its copy from call to call, so
// consecutive MRFProcess calls continue one stream: splitting a signal into calls of any whole
// number of iterations gives the same outputs as one call (a zero's sign aside). The caller's
// vector is never updated.
// An empty vector makes a filter without memory: every call starts from silence (zero history)
// and carries nothing over. A vector of another length is copied as it is: a shorter one is the
// caller's error (the state's array is zero-filled to the delay line's length, so the missing
// newest elements read as zeros), the elements of a longer one past that length are not used.
//
// Latency: for a symmetric (linear-phase) design, the group delay is
//   ((tapsLen - 1) / 2 + upPhase - downPhase) / downFactor   output samples
// (the same time as ((tapsLen - 1) / 2 + upPhase - downPhase) / upFactor input samples). A
// 147/160 filter of 48 taps per phase (7056 taps) delays by about 22 outputs.
// Memory per state: the taps regrouped by phase, upFactor x R elements with R the taps per phase
// rounded up to a 64-byte line, plus 8 upFactor bytes of tables and 128 bytes of header; a work
// buffer of 2 R elements; the delay line. Nothing is allocated or locked by MRFProcess.
//
// Accuracy: each output is a sum of its (tapsLen + upFactor - 1) / upFactor products in the
// state's precision, in an order that depends on the instruction set (fused multiply-add where
// available), so levels may differ in the last bits. The error from the exact result is at most
// (terms + 2) eps sum |h[k] u[t - k]|, eps the type's epsilon; typically far less. The taps of
// each phase are padded with zeros to whole registers, so a NaN or infinity among the inputs may
// also turn a few outputs next to those it is a term of into NaN (zero times it); finite inputs
// are unaffected.
//
// Arrays must be aligned to their element type, nothing more; src and dst must not overlap.
// Bad input: MRFInit leaves *state unchanged (set it to null first) when a factor is 0, a phase
// is not smaller than its factor, tapsLen is 0, taps is null, or the filter's tables would pass
// 2 GiB; a delay line longer than the largest array the state can hold throws std::length_error
// ("vector too long"), and a failed copy std::bad_alloc, with *state unchanged. MRFProcess does
// nothing for a null pointer, numIters 0 or numIters x downFactor or x upFactor of 2^31 or more.
// Counts, factors and phases of 2^31 or more are refused as the negative values they are.

// The state's own delay-line array: `size` elements (the caller's vector's) in storage from
// utility::Malloc_Float / Malloc_Double that holds at least the filter's delay-line length.
template <class T>
struct MRFDelayLine {
  T* data;
  std::uint32_t size;
};

struct MRFState_Float {
  unsigned char* spec;
  unsigned char* workBuffer;
  MRFDelayLine<float> dlyLine;
};

struct MRFState_Double {
  unsigned char* spec;
  unsigned char* workBuffer;
  MRFDelayLine<double> dlyLine;
};

namespace filter {

ZAL_API void MRFInit(MRFState_Float** state, unsigned int upFactor, unsigned int downFactor,
                     const float* taps, unsigned int tapsLen,
                     const std::vector<float, zalcore::STLAllocator<float>>& dlyLine,
                     unsigned int upPhase, unsigned int downPhase);
ZAL_API void MRFInit(MRFState_Double** state, unsigned int upFactor, unsigned int downFactor,
                     const double* taps, unsigned int tapsLen,
                     const std::vector<double, zalcore::STLAllocator<double>>& dlyLine,
                     unsigned int upPhase, unsigned int downPhase);

// Reads numIters x downFactor samples from src, writes numIters x upFactor samples to dst.
ZAL_API void MRFProcess(const float* src, float* dst, unsigned int numIters, MRFState_Float* state);
ZAL_API void MRFProcess(const double* src, double* dst, unsigned int numIters,
                        MRFState_Double* state);

// Releases the state; null is ignored.
ZAL_API void MRFFree(MRFState_Float* state);
ZAL_API void MRFFree(MRFState_Double* state);

}  // namespace filter

}  // namespace zalaccelerate
