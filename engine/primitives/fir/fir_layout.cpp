// The sizes of FIR prepared blocks and work buffers: baseline code, shared by every level.
#include <cstdint>

#include "engine/primitives/fir/fir_spec.h"

namespace zal::engine {
namespace {

// The aligned allocator takes at most this many bytes (its 72 bytes of slack included).
constexpr std::int64_t kMaxBlock = 0x7FFFFFFF - 72;

std::int64_t RoundToLine(std::int64_t floats) {
  return (floats + kFIRMaxLanes - 1) / kFIRMaxLanes * kFIRMaxLanes;
}

}  // namespace

EngStatus FIRSizes(int taps_len, int* spec_size, int* work_size) {
  if (!spec_size || !work_size) return engStsNullPtrErr;
  if (taps_len <= 0) return engStsSizeErr;
  const std::int64_t taps = taps_len;
  const std::int64_t spec_floats = kFIRHeaderFloats + RoundToLine(taps) +
                                   (taps + kFIRMaxLanes - 1 + 3) / 4 * 4 * kFIRMaxLanes +
                                   (2 * kFIRMaxLanes + 1) * kFIRMaxLanes;
  const std::int64_t work_floats = taps - 1 + kFIRChunk + kFIRLineSlack;
  if (4 * spec_floats > kMaxBlock || 4 * work_floats > kMaxBlock) return engStsSizeErr;
  *spec_size = static_cast<int>(4 * spec_floats);
  *work_size = static_cast<int>(4 * work_floats);
  return engStsNoErr;
}

EngStatus LowpassBufferBytes(int taps_len, int* buffer_size) {
  if (!buffer_size) return engStsNullPtrErr;
  if (taps_len <= 0) return engStsSizeErr;
  const std::int64_t bytes = 8 * static_cast<std::int64_t>(taps_len);
  if (bytes > kMaxBlock) return engStsSizeErr;
  *buffer_size = static_cast<int>(bytes);
  return engStsNoErr;
}

}  // namespace zal::engine
