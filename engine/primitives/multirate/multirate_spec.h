// The prepared polyphase filter the preparation primitives write into a prepared block. Plain data,
// laid out the same by every level and the portable variant, so any of them runs any spec of its
// element type.
#pragma once

namespace zal::engine {

// The engine's element codes for the size query.
inline constexpr int kMRFDataTypeF32 = 13;
inline constexpr int kMRFDataTypeF64 = 19;

// The taps are regrouped by phase: phase p holds taps[p], taps[p + up], taps[p + 2 up]...
// reversed, so that a dot product with the inputs in time order gives the output, and padded with
// leading zeros to `row_length` elements (whole cache lines, a whole number of registers at every
// level). Output r of each period (up outputs from down inputs) uses row rows[r] / row_length and
// the inputs up to bases[r] counted from the period's first input (-1: the one before).
struct MRFSpec {
  int element_size;
  int up_factor;
  int down_factor;
  int up_phase;
  int down_phase;
  int taps_len;
  // Taps of the longest phase: also the length of the delay line.
  int phase_taps;
  int row_length;
  // Byte offsets from the start of this block: the rows, then the two int tables of up_factor
  // entries.
  int bank_offset;
  int rows_offset;
  int bases_offset;
};

inline constexpr int kMRFSpecHeaderBytes = (sizeof(MRFSpec) + 63) / 64 * 64;

}  // namespace zal::engine
