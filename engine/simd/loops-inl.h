// Elementwise loops: they own unrolling, tails and streaming stores, so that a kernel is only its
// per-vector operation.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/core/streaming.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

// The vector of elements of type T.
template <class T>
using VectorOf = decltype(Load(static_cast<const T*>(nullptr)));

// Four registers per iteration keep the load and arithmetic ports busy without spilling.
constexpr std::ptrdiff_t kUnroll = 4;

// An op that reports about single elements (the math kernels' error hook) declares
// kTakesIndex and takes the index of the vector's first element ahead of the vectors. The loops
// pass it, so the index stays right whatever partial vectors a loop makes at its head or tail.
template <class Op, class... Vectors>
ZAL_INLINE auto Apply(Op op, std::ptrdiff_t first, Vectors... v) {
  if constexpr (requires { requires Op::kTakesIndex; }) {
    return op(first, v...);
  } else {
    return op(v...);
  }
}

// Results as the op wants them stored: an op marked kDefaultNaNs (WithDefaultNaN) has its NaN
// results made the default NaN, a whole unrolled step at a time where there is one.
template <class Op, class... Vectors>
ZAL_INLINE void Finish(Op, Vectors&... r) {
  if constexpr (requires { requires Op::kDefaultNaNs; }) DefaultNaNs(r...);
}

// dst[i] = op(src[i]...) for begin <= i < end, with ordinary stores. dst may be one of the
// sources exactly: every element is read before it is written.
template <class T, class Op, class... Sources>
ZAL_INLINE void MapRange(Op op, T* dst, std::ptrdiff_t begin, std::ptrdiff_t end, Sources... src) {
  constexpr std::ptrdiff_t kLanes = VectorOf<T>::kLanes;
  std::ptrdiff_t i = begin;
  for (; i + kUnroll * kLanes <= end; i += kUnroll * kLanes) {
    auto r0 = Apply(op, i, Load(src + i)...);
    auto r1 = Apply(op, i + kLanes, Load(src + i + kLanes)...);
    auto r2 = Apply(op, i + 2 * kLanes, Load(src + i + 2 * kLanes)...);
    auto r3 = Apply(op, i + 3 * kLanes, Load(src + i + 3 * kLanes)...);
    Finish(op, r0, r1, r2, r3);
    Store(dst + i, r0);
    Store(dst + i + kLanes, r1);
    Store(dst + i + 2 * kLanes, r2);
    Store(dst + i + 3 * kLanes, r3);
  }
  for (; i + kLanes <= end; i += kLanes) {
    auto r = Apply(op, i, Load(src + i)...);
    Finish(op, r);
    Store(dst + i, r);
  }
  if (i < end) {
    const int rest = static_cast<int>(end - i);
    auto r = Apply(op, i, LoadN(src + i, rest)...);
    Finish(op, r);
    StoreN(dst + i, r, rest);
  }
}

// Whether n elements are enough to consider streaming: a comparison with a constant, so that
// small vectors never look the threshold up. Kernels keep the larger ones out of line, where the
// lookup's call costs the small ones no stack frame.
template <class T>
ZAL_INLINE bool MayStream(std::ptrdiff_t n) {
  return static_cast<std::int64_t>(n) * static_cast<std::int64_t>(sizeof(T)) >=
         kStreamingStoreMinBytes;
}

// Streaming a destination that does not fit in cache saves reading it for ownership and keeps
// the caller's cached data. Only for a destination no source aliases, and only once it is
// aligned to the register, which needs an element-aligned pointer.
template <class T, class... Sources>
ZAL_INLINE bool ShouldStream(const T* dst, std::ptrdiff_t n, Sources... src) {
  return ((dst != src) && ...) && reinterpret_cast<std::uintptr_t>(dst) % sizeof(T) == 0 &&
         static_cast<std::int64_t>(n) * static_cast<std::int64_t>(sizeof(T)) >=
             StreamingStoreThresholdBytes();
}

// dst[i] = op(src[i]...) for 0 <= i < n, streamed where that pays.
template <class T, class Op, class... Sources>
ZAL_INLINE void MapStreaming(Op op, T* dst, std::ptrdiff_t n, Sources... src) {
  using V = VectorOf<T>;
  constexpr std::ptrdiff_t kLanes = V::kLanes;
  if (!ShouldStream(dst, n, src...)) {
    MapRange(op, dst, 0, n, src...);
    return;
  }
  const std::uintptr_t misalignment = reinterpret_cast<std::uintptr_t>(dst) % sizeof(V);
  const std::ptrdiff_t head = misalignment ? (sizeof(V) - misalignment) / sizeof(T) : 0;
  MapRange(op, dst, 0, head, src...);
  std::ptrdiff_t i = head;
  for (; i + kUnroll * kLanes <= n; i += kUnroll * kLanes) {
    auto r0 = Apply(op, i, Load(src + i)...);
    auto r1 = Apply(op, i + kLanes, Load(src + i + kLanes)...);
    auto r2 = Apply(op, i + 2 * kLanes, Load(src + i + 2 * kLanes)...);
    auto r3 = Apply(op, i + 3 * kLanes, Load(src + i + 3 * kLanes)...);
    Finish(op, r0, r1, r2, r3);
    Stream(dst + i, r0);
    Stream(dst + i + kLanes, r1);
    Stream(dst + i + 2 * kLanes, r2);
    Stream(dst + i + 3 * kLanes, r3);
  }
  MapRange(op, dst, i, n, src...);
  StreamFence();
}

// The loop of a kernel: MapRange for small vectors, MapStreaming for large ones.
template <bool kLarge, class T, class Op, class... Sources>
ZAL_INLINE void Map(Op op, T* dst, std::ptrdiff_t n, Sources... src) {
  if constexpr (kLarge) {
    MapStreaming(op, dst, n, src...);
  } else {
    MapRange(op, dst, 0, n, src...);
  }
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
