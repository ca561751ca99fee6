// The layout of a prepared FIR filter, shared by every level and the wrappers. The block starts
// with this header; the tables follow at the float offsets it records, each on a 64-byte line.
#pragma once

#include <cstdint>

#include "zalaccelerate/engine_status.h"

namespace zal::engine {

// The engine's data-type code of 32-bit float, the only type its FIR takes.
inline constexpr int kFIRDataTypeF32 = 13;
// Filtering algorithms: the direct sum is the only one offered.
inline constexpr int kFIRAlgorithmDirect = 0;
// Outputs per pass through the work buffer (history, then a chunk of input).
inline constexpr int kFIRChunk = 2048;
// Zeros after the line's input, which the last rows of a register of outputs read.
inline constexpr int kFIRLineSlack = 4;
// The widest register any level lays its tables out for, in floats.
inline constexpr int kFIRMaxLanes = 16;
// The header takes one 64-byte line.
inline constexpr int kFIRHeaderFloats = 16;

struct FIRSpecHeader {
  std::int32_t lanes;  // register width the tables were laid out for: a spec runs only there
  std::int32_t taps_len;
  std::int32_t reversed;    // g[m] = h[taps_len - 1 - m]
  std::int32_t table;       // taps_len + lanes - 1 registers, rounded up to a multiple of 4:
                            // lane i of register j is g[j - i] (0 outside the taps)
  std::int32_t front_mask;  // lanes registers: register k keeps lanes 0 .. k
  std::int32_t back_mask;   // lanes + 1 registers: register t keeps lanes t .. lanes - 1
};

// Bytes of a prepared block and of a work buffer for taps_len taps (any level); engStsSizeErr when
// they leave the range of the aligned allocator.
EngStatus FIRSizes(int taps_len, int* spec_size, int* work_size);

// Bytes of the lowpass design's scratch buffer for taps_len taps.
EngStatus LowpassBufferBytes(int taps_len, int* buffer_size);

// The windowed-sinc lowpass design, computed in baseline code and shared by every level.
EngStatus DesignLowpass(double rfreq, double* taps, int taps_len, int window, int normalize,
                        unsigned char* buffer);

}  // namespace zal::engine
