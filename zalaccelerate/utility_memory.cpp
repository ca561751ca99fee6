#include "engine/core/dispatch.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {

namespace dispatch = zal::engine::dispatch;

// The engine takes counts as signed 32-bit values: 2^31 and more arrive negative and are refused.
unsigned char* Malloc_Byte(unsigned int count) {
  return static_cast<unsigned char*>(dispatch::MallocU8(static_cast<int>(count)));
}
short* Malloc_Int16(unsigned int count) {
  return static_cast<short*>(dispatch::MallocS16(static_cast<int>(count)));
}
float* Malloc_Float(unsigned int count) {
  return static_cast<float*>(dispatch::MallocF32(static_cast<int>(count)));
}
double* Malloc_Double(unsigned int count) {
  return static_cast<double*>(dispatch::MallocF64(static_cast<int>(count)));
}
std::complex<float>* Malloc_Complex_Float(unsigned int count) {
  return static_cast<std::complex<float>*>(dispatch::MallocC32(static_cast<int>(count)));
}
std::complex<double>* Malloc_Complex_Double(unsigned int count) {
  return static_cast<std::complex<double>*>(dispatch::MallocC64(static_cast<int>(count)));
}

void Free(unsigned char* buffer) {
  dispatch::Free(buffer);
}
void Free(short* buffer) {
  dispatch::Free(buffer);
}
void Free(float* buffer) {
  dispatch::Free(buffer);
}
void Free(double* buffer) {
  dispatch::Free(buffer);
}
void Free(std::complex<float>* buffer) {
  dispatch::Free(buffer);
}
void Free(std::complex<double>* buffer) {
  dispatch::Free(buffer);
}

}  // namespace zalaccelerate::utility
