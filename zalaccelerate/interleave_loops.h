// The interleaving loops behind utility::Interleave and utility::Deinterleave. They are the
// library's own (no engine entry) and built with the wrappers at the x86-64 baseline, whose SSE2
// is the widest vector unit every processor has; elsewhere the same loops run one element at a
// time. Internal: not installed.
#pragma once

#include <cstddef>

#if defined(__SSE2__) || defined(_M_X64)
#define ZAL_INTERLEAVE_SSE2 1
#include <emmintrin.h>
#else
#define ZAL_INTERLEAVE_SSE2 0
#endif

namespace zalaccelerate::interleave {

#if ZAL_INTERLEAVE_SSE2
// One 128-bit register of elements, and the few rearrangements the loops need.
template <class T>
struct Lanes;

template <>
struct Lanes<float> {
  using V = __m128;
  static constexpr std::size_t kCount = 4;
  static V Load(const float* p) { return _mm_loadu_ps(p); }
  static void Store(float* p, V v) { _mm_storeu_ps(p, v); }
  // Lanes of a and b alternating, from their lower or upper halves.
  static V Low(V a, V b) { return _mm_unpacklo_ps(a, b); }
  static V High(V a, V b) { return _mm_unpackhi_ps(a, b); }
  // The even or odd lanes of a then b.
  static V Evens(V a, V b) { return _mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)); }
  static V Odds(V a, V b) { return _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1)); }
  // Rows become columns.
  static void Transpose(V (&r)[kCount]) {
    const V t0 = Low(r[0], r[1]);
    const V t1 = Low(r[2], r[3]);
    const V t2 = High(r[0], r[1]);
    const V t3 = High(r[2], r[3]);
    r[0] = _mm_movelh_ps(t0, t1);
    r[1] = _mm_movehl_ps(t1, t0);
    r[2] = _mm_movelh_ps(t2, t3);
    r[3] = _mm_movehl_ps(t3, t2);
  }
};

template <>
struct Lanes<double> {
  using V = __m128d;
  static constexpr std::size_t kCount = 2;
  static V Load(const double* p) { return _mm_loadu_pd(p); }
  static void Store(double* p, V v) { _mm_storeu_pd(p, v); }
  static V Low(V a, V b) { return _mm_unpacklo_pd(a, b); }
  static V High(V a, V b) { return _mm_unpackhi_pd(a, b); }
  static V Evens(V a, V b) { return _mm_unpacklo_pd(a, b); }
  static V Odds(V a, V b) { return _mm_unpackhi_pd(a, b); }
  static void Transpose(V (&r)[kCount]) {
    const V t0 = Low(r[0], r[1]);
    r[1] = High(r[0], r[1]);
    r[0] = t0;
  }
};

// Four frames per step, as registers of both channels.
template <class T>
void InterleaveTwo(std::size_t frames, const T* a, const T* b, T* dst) {
  using L = Lanes<T>;
  std::size_t f = 0;
  for (; f + 4 <= frames; f += 4) {
    for (std::size_t k = 0; k < 4; k += L::kCount) {
      const typename L::V x = L::Load(a + f + k);
      const typename L::V y = L::Load(b + f + k);
      L::Store(dst + 2 * (f + k), L::Low(x, y));
      L::Store(dst + 2 * (f + k) + L::kCount, L::High(x, y));
    }
  }
  for (; f < frames; ++f) {
    dst[2 * f] = a[f];
    dst[2 * f + 1] = b[f];
  }
}

template <class T>
void DeinterleaveTwo(std::size_t frames, const T* src, T* a, T* b) {
  using L = Lanes<T>;
  std::size_t f = 0;
  for (; f + 4 <= frames; f += 4) {
    for (std::size_t k = 0; k < 4; k += L::kCount) {
      const typename L::V x = L::Load(src + 2 * (f + k));
      const typename L::V y = L::Load(src + 2 * (f + k) + L::kCount);
      L::Store(a + f + k, L::Evens(x, y));
      L::Store(b + f + k, L::Odds(x, y));
    }
  }
  for (; f < frames; ++f) {
    a[f] = src[2 * f];
    b[f] = src[2 * f + 1];
  }
}

// Blocks of kCount frames, each a tile of kCount channels at a time, transposed in registers;
// channels left over from the tiles go one by one. The source is read in one pass, block after
// block; the channel pointers once per block.
template <class T>
void DeinterleaveMany(std::size_t channels, std::size_t frames, const T* src, T* const* dst) {
  using L = Lanes<T>;
  constexpr std::size_t kN = L::kCount;
  std::size_t f = 0;
  for (; f + kN <= frames; f += kN) {
    const T* block = src + f * channels;
    std::size_t c = 0;
    for (; c + kN <= channels; c += kN) {
      typename L::V r[kN];
      for (std::size_t k = 0; k < kN; ++k) r[k] = L::Load(block + k * channels + c);
      L::Transpose(r);
      for (std::size_t k = 0; k < kN; ++k) L::Store(dst[c + k] + f, r[k]);
    }
    for (; c < channels; ++c) {
      T* out = dst[c] + f;
      for (std::size_t k = 0; k < kN; ++k) out[k] = block[k * channels + c];
    }
  }
  for (; f < frames; ++f) {
    for (std::size_t c = 0; c < channels; ++c) dst[c][f] = src[f * channels + c];
  }
}

// The mirror image: the destination is written in one pass, block after block.
template <class T>
void InterleaveMany(std::size_t channels, std::size_t frames, const T* const* src, T* dst) {
  using L = Lanes<T>;
  constexpr std::size_t kN = L::kCount;
  std::size_t f = 0;
  for (; f + kN <= frames; f += kN) {
    T* block = dst + f * channels;
    std::size_t c = 0;
    for (; c + kN <= channels; c += kN) {
      typename L::V r[kN];
      for (std::size_t k = 0; k < kN; ++k) r[k] = L::Load(src[c + k] + f);
      L::Transpose(r);
      for (std::size_t k = 0; k < kN; ++k) L::Store(block + k * channels + c, r[k]);
    }
    for (; c < channels; ++c) {
      const T* in = src[c] + f;
      for (std::size_t k = 0; k < kN; ++k) block[k * channels + c] = in[k];
    }
  }
  for (; f < frames; ++f) {
    for (std::size_t c = 0; c < channels; ++c) dst[f * channels + c] = src[c][f];
  }
}
#else
template <class T>
void InterleaveTwo(std::size_t frames, const T* a, const T* b, T* dst) {
  for (std::size_t f = 0; f < frames; ++f) {
    dst[2 * f] = a[f];
    dst[2 * f + 1] = b[f];
  }
}
template <class T>
void DeinterleaveTwo(std::size_t frames, const T* src, T* a, T* b) {
  for (std::size_t f = 0; f < frames; ++f) {
    a[f] = src[2 * f];
    b[f] = src[2 * f + 1];
  }
}
template <class T>
void DeinterleaveMany(std::size_t channels, std::size_t frames, const T* src, T* const* dst) {
  for (std::size_t f = 0; f < frames; ++f) {
    for (std::size_t c = 0; c < channels; ++c) dst[c][f] = src[f * channels + c];
  }
}
template <class T>
void InterleaveMany(std::size_t channels, std::size_t frames, const T* const* src, T* dst) {
  for (std::size_t f = 0; f < frames; ++f) {
    for (std::size_t c = 0; c < channels; ++c) dst[f * channels + c] = src[c][f];
  }
}
#endif

}  // namespace zalaccelerate::interleave
