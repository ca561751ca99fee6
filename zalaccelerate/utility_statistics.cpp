// The reduction fronts. Value-returning ones own their result cell: preset to zero, filled by the
// engine, and returned only when the engine's status is 0.
#include <emmintrin.h>

#include <cstdint>

#include "engine/core/dispatch.h"
#include "zalaccelerate/engine_arguments.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {
namespace {

namespace dispatch = zal::engine::dispatch;
using engine_arguments::Length;

// Sum and Mean take the default algorithm; StandardDeviation the accurate one (double
// accumulation).
constexpr int kDefaultHint = 0;
constexpr int kAccurateHint = 2;

template <class T, class Primitive, class... Args>
T Result(Primitive primitive, Args... args) {
  T result = 0;
  const EngStatus status = primitive(args..., &result);
  return status == engStsNoErr ? result : T(0);
}

template <class T, class Primitive, class... Args>
T HintedResult(Primitive primitive, int hint, Args... args) {
  T result = 0;
  const EngStatus status = primitive(args..., &result, hint);
  return status == engStsNoErr ? result : T(0);
}

int IndexResult(EngStatus (*primitive)(const float*, int, float*, int*), unsigned int len,
                const float* src, float* value) {
  float value_cell = 0.0f;
  int index_cell = 0;
  const EngStatus status = primitive(src, Length(len), &value_cell, &index_cell);
  if (value) *value = value_cell;
  return status == engStsNoErr ? index_cell : 0;
}

}  // namespace

float Sum(unsigned int len, const float* src) {
  return HintedResult<float>(dispatch::SumF32, kDefaultHint, src, Length(len));
}
double Sum(unsigned int len, const double* src) {
  return Result<double>(dispatch::SumF64, src, Length(len));
}
float Mean(unsigned int len, const float* src) {
  return HintedResult<float>(dispatch::MeanF32, kDefaultHint, src, Length(len));
}
double Mean(unsigned int len, const double* src) {
  return Result<double>(dispatch::MeanF64, src, Length(len));
}
float Min(unsigned int len, const float* src) {
  return Result<float>(dispatch::MinF32, src, Length(len));
}
double Min(unsigned int len, const double* src) {
  return Result<double>(dispatch::MinF64, src, Length(len));
}
float Max(unsigned int len, const float* src) {
  return Result<float>(dispatch::MaxF32, src, Length(len));
}
double Max(unsigned int len, const double* src) {
  return Result<double>(dispatch::MaxF64, src, Length(len));
}
float NormL1(unsigned int len, const float* src) {
  return Result<float>(dispatch::NormL1F32, src, Length(len));
}
double NormL1(unsigned int len, const double* src) {
  return Result<double>(dispatch::NormL1F64, src, Length(len));
}
float NormL2(unsigned int len, const float* src) {
  return Result<float>(dispatch::NormL2F32, src, Length(len));
}
double NormL2(unsigned int len, const double* src) {
  return Result<double>(dispatch::NormL2F64, src, Length(len));
}
float DotProduct(unsigned int len, const float* a, const float* b) {
  return Result<float>(dispatch::DotProductF32, a, b, Length(len));
}
double DotProduct(unsigned int len, const double* a, const double* b) {
  return Result<double>(dispatch::DotProductF64, a, b, Length(len));
}

void MinMax(unsigned int len, const float* src, float& min, float& max) {
  dispatch::MinMaxF32(src, Length(len), &min, &max);
}

int MinIndex(unsigned int len, const float* src, float* value) {
  return IndexResult(dispatch::MinIndexF32, len, src, value);
}
int MaxIndex(unsigned int len, const float* src, float* value) {
  return IndexResult(dispatch::MaxIndexF32, len, src, value);
}

void MinMaxIndex(unsigned int len, const float* src, float& min, float& max, int& minIdx,
                 int& maxIdx) {
  int min_index = 0;
  int max_index = 0;
  dispatch::MinMaxIndexF32(src, Length(len), &min, &min_index, &max, &max_index);
  minIdx = min_index;
  maxIdx = max_index;
}

void StandardDeviation(unsigned int len, const float* src, float& out) {
  dispatch::StdDevF32(src, Length(len), &out, kAccurateHint);
}
void StandardDeviation(unsigned int len, const double* src, double& out) {
  dispatch::StdDevF64(src, Length(len), &out);
}

bool Equal(unsigned int len, const unsigned char* a, const unsigned char* b) {
  int flag = 0;
  const EngStatus status = dispatch::EqualU8(a, b, Length(len), &flag);
  return status == engStsNoErr && flag != 0;
}

// The library's own loop, at the SSE2 baseline: scalar steps up to 16-byte alignment of the
// source, four-wide steps (unaligned loads, for a source not aligned to its element), a scalar
// tail. A NaN element never raises the running maxima
// (max keeps its second operand when the first is NaN), so the result does not depend on where
// the vector steps fall.
float MaxAbs(const float* src, unsigned int len) {
  // Refused like every engine reduction: a len of 2^31 and more is a negative engine length.
  if (!src || len > 0x7FFFFFFFu) return 0.0f;
  const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(src);
  std::size_t prologue = (0u - address / 4) % 4;
  if (prologue > len) prologue = len;
  float scalar_max = 0.0f;
  const auto fold = [&scalar_max](float x) {
    const float magnitude = x < 0.0f ? -x : x;
    if (magnitude > scalar_max) scalar_max = magnitude;
  };
  std::size_t i = 0;
  for (; i < prologue; ++i) fold(src[i]);
  const __m128 sign_clear = _mm_castsi128_ps(_mm_set1_epi32(0x7FFFFFFF));
  __m128 lanes = _mm_setzero_ps();
  for (; i + 4 <= len; i += 4)
    lanes = _mm_max_ps(_mm_and_ps(_mm_loadu_ps(src + i), sign_clear), lanes);
  for (; i < len; ++i) fold(src[i]);
  alignas(16) float lane[4];
  _mm_store_ps(lane, lanes);
  for (float x : lane) fold(x);
  return scalar_max;
}

}  // namespace zalaccelerate::utility
