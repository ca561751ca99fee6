// Fast Fourier transforms of power-of-two length N = 2^order, order 0 .. 24 (kFFTMaxOrder).
//
// Six kinds, each with its own state record:
//   FFTState_Float, FFTState_Double                  real samples <-> packed spectrum
//   FFTState_Complex_Float_Interleaved, ..._Double_Interleaved    std::complex arrays
//   FFTState_Complex_Float_Deinterleaved, ..._Double_Deinterleaved separate re and im arrays
//
// Use:
//   FFTState_Float* state;
//   FFTInit(&state, 10);                        // 1024 points
//   unsigned int size;
//   FFTGetBufSize(state, &size);
//   unsigned char* work = size ? utility::Malloc_Byte(size) : nullptr;
//   FFTFwd(src, dst, state, work);              // any number of transforms
//   FFTInv(dst, src, state, work);
//   FFTFree(state);                             // releases the prepared tables only
//   utility::Free(work);
//
// Definitions, j the imaginary unit:
//   forward  X[k] = sum_{n<N} x[n] exp(-2 pi j n k / N)          (not scaled)
//   inverse  x[n] = (1/N) sum_{k<N} X[k] exp(+2 pi j n k / N)    (divided by N)
// so a forward transform followed by an inverse one returns the input.
//
// Real kinds: the forward transform reads N samples and writes N + 2 values, the spectrum's
// bins 0 .. N/2 as (re, im) pairs: dst[2k] = Re X[k], dst[2k+1] = Im X[k]; dst[1] and dst[N+1]
// are 0. The bins above N/2 are the conjugates of these and are not stored. The inverse reads
// those N + 2 values (ignoring dst[1] and dst[N+1]) and writes N samples.
// Complex kinds: N elements in, N out; deinterleaved ones take the real parts and the imaginary
// parts as four separate arrays.
//
// Every transform may run in place (each destination the same array as its source) or out of
// place (no partial overlap). Arrays must be aligned to their element type (as C++ arrays are),
// nothing more; the work buffer must hold FFTGetBufSize() bytes. It may be null when that size is
// 0 (N = 1, real N <= 2, and the short lengths whose whole transform the registers hold: up to
// 32 .. 256 complex points, depending on the type and the instruction set). One state may serve
// several threads at once if each passes its own work buffer.
//
// Accuracy: the relative RMS error of a forward transform of random data, ||X - exact|| /
// ||exact||, is at most 1.25 times that of FFTW's (Debian's libfftw3) on the same data: about
// 1e-7 in float and 2e-16 in double for N = 1024 .. 4096, growing like sqrt(log2 N).
// NaN and infinity propagate to the bins they reach; which NaN a bin holds is not specified.
//
// Failures are silent: nothing is reported or thrown. An order above 24 yields a record whose
// transforms do nothing and whose work size is 0; when memory for the prepared tables cannot be
// had, the record reports its work size but its transforms do nothing too. A transform on an
// unprepared record leaves its destination untouched.
#pragma once

#include <complex>
#include <cstdint>

#include "zalaccelerate/export.h"

