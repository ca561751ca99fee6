// The convolution and resampling fronts. Convolution asks the engine to choose its method; the
// forms without a work buffer borrow one engine block per call, sized by the float query for
// both element types (a double buffer of that many elements holds twice the bytes).
#include <memory>

#include "engine/core/dispatch.h"
#include "engine/primitives/convolution/convolution_plan.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {
namespace {

namespace dispatch = zal::engine::dispatch;
using engine_arguments::Length;

int WorkBufferBytes(unsigned int lenA, unsigned int lenB) {
  int bytes = 0;
  dispatch::ConvolutionGetSize(Length(lenA), Length(lenB), zal::engine::kConvolutionDataF32,
                               zal::engine::kConvolutionAuto, &bytes);
  return bytes;
}

template <class T>
unsigned char* Work(T* work) {
  return reinterpret_cast<unsigned char*>(work);
}

}  // namespace

unsigned long long ConvolutionWorkBufferSize(unsigned int lenA, unsigned int lenB) {
  return static_cast<unsigned long long>(WorkBufferBytes(lenA, lenB)) / 4;
}

void Convolve(unsigned int lenA, const float* a, unsigned int lenB, const float* b, float* dst,
              float* work) {
  dispatch::ConvolveF32(a, Length(lenA), b, Length(lenB), dst, zal::engine::kConvolutionAuto,
                        Work(work));
}
void Convolve(unsigned int lenA, const float* a, unsigned int lenB, const float* b, float* dst) {
  const int count = WorkBufferBytes(lenA, lenB) / 4;
  const std::shared_ptr<float> work(static_cast<float*>(dispatch::MallocF32(count)),
                                    [](float* block) { dispatch::Free(block); });
  dispatch::ConvolveF32(a, Length(lenA), b, Length(lenB), dst, zal::engine::kConvolutionAuto,
                        Work(work.get()));
}
void Convolve(unsigned int lenA, const double* a, unsigned int lenB, const double* b, double* dst,
              double* work) {
  dispatch::ConvolveF64(a, Length(lenA), b, Length(lenB), dst, zal::engine::kConvolutionAuto,
                        Work(work));
}
void Convolve(unsigned int lenA, const double* a, unsigned int lenB, const double* b, double* dst) {
  const int count = WorkBufferBytes(lenA, lenB) / 4;
  const std::shared_ptr<double> work(static_cast<double*>(dispatch::MallocF64(count)),
                                     [](double* block) { dispatch::Free(block); });
  dispatch::ConvolveF64(a, Length(lenA), b, Length(lenB), dst, zal::engine::kConvolutionAuto,
                        Work(work.get()));
}

// The engine reports how many samples it wrote; the caller derives that from its own arguments.
void DownSample(unsigned int len, const float* src, float* dst, unsigned int factor,
                unsigned int* phase) {
  int written;
  dispatch::DownSampleF32(src, Length(len), dst, &written, Length(factor),
                          reinterpret_cast<int*>(phase));
}
void DownSample(unsigned int len, const double* src, double* dst, unsigned int factor,
                unsigned int* phase) {
  int written;
  dispatch::DownSampleF64(src, Length(len), dst, &written, Length(factor),
                          reinterpret_cast<int*>(phase));
}
void UpSample(unsigned int len, const float* src, float* dst, unsigned int factor,
              unsigned int* phase) {
  int written;
  dispatch::UpSampleF32(src, Length(len), dst, &written, Length(factor),
                        reinterpret_cast<int*>(phase));
}
void UpSample(unsigned int len, const double* src, double* dst, unsigned int factor,
              unsigned int* phase) {
  int written;
  dispatch::UpSampleF64(src, Length(len), dst, &written, Length(factor),
                        reinterpret_cast<int*>(phase));
}

}  // namespace zalaccelerate::utility
