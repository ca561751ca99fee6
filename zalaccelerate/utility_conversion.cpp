#include <bit>
#include <cmath>
#include <cstdint>

#include "engine/core/dispatch.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {
namespace {

namespace dispatch = zal::engine::dispatch;
using engine_arguments::Length;
using zal::engine::Int24;
using zalcore::utility::int24_t;

static_assert(sizeof(int24_t) == sizeof(Int24) && alignof(int24_t) == alignof(Int24));

const Int24* Engine(const int24_t* p) {
  return reinterpret_cast<const Int24*>(p);
}
Int24* Engine(int24_t* p) {
  return reinterpret_cast<Int24*>(p);
}

// The engine's rounding-mode codes.
int RoundingMode(bool round) {
  return round ? 2 : 0;
}
// For int24_t: the library's own truncation, or the engine's ties-to-even rule.
int Int24Rule(bool round) {
  return round ? 1 : 0;
}

// The float nearest to 2^-scale, as the scaled int24_t conversion multiplies by it: 2^-scale
// in double precision (exact, as pow(2.0, -scale) gives it, without its cost), narrowed.
float NearestPowerOfTwo(int scale) {
  // Within the doubles' reach the power is its bit pattern; beyond it ldexp rounds in the
  // caller's mode (a library call that costs more than a short conversion).
  if (scale >= -1023 && scale <= 1022) {
    return static_cast<float>(
        std::bit_cast<double>(static_cast<std::uint64_t>(1023 - scale) << 52));
  }
  const int limited = scale < -2000 ? -2000 : (scale > 2000 ? 2000 : scale);
  return static_cast<float>(std::ldexp(1.0, -limited));
}

// The factor the engine's scaled conversions build in the exponent field of 1.0.
float ExponentFieldFactor(int scale) {
  const int limited = scale < -127 ? -127 : (scale > 127 ? 127 : scale);
  return std::bit_cast<float>(static_cast<std::uint32_t>(127 - limited) << 23);
}

}  // namespace

void Convert(unsigned int len, const unsigned char* src, float* dst) {
  dispatch::ConvertU8ToF32(src, dst, Length(len));
}
void Convert(unsigned int len, const short* src, float* dst, int scale) {
  dispatch::ConvertS16ToF32Scaled(src, dst, Length(len), scale);
}
void Convert(unsigned int len, const short* src, double* dst, int scale) {
  dispatch::ConvertS16ToF64Scaled(src, dst, Length(len), scale);
}
void Convert(unsigned int len, const int* src, float* dst, int scale) {
  dispatch::ConvertS32ToF32Scaled(src, dst, Length(len), scale);
}
void Convert(unsigned int len, const int* src, double* dst, int scale) {
  dispatch::ConvertS32ToF64Scaled(src, dst, Length(len), scale);
}
void Convert(unsigned int len, const int* src, int24_t* dst, int scale) {
  dispatch::ConvertS32ToS24Scaled(src, Engine(dst), Length(len), scale);
}
void Convert(unsigned int len, const float* src, unsigned char* dst, int scale, bool round) {
  dispatch::ConvertF32ToU8(src, dst, Length(len), RoundingMode(round), scale);
}
void Convert(unsigned int len, const float* src, short* dst, int scale, bool round) {
  dispatch::ConvertF32ToS16(src, dst, Length(len), RoundingMode(round), scale);
}
void Convert(unsigned int len, const float* src, int* dst, int scale, bool round) {
  dispatch::ConvertF32ToS32(src, dst, Length(len), RoundingMode(round), scale);
}
void Convert(unsigned int len, const float* src, int24_t* dst, int scale, bool round) {
  if (round) {
    dispatch::ConvertF32ToS24Even(src, Engine(dst), Length(len), scale);
    return;
  }
  // The library's own converter takes the unsigned length as it is: pieces the engine accepts.
  constexpr unsigned int kPiece = 1u << 30;
  while (len > 0 && src && dst) {
    const unsigned int piece = len < kPiece ? len : kPiece;
    dispatch::ConvertF32ToS24Limited(src, Engine(dst), Length(piece), 0, scale);
    src += piece;
    dst += piece;
    len -= piece;
  }
}
void Convert(unsigned int len, const double* src, int* dst, int scale, bool round) {
  dispatch::ConvertF64ToS32(src, dst, Length(len), RoundingMode(round), scale);
}
void Convert(unsigned int len, const float* src, double* dst) {
  dispatch::ConvertF32ToF64(src, dst, Length(len));
}
void Convert(unsigned int len, const double* src, float* dst) {
  dispatch::ConvertF64ToF32(src, dst, Length(len));
}
void Convert(unsigned int len, const int24_t* src, int* dst) {
  dispatch::ConvertS24ToS32(Engine(src), dst, Length(len));
}
void Convert(unsigned int len, const int24_t* src, float* dst, int scale) {
  if (scale == 0) {
    dispatch::ConvertS24ToF32(Engine(src), dst, Length(len));
    return;
  }
  // The exact float of each sample times the factor, one rounding, as converting and then
  // multiplying in place would give, in one pass: a one-channel deinterleave with that factor.
  float* const channel[] = {dst};
  dispatch::DeinterleaveConvertS24ToF32(Engine(src), channel, 1, Length(len),
                                        NearestPowerOfTwo(scale));
}
void ConvertFloat2Half(float* src, unsigned short* dst, unsigned int len) {
  dispatch::ConvertF32ToF16(src, dst, Length(len), 0);
}
void ConvertHalf2Float(unsigned short* src, float* dst, unsigned int len) {
  dispatch::ConvertF16ToF32(src, dst, Length(len));
}

void DeinterleaveConvert(unsigned int channels, unsigned int frames, const short* src,
                         float* const* dst, int scale) {
  dispatch::DeinterleaveConvertS16ToF32(src, dst, Length(channels), Length(frames),
                                        ExponentFieldFactor(scale));
}
void DeinterleaveConvert(unsigned int channels, unsigned int frames, const int24_t* src,
                         float* const* dst, int scale) {
  dispatch::DeinterleaveConvertS24ToF32(Engine(src), dst, Length(channels), Length(frames),
                                        scale == 0 ? 1.0f : NearestPowerOfTwo(scale));
}
void DeinterleaveConvert(unsigned int channels, unsigned int frames, const int* src,
                         float* const* dst, int scale) {
  dispatch::DeinterleaveConvertS32ToF32(src, dst, Length(channels), Length(frames),
                                        ExponentFieldFactor(scale));
}
void DeinterleaveConvert(unsigned int channels, unsigned int frames, const float* src,
                         float* const* dst, int scale) {
  dispatch::DeinterleaveConvertF32ToF32(src, dst, Length(channels), Length(frames),
                                        ExponentFieldFactor(scale));
}
void InterleaveConvert(unsigned int channels, unsigned int frames, const float* const* src,
                       short* dst, int scale, bool round) {
  dispatch::InterleaveConvertF32ToS16(src, dst, Length(channels), Length(frames),
                                      RoundingMode(round), scale);
}
void InterleaveConvert(unsigned int channels, unsigned int frames, const float* const* src,
                       int24_t* dst, int scale, bool round) {
  dispatch::InterleaveConvertF32ToS24(src, Engine(dst), Length(channels), Length(frames),
                                      Int24Rule(round), scale);
}
void InterleaveConvert(unsigned int channels, unsigned int frames, const float* const* src,
                       int* dst, int scale, bool round) {
  dispatch::InterleaveConvertF32ToS32(src, dst, Length(channels), Length(frames),
                                      RoundingMode(round), scale);
}

}  // namespace zalaccelerate::utility
