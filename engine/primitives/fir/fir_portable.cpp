// The reference of the FIR family: one output at a time, the four chains of the level kernels
// summed in the same order, with separate rounding of each product (as the levels without fused
// multiply-add round them).
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <cstddef>
#include <cstring>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/fir/fir_spec.h"

namespace zal::engine::portable {
namespace {

// A portable spec keeps the reversed taps only; its lane count tags it for this variant alone.
constexpr int kPortableLanes = 1;

float OneOutput(const float* g, std::ptrdiff_t taps, const float* b) {
  float c[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  for (std::ptrdiff_t m = 0; m < taps; ++m) c[m % 4] = g[m] * b[m] + c[m % 4];
  return (c[0] + c[2]) + (c[1] + c[3]);
}

}  // namespace

EngStatus FIRInitF32(const float* taps, int taps_len, int algorithm, unsigned char* spec) {
  if (!taps || !spec) return engStsNullPtrErr;
  if (taps_len <= 0) return engStsSizeErr;
  if (algorithm != kFIRAlgorithmDirect) return engStsNotSupportedModeErr;
  FIRSpecHeader header{};
  header.lanes = kPortableLanes;
  header.taps_len = taps_len;
  header.reversed = kFIRHeaderFloats;
  std::memcpy(spec, &header, sizeof header);
  float* g = reinterpret_cast<float*>(spec) + header.reversed;
  for (int m = 0; m < taps_len; ++m) g[m] = taps[taps_len - 1 - m];
  return engStsNoErr;
}

EngStatus FIRF32(const float* src, float* dst, int n, const unsigned char* spec,
                 const float* dly_src, float* dly_dst, unsigned char* work) {
  if (!src || !dst || !spec || !work) return engStsNullPtrErr;
  if (n <= 0) return engStsSizeErr;
  FIRSpecHeader header;
  std::memcpy(&header, spec, sizeof header);
  if (header.lanes != kPortableLanes) return engStsContextMatchErr;
  const float* g = reinterpret_cast<const float*>(spec) + header.reversed;
  const std::ptrdiff_t taps = header.taps_len;
  const std::size_t history = static_cast<std::size_t>(taps - 1);
  auto* line = reinterpret_cast<float*>(work);
  if (dly_src) {
    std::memmove(line, dly_src, history * sizeof(float));
  } else {
    std::memset(line, 0, history * sizeof(float));
  }
  for (std::ptrdiff_t done = 0; done < n;) {
    const std::ptrdiff_t chunk = n - done < kFIRChunk ? n - done : kFIRChunk;
    std::memcpy(line + history, src + done, static_cast<std::size_t>(chunk) * sizeof(float));
    for (std::ptrdiff_t p = 0; p < chunk; ++p) dst[done + p] = OneOutput(g, taps, line + p);
    std::memmove(line, line + chunk, history * sizeof(float));
    done += chunk;
  }
  if (dly_dst) std::memmove(dly_dst, line, history * sizeof(float));
  return engStsNoErr;
}

#include "engine/primitives/fir/fir_entries-inl.h"

}  // namespace zal::engine::portable
