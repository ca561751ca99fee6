// The reference of the data-movement family: one element at a time, moves through the C library's
// overlap-safe memmove.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <cstdint>
#include <cstring>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/argument_check-inl.h"

namespace zal::engine::portable {
namespace {

template <class T>
EngStatus CopyElements(const T* src, T* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  for (int i = 0; i < n; ++i) dst[i] = src[i];
  return engStsNoErr;
}

template <class T>
EngStatus MoveElements(const T* src, T* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  std::memmove(dst, src, static_cast<std::size_t>(n) * sizeof(T));
  return engStsNoErr;
}

template <class T>
EngStatus FillElements(T value, T* dst, int n) {
  if (const EngStatus status = Check(n, dst)) return status;
  for (int i = 0; i < n; ++i) dst[i] = value;
  return engStsNoErr;
}

// Swapping from both ends reverses in place as well.
template <class T>
EngStatus ReverseElements(const T* src, T* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  for (int low = 0, high = n - 1; low <= high; ++low, --high) {
    const T front = src[low];
    const T back = src[high];
    dst[low] = back;
    dst[high] = front;
  }
  return engStsNoErr;
}

template <class T>
T ReverseBytes(T x) {
  unsigned char b[sizeof(T)];
  std::memcpy(b, &x, sizeof b);
  for (std::size_t i = 0; i < sizeof b / 2; ++i) {
    const unsigned char t = b[i];
    b[i] = b[sizeof b - 1 - i];
    b[sizeof b - 1 - i] = t;
  }
  std::memcpy(&x, b, sizeof b);
  return x;
}

template <class T>
EngStatus SwapElements(const T* src, T* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  for (int i = 0; i < n; ++i) dst[i] = ReverseBytes(src[i]);
  return engStsNoErr;
}

}  // namespace

#define ZAL_MOVEMENT_KERNELS(T, E)                 \
  EngStatus Copy##E(const T* src, T* dst, int n) { \
    return CopyElements(src, dst, n);              \
  }
#define ZAL_SWAP_KERNELS(T, E)                          \
  EngStatus SwapBytes##E(const T* src, T* dst, int n) { \
    return SwapElements(src, dst, n);                   \
  }                                                     \
  EngStatus SwapBytes##E##InPlace(T* src_dst, int n) {  \
    return SwapElements(src_dst, src_dst, n);           \
  }

ZAL_MOVEMENT_KERNELS(unsigned char, U8)
ZAL_MOVEMENT_KERNELS(short, S16)
ZAL_MOVEMENT_KERNELS(std::uint32_t, U32)
ZAL_MOVEMENT_KERNELS(float, F32)
ZAL_MOVEMENT_KERNELS(double, F64)
ZAL_SWAP_KERNELS(std::uint16_t, U16)
ZAL_SWAP_KERNELS(Int24, U24)
ZAL_SWAP_KERNELS(std::uint32_t, U32)
ZAL_SWAP_KERNELS(std::uint64_t, U64)
#undef ZAL_MOVEMENT_KERNELS
#undef ZAL_SWAP_KERNELS

EngStatus MoveU8(const unsigned char* src, unsigned char* dst, int n) {
  return MoveElements(src, dst, n);
}
EngStatus MoveS16(const short* src, short* dst, int n) {
  return MoveElements(src, dst, n);
}
EngStatus MoveU32(const std::uint32_t* src, std::uint32_t* dst, int n) {
  return MoveElements(src, dst, n);
}
EngStatus MoveF64(const double* src, double* dst, int n) {
  return MoveElements(src, dst, n);
}

EngStatus SetU8(unsigned char value, unsigned char* dst, int n) {
  return FillElements(value, dst, n);
}
EngStatus SetS16(short value, short* dst, int n) {
  return FillElements(value, dst, n);
}
EngStatus SetS32(std::int32_t value, std::int32_t* dst, int n) {
  return FillElements(value, dst, n);
}
EngStatus SetF32(float value, float* dst, int n) {
  return FillElements(value, dst, n);
}
EngStatus SetF64(double value, double* dst, int n) {
  return FillElements(value, dst, n);
}

EngStatus ZeroU8(unsigned char* dst, int n) {
  return FillElements<unsigned char>(0, dst, n);
}
EngStatus ZeroS16(short* dst, int n) {
  return FillElements<short>(0, dst, n);
}
EngStatus ZeroF32(float* dst, int n) {
  return FillElements(0.0f, dst, n);
}
EngStatus ZeroF64(double* dst, int n) {
  return FillElements(0.0, dst, n);
}

EngStatus FlipF32(const float* src, float* dst, int n) {
  return ReverseElements(src, dst, n);
}
EngStatus FlipF64(const double* src, double* dst, int n) {
  return ReverseElements(src, dst, n);
}

}  // namespace zal::engine::portable
