// The conversion benchmark: what every contender implements and the buffers it gets. Each
// contender lives in its own translation unit, built with its own flags, and exposes one table
// of kernels; the harness allocates, fills, times and counts.
#pragma once

#include <array>

namespace zal::bench::conversion {

enum Member {
  kS16ToF32,
  kF32ToS16,
  kS32ToF32,
  kF32ToS32,
  kS24ToF32,
  kF32ToS24Truncate,
  kF32ToS24Round,
  kF16ToF32,
  kF32ToF16,
  kF32ToF64,
  kF64ToF32,
  kDeinterleaveS16x2,
  kDeinterleaveS24x6,
  // int24 to float without a scale: the engine's conversion alone.
  kS24ToF32Unscaled,
  kMemberCount,
};

// n samples: src holds n source elements (interleaved frames for the deinterleaving members),
// dst n destination elements, planar the channels' arrays of n / channels floats each.
struct Buffers {
  unsigned n;
  const void* src;
  void* dst;
  float* const* planar;
};

// One call over the buffers; null where the contender lacks the member.
using Kernel = void (*)(const Buffers& buffers);

struct Contender {
  const char* name;   // in benchmark names: cvt.<member>/<name>/...
  const char* about;  // how it is built, for the report's context
  std::array<Kernel, kMemberCount> kernels;
};

// Full-scale factors: 16-bit samples map to +-1.0 with 2^-15, 24-bit with 2^-23, 32-bit with 2^-31.
inline constexpr int kScale16 = 15;
inline constexpr int kScale24 = 23;
inline constexpr int kScale32 = 31;

Contender OursContender();
// Convert, then a plain deinterleaving loop: the two passes the fused call replaces.
Contender TwoPassContender();
// Loops as a user writes them, with the build's flags and with -O3 -march=native.
Contender PlainLoopsContender();
Contender PlainLoopsNativeContender();
Contender VolkContender();

}  // namespace zal::bench::conversion
