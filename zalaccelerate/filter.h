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
// blocks of any sizes gives the bits of one call over the whole stream.
//
// Memory, allocated by FIRInit with utility::Malloc_*: the engine specification, at most
// 68 tapsLen + 3.4 KiB bytes (the taps reversed, and shifted once per lane of the widest
// registers); a work buffer of 4 (tapsLen + 2051) bytes; the delay line; a 5-float sample slot;
// and the record itself. Nothing is allocated while filtering.
//
// Threads: a state is used by one thread at a time; distinct states are independent.
struct FIRState_Float {
  unsigned char* spec;        // engine specification: the taps in the engine's form
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
// not move on, and two calls with the same x return the same value. Stream sample by sample with
// the block form (len 1) instead, or keep the delay line with FIRSetDlyLine.
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
// number of iterations gives the same outputs as one call. The caller's vector is never updated.
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
// (terms + 2) eps sum |h[k] u[t - k]|, eps the type's epsilon; typically far less.
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
