#include "engine/core/dispatch.h"
#include "engine/primitives/fft/fft_spec.h"
#include "zalaccelerate/transform.h"

namespace zalaccelerate::transform {

namespace dispatch = zal::engine::dispatch;
using zal::engine::FFTSpec;

namespace {

constexpr int kHintFast = 1;

// The record is stored in *state on every path, the failing ones included.
template <class State>
void Prepare(State** state, unsigned int order, zal::engine::FFTGetSize& get_size,
             zal::engine::FFTInit& init) {
  auto* record = new State{nullptr, nullptr, 0};
  int spec_size = 0;
  int init_size = 0;
  int work_size = 0;
  const int engine_order = static_cast<int>(order);
  if (get_size(engine_order, zal::engine::kFFTDivInvByN, kHintFast, &spec_size, &init_size,
               &work_size) != engStsNoErr) {
    *state = record;
    return;
  }
  auto* spec_block = static_cast<unsigned char*>(dispatch::Malloc(spec_size));
  if (!spec_block) {
    record->workSize = static_cast<std::uint32_t>(work_size);
    *state = record;
    return;
  }
  unsigned char* init_buffer = nullptr;
  if (init_size != 0) {
    init_buffer = static_cast<unsigned char*>(dispatch::Malloc(init_size));
    if (!init_buffer) {
      record->specBlock = spec_block;
      record->workSize = static_cast<std::uint32_t>(work_size);
      *state = record;
      return;
    }
  }
  auto** handle = reinterpret_cast<FFTSpec**>(&record->engineHandle);
  const EngStatus status =
      init(handle, engine_order, zal::engine::kFFTDivInvByN, kHintFast, spec_block, init_buffer);
  dispatch::Free(init_buffer);
  if (status != engStsNoErr) {
    dispatch::Free(spec_block);
    *state = record;
    return;
  }
  record->specBlock = spec_block;
  record->workSize = static_cast<std::uint32_t>(work_size);
  *state = record;
}

template <class State>
const FFTSpec* Handle(const State* state) {
  return static_cast<const FFTSpec*>(state->engineHandle);
}

template <class State>
void Release(State* state) {
  dispatch::Free(state->specBlock);
  state->specBlock = nullptr;
}

}  // namespace

#define ZAL_FFT_LIFECYCLE(State, K)                                       \
  void FFTInit(State** state, unsigned int order) {                       \
    Prepare(state, order, dispatch::FFTGetSize##K, dispatch::FFTInit##K); \
  }                                                                       \
  void FFTGetBufSize(const State* state, unsigned int* size) {            \
    *size = state->workSize;                                              \
  }                                                                       \
  void FFTFree(State* state) {                                            \
    Release(state);                                                       \
  }
ZAL_FFT_LIFECYCLE(FFTState_Float, RealF32)
ZAL_FFT_LIFECYCLE(FFTState_Double, RealF64)
ZAL_FFT_LIFECYCLE(FFTState_Complex_Float_Interleaved, ComplexF32)
ZAL_FFT_LIFECYCLE(FFTState_Complex_Double_Interleaved, ComplexF64)
ZAL_FFT_LIFECYCLE(FFTState_Complex_Float_Deinterleaved, SplitF32)
ZAL_FFT_LIFECYCLE(FFTState_Complex_Double_Deinterleaved, SplitF64)
#undef ZAL_FFT_LIFECYCLE

void FFTFwd(const float* src, float* dst, FFTState_Float* state, unsigned char* work) {
  dispatch::FFTFwdRealF32(src, dst, Handle(state), work);
}
void FFTInv(const float* src, float* dst, FFTState_Float* state, unsigned char* work) {
  dispatch::FFTInvRealF32(src, dst, Handle(state), work);
}
void FFTFwd(const double* src, double* dst, FFTState_Double* state, unsigned char* work) {
  dispatch::FFTFwdRealF64(src, dst, Handle(state), work);
}
void FFTInv(const double* src, double* dst, FFTState_Double* state, unsigned char* work) {
  dispatch::FFTInvRealF64(src, dst, Handle(state), work);
}

// std::complex<T> is laid out as the engine's (re, im) pairs.
void FFTFwd(const std::complex<float>* src, std::complex<float>* dst,
            FFTState_Complex_Float_Interleaved* state, unsigned char* work) {
  dispatch::FFTFwdComplexF32(reinterpret_cast<const zal::engine::Complex32*>(src),
                             reinterpret_cast<zal::engine::Complex32*>(dst), Handle(state), work);
}
void FFTInv(const std::complex<float>* src, std::complex<float>* dst,
            FFTState_Complex_Float_Interleaved* state, unsigned char* work) {
  dispatch::FFTInvComplexF32(reinterpret_cast<const zal::engine::Complex32*>(src),
                             reinterpret_cast<zal::engine::Complex32*>(dst), Handle(state), work);
}
void FFTFwd(const std::complex<double>* src, std::complex<double>* dst,
            FFTState_Complex_Double_Interleaved* state, unsigned char* work) {
  dispatch::FFTFwdComplexF64(reinterpret_cast<const zal::engine::Complex64*>(src),
                             reinterpret_cast<zal::engine::Complex64*>(dst), Handle(state), work);
}
void FFTInv(const std::complex<double>* src, std::complex<double>* dst,
            FFTState_Complex_Double_Interleaved* state, unsigned char* work) {
  dispatch::FFTInvComplexF64(reinterpret_cast<const zal::engine::Complex64*>(src),
                             reinterpret_cast<zal::engine::Complex64*>(dst), Handle(state), work);
}

void FFTFwd(const float* srcRe, const float* srcIm, float* dstRe, float* dstIm,
            FFTState_Complex_Float_Deinterleaved* state, unsigned char* work) {
  dispatch::FFTFwdSplitF32(srcRe, srcIm, dstRe, dstIm, Handle(state), work);
}
void FFTInv(const float* srcRe, const float* srcIm, float* dstRe, float* dstIm,
            FFTState_Complex_Float_Deinterleaved* state, unsigned char* work) {
  dispatch::FFTInvSplitF32(srcRe, srcIm, dstRe, dstIm, Handle(state), work);
}
void FFTFwd(const double* srcRe, const double* srcIm, double* dstRe, double* dstIm,
            FFTState_Complex_Double_Deinterleaved* state, unsigned char* work) {
  dispatch::FFTFwdSplitF64(srcRe, srcIm, dstRe, dstIm, Handle(state), work);
}
void FFTInv(const double* srcRe, const double* srcIm, double* dstRe, double* dstIm,
            FFTState_Complex_Double_Deinterleaved* state, unsigned char* work) {
  dispatch::FFTInvSplitF64(srcRe, srcIm, dstRe, dstIm, Handle(state), work);
}

}  // namespace zalaccelerate::transform
