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

template <class T>
EngStatus SetElements(T value, T* dst, int n) {
  return FillElements(value, dst, n);
}

template <class T>
EngStatus ClearElements(T* dst, int n) {
  return FillElements(T{}, dst, n);
}

}  // namespace

#include "engine/primitives/movement/movement_entries-inl.h"

}  // namespace zal::engine::portable
