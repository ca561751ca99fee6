#include <climits>
#include <cstddef>

#include "zalaccelerate/interleave_loops.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {
namespace {

// Counts the engine would refuse: 0, and 2^31 and more.
bool Refused(unsigned int count) {
  return count == 0 || count > INT_MAX;
}

template <class Pointer>
bool AnyNull(unsigned int channels, const Pointer* pointers) {
  for (unsigned int c = 0; c < channels; ++c) {
    if (!pointers[c]) return true;
  }
  return false;
}

template <class T>
void InterleaveTwo(unsigned int len, const T* a, const T* b, T* dst) {
  if (Refused(len) || !a || !b || !dst) return;
  interleave::InterleaveTwo<T>(len, a, b, dst);
}

template <class T>
void DeinterleaveTwo(unsigned int len, const T* src, T* a, T* b) {
  if (Refused(len) || !src || !a || !b) return;
  interleave::DeinterleaveTwo<T>(len, src, a, b);
}

// Two channels take the two-channel loop, whose registers hold whole frames.
template <class T>
void InterleaveMany(unsigned int channels, unsigned int frames, const T* const* src, T* dst) {
  if (Refused(frames) || Refused(channels) || !src || !dst || AnyNull(channels, src)) return;
  if (channels == 2) return interleave::InterleaveTwo<T>(frames, src[0], src[1], dst);
  interleave::InterleaveMany<T>(channels, frames, src, dst);
}

template <class T>
void DeinterleaveMany(unsigned int channels, unsigned int frames, const T* src, T* const* dst) {
  if (Refused(frames) || Refused(channels) || !src || !dst || AnyNull(channels, dst)) return;
  if (channels == 2) return interleave::DeinterleaveTwo<T>(frames, src, dst[0], dst[1]);
  interleave::DeinterleaveMany<T>(channels, frames, src, dst);
}

}  // namespace

void Interleave(unsigned int len, const float* a, const float* b, float* dst) {
  InterleaveTwo(len, a, b, dst);
}
void Interleave(unsigned int len, const double* a, const double* b, double* dst) {
  InterleaveTwo(len, a, b, dst);
}
void Deinterleave(unsigned int len, const float* src, float* a, float* b) {
  DeinterleaveTwo(len, src, a, b);
}
void Deinterleave(unsigned int len, const double* src, double* a, double* b) {
  DeinterleaveTwo(len, src, a, b);
}
void Interleave(unsigned int channels, unsigned int frames, const float* const* src, float* dst) {
  InterleaveMany(channels, frames, src, dst);
}
void Interleave(unsigned int channels, unsigned int frames, const double* const* src, double* dst) {
  InterleaveMany(channels, frames, src, dst);
}
void Deinterleave(unsigned int channels, unsigned int frames, const float* src, float* const* dst) {
  DeinterleaveMany(channels, frames, src, dst);
}
void Deinterleave(unsigned int channels, unsigned int frames, const double* src,
                  double* const* dst) {
  DeinterleaveMany(channels, frames, src, dst);
}

}  // namespace zalaccelerate::utility
