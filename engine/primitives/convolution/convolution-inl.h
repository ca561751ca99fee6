// The convolution and resampling kernels of one level: direct summation with several output
// vectors per pass, overlap-add over this level's own real transform, and the stream decimator and
// zero inserter. Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <cstdint>
#include <utility>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/convolution/convolution_plan.h"
#include "engine/primitives/fft/fft_spec.h"
#include "engine/simd/vec-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

// ---- Direct summation --------------------------------------------------------------------------

// Taps taken at once, and outputs per block: a block's inputs (taps - 1 + outputs) stay in L1,
// and blocks that reach past either end of the input are staged with zeros on the stack.
constexpr int kTapChunk = 512;
constexpr int kOutputBlock = 512;
// Output registers per pass: eight hide the multiply-add latency, and every broadcast tap feeds
// eight of them.
constexpr int kPassVectors = 8;

// LoadN and StoreN take fewer lanes than a register holds.
template <class T>
ZAL_INLINE VectorOf<T> LoadLanes(const T* p, int lanes) {
  return lanes == VectorOf<T>::kLanes ? Load(p) : LoadN(p, lanes);
}
template <class T, class V>
ZAL_INLINE void StoreLanes(T* p, V v, int lanes) {
  if (lanes == V::kLanes) {
    Store(p, v);
  } else {
    StoreN(p, v, lanes);
  }
}

// kVectors output vectors from out[0] on, the last with `last_lanes` lanes: each broadcast tap
// feeds every register. x[taps - 1 + t - j] is the input that tap j meets at output t. The
// registers are unrolled by hand: an array of accumulators that a compiler leaves in memory costs
// a store-to-load round trip per multiply-add.
template <int kVectors, bool kAccumulate, class T>
ZAL_INLINE void DirectPass(const T* s, int taps, const T* last, T* out, int last_lanes) {
  using V = VectorOf<T>;
  constexpr int kLanes = V::kLanes;
  auto initial = [&](int v) {
    const int lanes = v == kVectors - 1 ? last_lanes : kLanes;
    return kAccumulate ? LoadLanes(out + v * kLanes, lanes) : Broadcast(T(0));
  };
  V a0 = initial(0);
  V a1 = kVectors > 1 ? initial(1) : a0;
  V a2 = kVectors > 2 ? initial(2) : a0;
  V a3 = kVectors > 3 ? initial(3) : a0;
  V a4 = kVectors > 4 ? initial(4) : a0;
  V a5 = kVectors > 5 ? initial(5) : a0;
  V a6 = kVectors > 6 ? initial(6) : a0;
  V a7 = kVectors > 7 ? initial(7) : a0;
  for (int j = 0; j < taps; ++j) {
    const V tap = Broadcast(s[j]);
    const T* in = last - j;
    a0 = MulAdd(tap, Load(in), a0);
    if constexpr (kVectors > 1) a1 = MulAdd(tap, Load(in + kLanes), a1);
    if constexpr (kVectors > 2) a2 = MulAdd(tap, Load(in + 2 * kLanes), a2);
    if constexpr (kVectors > 3) a3 = MulAdd(tap, Load(in + 3 * kLanes), a3);
    if constexpr (kVectors > 4) a4 = MulAdd(tap, Load(in + 4 * kLanes), a4);
    if constexpr (kVectors > 5) a5 = MulAdd(tap, Load(in + 5 * kLanes), a5);
    if constexpr (kVectors > 6) a6 = MulAdd(tap, Load(in + 6 * kLanes), a6);
    if constexpr (kVectors > 7) a7 = MulAdd(tap, Load(in + 7 * kLanes), a7);
  }
  const V results[8] = {a0, a1, a2, a3, a4, a5, a6, a7};
  for (int v = 0; v < kVectors - 1; ++v) Store(out + v * kLanes, results[v]);
  StoreLanes(out + (kVectors - 1) * kLanes, results[kVectors - 1], last_lanes);
}

// out[t] (+)= sum over j < taps of s[j] * x[taps - 1 + t - j], t < count. x holds taps - 1 + count
// elements, rounded up to whole vectors.
template <bool kAccumulate, class T>
ZAL_INLINE void DirectBlock(const T* s, int taps, const T* x, T* out, int count) {
  constexpr int kLanes = VectorOf<T>::kLanes;
  const T* last = x + taps - 1;
  int t = 0;
  for (; t + kPassVectors * kLanes <= count; t += kPassVectors * kLanes) {
    DirectPass<kPassVectors, kAccumulate>(s, taps, last + t, out + t, kLanes);
  }
  if (t == count) return;
  // At most kPassVectors vectors remain, the last one possibly partial.
  const int vectors = (count - t + kLanes - 1) / kLanes;
  const int last_lanes = count - t - (vectors - 1) * kLanes;
  switch (vectors) {
    case 1:
      return DirectPass<1, kAccumulate>(s, taps, last + t, out + t, last_lanes);
    case 2:
      return DirectPass<2, kAccumulate>(s, taps, last + t, out + t, last_lanes);
    case 3:
      return DirectPass<3, kAccumulate>(s, taps, last + t, out + t, last_lanes);
    case 4:
      return DirectPass<4, kAccumulate>(s, taps, last + t, out + t, last_lanes);
    case 5:
      return DirectPass<5, kAccumulate>(s, taps, last + t, out + t, last_lanes);
    case 6:
      return DirectPass<6, kAccumulate>(s, taps, last + t, out + t, last_lanes);
    case 7:
      return DirectPass<7, kAccumulate>(s, taps, last + t, out + t, last_lanes);
    default:
      return DirectPass<kPassVectors, kAccumulate>(s, taps, last + t, out + t, last_lanes);
  }
}

