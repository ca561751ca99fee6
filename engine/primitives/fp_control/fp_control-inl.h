// Flush-to-zero and denormals-are-zero for the calling thread, through MXCSR.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <xmmintrin.h>

#include <cstdint>

#include "engine/core/fp_support.h"
#include "engine/core/primitive_declarations.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

constexpr unsigned kDenormalsAreZero = 0x40;
constexpr unsigned kExceptionMasks = 0x1F80;
constexpr unsigned kUnderflowMask = 0x800;
constexpr unsigned kFlushToZero = 0x8000;

void WriteMasked(unsigned mask, unsigned bits) {
  _mm_setcsr((_mm_getcsr() & ~mask) | (bits & mask));
}

}  // namespace

EngStatus SetFlushToZeroMode(int flag, unsigned int* saved_underflow_mask) {
  if (!ProcessorHasSse()) return engStsCpuNotSupportedErr;
  if (!flag) {
    WriteMasked(kFlushToZero, 0);
    if (saved_underflow_mask && *saved_underflow_mask == 0) {
      WriteMasked(kExceptionMasks, _mm_getcsr() & (kExceptionMasks & ~kUnderflowMask));
    }
    return engStsNoErr;
  }
  const unsigned masks = _mm_getcsr() & kExceptionMasks;
  WriteMasked(kFlushToZero, kFlushToZero);
  // Flushed results would otherwise raise underflow exceptions on every denormal.
  WriteMasked(kExceptionMasks, masks | kUnderflowMask);
  if (saved_underflow_mask) *saved_underflow_mask = masks & kUnderflowMask;
  return engStsNoErr;
}

EngStatus SetDenormalsAreZeroMode(int flag) {
  if (!ProcessorHasSse() || !ProcessorHasDenormalsAreZero()) return engStsCpuNotSupportedErr;
  WriteMasked(kDenormalsAreZero, flag ? kDenormalsAreZero : 0);
  return engStsNoErr;
}

}  // namespace zal::engine::ZAL_LEVEL

ZAL_FP_CONTROL_PRIMITIVES(ZAL_CHECK_SHAPE)
