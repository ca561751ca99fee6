// The data-movement benchmark's plain loops: what a user writes in place of the library, built
// in their own translation unit with -O3 -march=native.
#pragma once

#include <cstdint>

namespace zal::bench {

// A packed 24-bit sample as a user would declare it.
struct Sample24 {
  unsigned char bytes[3];
};

void PlainCopy(unsigned n, const float* src, float* dst);
void PlainSet(unsigned n, float* dst, float value);
void PlainSwapBytes(unsigned n, const std::uint16_t* src, std::uint16_t* dst);
void PlainSwapBytes(unsigned n, const std::uint32_t* src, std::uint32_t* dst);
void PlainSwapBytes(unsigned n, const std::uint64_t* src, std::uint64_t* dst);
void PlainSwapBytes(unsigned n, const Sample24* src, Sample24* dst);
void PlainInterleave(unsigned n, const float* a, const float* b, float* dst);
void PlainDeinterleave(unsigned n, const float* src, float* a, float* b);
// Frames outer, channels inner, as the library defines the N-channel forms.
void PlainInterleave(unsigned channels, unsigned frames, const float* const* src, float* dst);
void PlainDeinterleave(unsigned channels, unsigned frames, const float* src, float* const* dst);

// Fills written the other ways a fill past the caches can be: streaming stores of the widest
// register this build has, fenced once, and the string store (rep stos of 32-bit words).
void StreamedSet(unsigned n, float* dst, float value);
void StringSet(unsigned n, float* dst, float value);

}  // namespace zal::bench