template <class T>
ZAL_INLINE void Fill(T* dst, T value, long long n) {
  using V = VectorOf<T>;
  constexpr int kLanes = V::kLanes;
  long long i = 0;
  for (; i + kLanes <= n; i += kLanes) Store(dst + i, Broadcast(value));
  if (i < n) StoreN(dst + i, Broadcast(value), static_cast<int>(n - i));
}

template <class T>
ZAL_INLINE void Copy(const T* src, T* dst, long long n) {
  using V = VectorOf<T>;
  constexpr int kLanes = V::kLanes;
  long long i = 0;
  for (; i + 4 * kLanes <= n; i += 4 * kLanes) {
    const V v0 = Load(src + i);
    const V v1 = Load(src + i + kLanes);
    const V v2 = Load(src + i + 2 * kLanes);
    const V v3 = Load(src + i + 3 * kLanes);
    Store(dst + i, v0);
    Store(dst + i + kLanes, v1);
    Store(dst + i + 2 * kLanes, v2);
    Store(dst + i + 3 * kLanes, v3);
  }
  for (; i + kLanes <= n; i += kLanes) Store(dst + i, Load(src + i));
  if (i < n) {
    const int rest = static_cast<int>(n - i);
    StoreN(dst + i, LoadN(src + i, rest), rest);
  }
}

// dst (lenL + m - 1 outputs) = s (m taps) convolved with l, summing directly. Taps beyond one
// chunk accumulate into a cleared destination.
template <class T>
void ConvolveDirect(const T* s, int m, const T* l, int len_l, T* dst) {
  constexpr int kLanes = VectorOf<T>::kLanes;
  alignas(64) T staging[kTapChunk - 1 + kOutputBlock + kLanes];
  const bool accumulate = m > kTapChunk;
  if (accumulate) Fill(dst, T(0), static_cast<long long>(len_l) + m - 1);
  for (int j0 = 0; j0 < m; j0 += kTapChunk) {
    const int taps = m - j0 < kTapChunk ? m - j0 : kTapChunk;
    const long long outputs = static_cast<long long>(len_l) + taps - 1;
    for (long long q0 = 0; q0 < outputs; q0 += kOutputBlock) {
      const int count = static_cast<int>(outputs - q0 < kOutputBlock ? outputs - q0 : kOutputBlock);
      const long long first = q0 - (taps - 1);
      const long long needed = taps - 1 + (count + kLanes - 1) / kLanes * kLanes;
      const T* x = l + first;
      if (first < 0 || first + needed > len_l) {
        const long long from = first < 0 ? 0 : first;
        const long long to = first + needed < len_l ? first + needed : len_l;
        Fill(staging, T(0), needed);
        if (to > from) Copy(l + from, staging + (from - first), to - from);
        x = staging;
      }
      T* out = dst + j0 + q0;
      if (accumulate) {
        DirectBlock<true>(s + j0, taps, x, out, count);
      } else {
        DirectBlock<false>(s + j0, taps, x, out, count);
      }
    }
  }
}

// ---- Overlap-add over the real transform -------------------------------------------------------

inline constexpr unsigned long long kTagMagic = 0x7A616C436F6E7631ULL;
#include "engine/primitives/convolution/convolution_transform-inl.h"

// block[k] *= filter[k] over the packed spectrum's n / 2 + 1 complex bins (the two imaginary
// parts that are zero stay zero).
template <class T>
ZAL_INLINE void MultiplySpectra(T* block, const T* filter, int n) {
  using V = VectorOf<T>;
  constexpr int kLanes = V::kLanes;
  const int scalars = n + 2;
  int i = 0;
  for (; i + 2 * kLanes <= scalars; i += 2 * kLanes) {
    const V p0 = ComplexMultiply(Load(block + i), Load(filter + i));
    const V p1 = ComplexMultiply(Load(block + i + kLanes), Load(filter + i + kLanes));
    Store(block + i, p0);
    Store(block + i + kLanes, p1);
  }
  for (; i < scalars; i += 2) {
    const T re = block[i] * filter[i] - block[i + 1] * filter[i + 1];
    const T im = block[i] * filter[i + 1] + block[i + 1] * filter[i];
    block[i] = re;
    block[i + 1] = im;
  }
}

