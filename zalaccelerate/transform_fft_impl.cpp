#include <cmath>

#include "zalaccelerate/transform.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::transform {

namespace {

// trunc(log2(length) + 0.5), low 32 bits: 0 gives -infinity, which the conversion through a
// 64-bit integer takes to order 0 on the processors this library runs on.
std::uint32_t RoundedOrder(unsigned int length) {
  const double order = std::log2(static_cast<double>(length)) + 0.5;
  if (!(order >= 0)) return 0;
  return static_cast<std::uint32_t>(static_cast<long long>(order));
}

}  // namespace

template <class State, class Complex>
FFTImpl<State, Complex>::FFTImpl(unsigned int order, unsigned int fftSize)
    : order_(order), fftSize_(fftSize), state_(nullptr), workBuffer_(nullptr) {
  if (fftSize_ != 0) order_ = RoundedOrder(fftSize_);
  FFTInit(&state_, order_);
  if (state_->workSize != 0) workBuffer_ = utility::Malloc_Byte(state_->workSize);
}

template <class State, class Complex>
FFTImpl<State, Complex>::FFTImpl()
    : order_(0), fftSize_(0), state_(nullptr), workBuffer_(nullptr) {}

template <class State, class Complex>
FFTImpl<State, Complex>::~FFTImpl() {
  if (state_) FFTFree(state_);
  if (workBuffer_) utility::Free(workBuffer_);
}

template <class State, class Complex>
void FFTImpl<State, Complex>::SetFFTSize(unsigned int fftSize) {
  if (fftSize == fftSize_) return;
  fftSize_ = fftSize;
  if (state_) {
    utility::Free(workBuffer_);
    FFTFree(state_);
    workBuffer_ = nullptr;
    state_ = nullptr;
  }
  order_ = RoundedOrder(fftSize_);
  FFTInit(&state_, order_);
  workBuffer_ = utility::Malloc_Byte(state_->workSize);
}

template <class State, class Complex>
void FFTImpl<State, Complex>::ProcessFwd(const T* srcRe, const T* srcIm, T* dstRe, T* dstIm) {
  FFTFwd(srcRe, srcIm, dstRe, dstIm, state_, workBuffer_);
}

template <class State, class Complex>
void FFTImpl<State, Complex>::ProcessInv(const T* srcRe, const T* srcIm, T* dstRe, T* dstIm) {
  FFTInv(srcRe, srcIm, dstRe, dstIm, state_, workBuffer_);
}

template class FFTImpl<FFTState_Complex_Double_Deinterleaved, std::complex<double>>;
template class FFTImpl<FFTState_Complex_Float_Deinterleaved, std::complex<float>>;

}  // namespace zalaccelerate::transform
