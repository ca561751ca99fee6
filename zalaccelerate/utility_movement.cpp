#include <cstdint>

#include "engine/core/dispatch.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {
namespace {

namespace dispatch = zal::engine::dispatch;
using engine_arguments::Length;
using zalcore::utility::int24_t;

template <class To, class From>
To* As(From* p) {
  return reinterpret_cast<To*>(p);
}
template <class To, class From>
const To* As(const From* p) {
  return reinterpret_cast<const To*>(p);
}

// The byte count of len 32-bit elements, wrapping in 32 bits as it always has.
int WrappedBytes(unsigned int len) {
  return static_cast<int>(len * 4u);
}

}  // namespace

void Copy(unsigned int len, const signed char* src, signed char* dst) {
  if (len == 0) return;
  dispatch::CopyU8(As<unsigned char>(src), As<unsigned char>(dst), Length(len));
}
void Copy(unsigned int len, const unsigned char* src, unsigned char* dst) {
  if (len == 0) return;
  dispatch::CopyU8(src, dst, Length(len));
}
void Copy(unsigned int len, const short* src, short* dst) {
  if (len == 0) return;
  dispatch::CopyS16(src, dst, Length(len));
}
void Copy(unsigned int len, const int* src, int* dst) {
  const int bytes = WrappedBytes(len);
  if (bytes == 0) return;
  dispatch::CopyU8(As<unsigned char>(src), As<unsigned char>(dst), bytes);
}
void Copy(unsigned int len, const unsigned int* src, unsigned int* dst) {
  if (len == 0) return;
  dispatch::CopyU32(src, dst, Length(len));
}
void Copy(unsigned int len, const float* src, float* dst) {
  if (len == 0) return;
  dispatch::CopyF32(src, dst, Length(len));
}
void Copy(unsigned int len, const double* src, double* dst) {
  if (len == 0) return;
  dispatch::CopyF64(src, dst, Length(len));
}

void Move(unsigned int len, const unsigned char* src, unsigned char* dst) {
  if (len == 0) return;
  dispatch::MoveU8(src, dst, Length(len));
}
void Move(unsigned int len, const short* src, short* dst) {
  if (len == 0) return;
  dispatch::MoveS16(src, dst, Length(len));
}
void Move(unsigned int len, const unsigned int* src, unsigned int* dst) {
  if (len == 0) return;
  dispatch::MoveU32(src, dst, Length(len));
}
void Move(unsigned int len, const float* src, float* dst) {
  if (len == 0) return;
  dispatch::MoveU32(As<std::uint32_t>(src), As<std::uint32_t>(dst), Length(len));
}
void Move(unsigned int len, const double* src, double* dst) {
  if (len == 0) return;
  dispatch::MoveF64(src, dst, Length(len));
}

void Set(unsigned int len, unsigned char* p, unsigned char value) {
  if (len == 0) return;
  dispatch::SetU8(value, p, Length(len));
}
void Set(unsigned int len, short* p, short value) {
  if (len == 0) return;
  dispatch::SetS16(value, p, Length(len));
}
void Set(unsigned int len, int* p, int value) {
  if (len == 0) return;
  dispatch::SetS32(value, p, Length(len));
}
void Set(unsigned int len, unsigned int* p, unsigned int value) {
  if (len == 0) return;
  dispatch::SetS32(static_cast<std::int32_t>(value), As<std::int32_t>(p), Length(len));
}
void Set(unsigned int len, float* p, float value) {
  if (len == 0) return;
  dispatch::SetF32(value, p, Length(len));
}
void Set(unsigned int len, double* p, double value) {
  if (len == 0) return;
  dispatch::SetF64(value, p, Length(len));
}

void Zero(unsigned int len, unsigned char* p) {
  if (len == 0) return;
  dispatch::ZeroU8(p, Length(len));
}
void Zero(unsigned int len, short* p) {
  if (len == 0) return;
  dispatch::ZeroS16(p, Length(len));
}
void Zero(unsigned int len, int* p) {
  const int bytes = WrappedBytes(len);
  if (len == 0 || bytes == 0) return;
  dispatch::ZeroU8(As<unsigned char>(p), bytes);
}
void Zero(unsigned int len, unsigned int* p) {
  const int bytes = WrappedBytes(len);
  if (len == 0 || bytes == 0) return;
  dispatch::ZeroU8(As<unsigned char>(p), bytes);
}
void Zero(unsigned int len, float* p) {
  if (len == 0) return;
  dispatch::ZeroF32(p, Length(len));
}
void Zero(unsigned int len, double* p) {
  if (len == 0) return;
  dispatch::ZeroF64(p, Length(len));
}

void Flip(unsigned int len, const float* src, float* dst) {
  dispatch::FlipF32(src, dst, Length(len));
}
void Flip(unsigned int len, const double* src, double* dst) {
  dispatch::FlipF64(src, dst, Length(len));
}
void Flip_InPlace(unsigned int len, float* p) {
  dispatch::FlipF32(p, p, Length(len));
}
void Flip_InPlace(unsigned int len, double* p) {
  dispatch::FlipF64(p, p, Length(len));
}

void SwapBytes(unsigned int len, unsigned short* p) {
  dispatch::SwapBytesU16InPlace(As<std::uint16_t>(p), Length(len));
}
void SwapBytes(unsigned int len, unsigned int* p) {
  dispatch::SwapBytesU32InPlace(As<std::uint32_t>(p), Length(len));
}
void SwapBytes(unsigned int len, int24_t* p) {
  dispatch::SwapBytesU24InPlace(As<zal::engine::Int24>(p), Length(len));
}
void SwapBytes(unsigned int len, std::uint64_t* p) {
  dispatch::SwapBytesU64InPlace(p, Length(len));
}
void SwapBytes(unsigned int len, const unsigned short* src, unsigned short* dst) {
  dispatch::SwapBytesU16(As<std::uint16_t>(src), As<std::uint16_t>(dst), Length(len));
}
void SwapBytes(unsigned int len, const unsigned int* src, unsigned int* dst) {
  dispatch::SwapBytesU32(As<std::uint32_t>(src), As<std::uint32_t>(dst), Length(len));
}
void SwapBytes(unsigned int len, const int24_t* src, int24_t* dst) {
  dispatch::SwapBytesU24(As<zal::engine::Int24>(src), As<zal::engine::Int24>(dst), Length(len));
}
void SwapBytes(unsigned int len, const std::uint64_t* src, std::uint64_t* dst) {
  dispatch::SwapBytesU64(src, dst, Length(len));
}

}  // namespace zalaccelerate::utility
