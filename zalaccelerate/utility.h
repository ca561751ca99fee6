// Vector utilities: aligned memory and the calling thread's denormal modes.
#pragma once

#include <complex>

#include "zalaccelerate/export.h"

namespace zalaccelerate::utility {

// ---- Aligned memory --------------------------------------------------------------------------
// Buffers aligned to 64 bytes, for the widest vectors the library uses. `count` counts elements
// (complex elements for the complex forms), never bytes. The memory is not initialised.
// Returns null when count is 0 or at least 2^31, when the block would exceed 2^31 - 1 - 72 bytes,
// or when the heap is exhausted; never throws. Release with the matching Free (null is ignored);
// a pointer from anywhere else must not be passed to Free.
ZAL_API unsigned char* Malloc_Byte(unsigned int count);
ZAL_API short* Malloc_Int16(unsigned int count);
ZAL_API float* Malloc_Float(unsigned int count);
ZAL_API double* Malloc_Double(unsigned int count);
ZAL_API std::complex<float>* Malloc_Complex_Float(unsigned int count);
ZAL_API std::complex<double>* Malloc_Complex_Double(unsigned int count);

ZAL_API void Free(unsigned char* buffer);
ZAL_API void Free(short* buffer);
ZAL_API void Free(float* buffer);
ZAL_API void Free(double* buffer);
ZAL_API void Free(std::complex<float>* buffer);
ZAL_API void Free(std::complex<double>* buffer);

// ---- Denormal modes of the calling thread ------------------------------------------------------
// Flush-to-zero: denormal results are written as zero. Switching it on also masks the underflow
// exception; switching it off leaves the exception masks as they are.
ZAL_API void SetFlushDenormalsToZero(bool enable);
// Denormals-are-zero: denormal operands are read as zero. Ignored on processors without it.
ZAL_API void SetDenormalsAreZero(bool enable);
// Does nothing: denormal exceptions stay as the thread has them.
ZAL_API void SetDenormalExceptionsEnabled(bool enable);

// The getters do not read the processor: they always return false, even right after the setter
// switched the mode on. Keep your own record of what you set.
ZAL_API bool GetFlushDenormalsToZero();
ZAL_API bool GetDenormalsAreZero();
ZAL_API bool GetDenormalExceptionsEnabled();

}  // namespace zalaccelerate::utility