namespace zalaccelerate::transform {

inline constexpr unsigned int kFFTMaxOrder = 24;

// State records: created by FFTInit on the ordinary heap and never deleted by this library (each
// FFTInit leaves one small record behind). engineHandle is null until preparation succeeds;
// specBlock holds the prepared tables until FFTFree; workSize is the work buffer size in bytes.
#define ZAL_FFT_STATE_RECORD(Name) \
  struct Name {                    \
    void* engineHandle;            \
    unsigned char* specBlock;      \
    std::uint32_t workSize;        \
  };
ZAL_FFT_STATE_RECORD(FFTState_Float)
ZAL_FFT_STATE_RECORD(FFTState_Double)
ZAL_FFT_STATE_RECORD(FFTState_Complex_Float_Interleaved)
ZAL_FFT_STATE_RECORD(FFTState_Complex_Double_Interleaved)
ZAL_FFT_STATE_RECORD(FFTState_Complex_Float_Deinterleaved)
ZAL_FFT_STATE_RECORD(FFTState_Complex_Double_Deinterleaved)
#undef ZAL_FFT_STATE_RECORD

// FFTInit(&state, order): prepares a 2^order-point transform and stores a new record in *state,
// also when preparation fails (see above).
// FFTGetBufSize(state, &size): size = state->workSize.
// FFTFree(state): releases the prepared tables and clears specBlock; the record stays the
// caller's and must not be used for transforms again. A second FFTFree is harmless.
#define ZAL_FFT_LIFECYCLE(State)                                      \
  ZAL_API void FFTInit(State** state, unsigned int order);            \
  ZAL_API void FFTGetBufSize(const State* state, unsigned int* size); \
  ZAL_API void FFTFree(State* state);
ZAL_FFT_LIFECYCLE(FFTState_Float)
ZAL_FFT_LIFECYCLE(FFTState_Double)
ZAL_FFT_LIFECYCLE(FFTState_Complex_Float_Interleaved)
ZAL_FFT_LIFECYCLE(FFTState_Complex_Double_Interleaved)
ZAL_FFT_LIFECYCLE(FFTState_Complex_Float_Deinterleaved)
ZAL_FFT_LIFECYCLE(FFTState_Complex_Double_Deinterleaved)
#undef ZAL_FFT_LIFECYCLE

// Real: src N samples, dst N + 2 packed values (forward); src N + 2, dst N (inverse).
ZAL_API void FFTFwd(const float* src, float* dst, FFTState_Float* state, unsigned char* work);
ZAL_API void FFTInv(const float* src, float* dst, FFTState_Float* state, unsigned char* work);
ZAL_API void FFTFwd(const double* src, double* dst, FFTState_Double* state, unsigned char* work);
ZAL_API void FFTInv(const double* src, double* dst, FFTState_Double* state, unsigned char* work);

// Complex interleaved: N elements each.
ZAL_API void FFTFwd(const std::complex<float>* src, std::complex<float>* dst,
                    FFTState_Complex_Float_Interleaved* state, unsigned char* work);
ZAL_API void FFTInv(const std::complex<float>* src, std::complex<float>* dst,
                    FFTState_Complex_Float_Interleaved* state, unsigned char* work);
ZAL_API void FFTFwd(const std::complex<double>* src, std::complex<double>* dst,
                    FFTState_Complex_Double_Interleaved* state, unsigned char* work);
ZAL_API void FFTInv(const std::complex<double>* src, std::complex<double>* dst,
                    FFTState_Complex_Double_Interleaved* state, unsigned char* work);

// Complex deinterleaved: N real parts and N imaginary parts, in and out.
ZAL_API void FFTFwd(const float* srcRe, const float* srcIm, float* dstRe, float* dstIm,
                    FFTState_Complex_Float_Deinterleaved* state, unsigned char* work);
ZAL_API void FFTInv(const float* srcRe, const float* srcIm, float* dstRe, float* dstIm,
                    FFTState_Complex_Float_Deinterleaved* state, unsigned char* work);
ZAL_API void FFTFwd(const double* srcRe, const double* srcIm, double* dstRe, double* dstIm,
                    FFTState_Complex_Double_Deinterleaved* state, unsigned char* work);
ZAL_API void FFTInv(const double* srcRe, const double* srcIm, double* dstRe, double* dstIm,
                    FFTState_Complex_Double_Deinterleaved* state, unsigned char* work);

// An owning deinterleaved transform sized by length. Exactly two instantiations exist:
//   FFTImpl<FFTState_Complex_Double_Deinterleaved, std::complex<double>>   (double arrays)
//   FFTImpl<FFTState_Complex_Float_Deinterleaved, std::complex<float>>     (float arrays)
// A length L becomes the order trunc(log2(L) + 0.5): 1000 -> 10 (1024 points), 1448 -> 10,
// 1449 -> 11, 3 -> 2, 1 -> 0. Neither copyable nor movable. One object, one thread at a time.
template <class State, class Complex>
class ZAL_API FFTImpl {
 public:
  using T = typename Complex::value_type;

  // Prepared for `fftSize` points (rounded as above) when it is not 0, else for 2^order points.
  FFTImpl(unsigned int order, unsigned int fftSize);
  // Nothing prepared: call SetFFTSize with a nonzero length before any transform.
  FFTImpl();
  // Releases the prepared tables, then the work buffer.
  virtual ~FFTImpl();
  FFTImpl(const FFTImpl&) = delete;
  FFTImpl& operator=(const FFTImpl&) = delete;

  // Re-prepares for a new length (rounded as above); the same length as before does nothing.
  void SetFFTSize(unsigned int fftSize);
  unsigned int GetOrder() const { return order_; }
  // The length last requested, unrounded; 0 when built from an order.
  unsigned int GetFFTSize() const { return fftSize_; }
  // The length transformed: 2^order, or 0 for an order above kFFTMaxOrder, which no transform
  // takes (its transforms leave their destinations untouched).
  unsigned int GetBlockSize() const { return order_ <= kFFTMaxOrder ? 1u << order_ : 0u; }

  // GetBlockSize() elements per array; the inverse divides by GetBlockSize().
  void ProcessFwd(const T* srcRe, const T* srcIm, T* dstRe, T* dstIm);
  void ProcessInv(const T* srcRe, const T* srcIm, T* dstRe, T* dstIm);

 private:
  std::uint32_t order_;
  std::uint32_t fftSize_;
  State* state_;
  unsigned char* workBuffer_;
};

extern template class ZAL_API FFTImpl<FFTState_Complex_Double_Deinterleaved, std::complex<double>>;
extern template class ZAL_API FFTImpl<FFTState_Complex_Float_Deinterleaved, std::complex<float>>;

}  // namespace zalaccelerate::transform