template <class T>
ZAL_INLINE void AddInto(T* dst, const T* src, int n) {
  using V = VectorOf<T>;
  constexpr int kLanes = V::kLanes;
  int i = 0;
  for (; i + kLanes <= n; i += kLanes) Store(dst + i, Load(dst + i) + Load(src + i));
  if (i < n) StoreN(dst + i, LoadN(dst + i, n - i) + LoadN(src + i, n - i), n - i);
}

// The prepared tables as the last call with this work buffer left them, or freshly prepared.
template <class T>
EngStatus PreparedSpec(int order, int spec_bytes, unsigned char* base, long long spec_offset,
                       const FFTSpec** spec) {
  auto* tag = reinterpret_cast<ConvolutionTag*>(base);
  unsigned char* block = base + spec_offset;
  if (tag->magic == kTagMagic && tag->level == ZAL_LEVEL_INDEX &&
      tag->element_bytes == static_cast<int>(sizeof(T)) && tag->order == order &&
      tag->spec_bytes == spec_bytes && tag->checksum == ConvolutionChecksum(block, spec_bytes)) {
    *spec = reinterpret_cast<const FFTSpec*>(block);
    return engStsNoErr;
  }
  tag->magic = 0;
  FFTSpec* prepared = nullptr;
  if (const EngStatus status = RealPrepare(T(0), &prepared, order, block)) return status;
  *tag = ConvolutionTag{kTagMagic, ZAL_LEVEL_INDEX, static_cast<int>(sizeof(T)),
                        order,     spec_bytes,      ConvolutionChecksum(block, spec_bytes)};
  *spec = prepared;
  return engStsNoErr;
}

// dst = s (m taps) convolved with l, block by block: each block of plan.step inputs of l, padded
// to the transform length, times the spectrum of s, adds its m - 1 trailing outputs to the next
// block's leading ones.
template <class T>
EngStatus ConvolveTransform(const T* s, int m, const T* l, int len_l, T* dst,
                            const ConvolutionPlan& plan, unsigned char* work) {
  ConvolutionLayout layout;
  int spec_bytes;
  if (!LayOut<T>(plan.order, &layout, &spec_bytes)) return engStsFftOrderErr;
  const auto address = reinterpret_cast<std::uintptr_t>(work);
  unsigned char* base = work + ((64 - address % 64) % 64);
  const FFTSpec* spec;
  if (const EngStatus status = PreparedSpec<T>(plan.order, spec_bytes, base, layout.spec, &spec)) {
    return status;
  }
  unsigned char* scratch = base + layout.scratch;
  T* filter = reinterpret_cast<T*>(base + layout.filter);
  T* block = reinterpret_cast<T*>(base + layout.block);
  const int n = 1 << plan.order;
  Copy(s, filter, m);
  Fill(filter + m, T(0), n - m);
  Forward(filter, spec, scratch);
  for (long long p = 0; p < len_l; p += plan.step) {
    const int count = static_cast<int>(len_l - p < plan.step ? len_l - p : plan.step);
    Copy(l + p, block, count);
    Fill(block + count, T(0), n - count);
    Forward(block, spec, scratch);
    MultiplySpectra(block, filter, n);
    Inverse(block, spec, scratch);
    const int overlap = p > 0 ? m - 1 : 0;
    AddInto(dst + p, block, overlap);
    Copy(block + overlap, dst + p + overlap, count + m - 1 - overlap);
  }
  return engStsNoErr;
}

// Bytes of work the plan needs for elements of type T: none for direct summation.
template <class T>
long long WorkBytes(const ConvolutionPlan& plan) {
  if (plan.method == kConvolutionDirect) return 0;
  ConvolutionLayout layout;
  int spec_bytes;
  return LayOut<T>(plan.order, &layout, &spec_bytes) ? layout.bytes : -1;
}

// ---- Resampling --------------------------------------------------------------------------------

template <class T>
ZAL_INLINE EngStatus CheckResampling(const T* src, int len, const T* dst, const int* dst_len,
                                     int factor, const int* phase) {
  if (!src || !dst || !dst_len || !phase) return engStsNullPtrErr;
  if (len <= 0) return engStsSizeErr;
  if (factor <= 0) return engStsSampleFactorErr;
  return *phase < 0 || *phase >= factor ? engStsSamplePhaseErr : engStsNoErr;
}

#include "engine/primitives/convolution/resampling-inl.h"

}  // namespace

#include "engine/primitives/convolution/convolution_entries-inl.h"

}  // namespace zal::engine::ZAL_LEVEL

ZAL_CONVOLUTION_PRIMITIVES(ZAL_CHECK_SHAPE)
