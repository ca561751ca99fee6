// The recursive filter one sample at a time: the levels' algorithm with a one-lane vector and no
// fused multiply-add.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <xmmintrin.h>

#include <cstddef>
#include <type_traits>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/iir/iir_spec.h"
#include "engine/simd/vec_common-inl.h"

namespace zal::engine::portable {
namespace {

// Distinct from every level's tag: a portable spec runs only here.
constexpr int kSpecLevel = -1;

template <class T>
struct Lane {
  T raw;
  static constexpr int kLanes = 1;
};

template <class T>
ZAL_INLINE Lane<T> Load(const T* p) {
  return {*p};
}
template <class T>
ZAL_INLINE void Store(T* p, Lane<T> v) {
  *p = v.raw;
}
template <class T>
ZAL_INLINE Lane<T> Broadcast(T x) {
  return {x};
}
template <class T>
ZAL_INLINE Lane<T> operator+(Lane<T> a, Lane<T> b) {
  return {a.raw + b.raw};
}
template <class T>
ZAL_INLINE Lane<T> operator*(Lane<T> a, Lane<T> b) {
  return {a.raw * b.raw};
}
template <class T>
ZAL_INLINE Lane<T> MulAdd(Lane<T> a, Lane<T> b, Lane<T> c) {
  return {a.raw * b.raw + c.raw};
}
template <class T>
ZAL_INLINE T FoldHalves(Lane<T> v) {
  return v.raw;
}
template <class T>
ZAL_INLINE bool HasNonFinite(Lane<T> v) {
  return v.raw != v.raw;
}

template <class T>
using IIRVector = Lane<T>;

#include "engine/primitives/iir/iir_block-inl.h"
#include "engine/primitives/iir/iir_entries-inl.h"

}  // namespace

ZAL_IIR_ALL_ENTRIES

}  // namespace zal::engine::portable

ZAL_IIR_PRIMITIVES(ZAL_CHECK_SHAPE)
