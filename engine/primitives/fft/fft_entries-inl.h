// The transform primitives of every kind: size query, preparation, forward and inverse. Included
// inside a level namespace's anonymous namespace after fft_core-inl.h; the includer defines
// kSpecLevel (the tag a spec carries, so that no other level runs it) and WithLanes(spec, body),
// which calls body with the vector type the spec was planned for.

#include "engine/primitives/fft/fft_short-inl.h"

template <class T>
constexpr bool IsRealKind(FFTKind kind) {
  return kind == FFTKind::kRealF32 || kind == FFTKind::kRealF64;
}

// The spec's header fields and table size for one kind and order; false for an order or flag the
// engine does not offer.
template <class T>
EngStatus Plan(FFTKind kind, int order, int flag, FFTSpec& spec, int* table_scalars) {
  if (order < 0 || order > kFFTMaxOrder) return engStsFftOrderErr;
  if (flag != kFFTDivInvByN) return engStsFftFlagErr;
  spec = FFTSpec{};
  spec.level = kSpecLevel;
  spec.kind = static_cast<int>(kind);
  spec.order = order;
  *table_scalars = 0;
  const int core_order = IsRealKind<T>(kind) ? order - 1 : order;
  // Lengths 1 (and 2 real) are computed directly: no core, core_length 0.
  if (core_order < 1) return engStsNoErr;
  constexpr int kLanes = FFTVector<T>::kLanes;
  const int lanes = (1 << core_order) >= kLanes ? kLanes : 1;
  PlanCore<T>(spec, core_order, lanes, table_scalars);
  if (IsRealKind<T>(kind)) *table_scalars += 2 * (spec.core_length / 2 + 1);
  const bool in_registers = lanes == kLanes && spec.rows <= kShortMaxRows;
  spec.short_rows = in_registers ? spec.rows : 0;
  spec.work_bytes = in_registers ? 0 : 4 * spec.core_length * static_cast<int>(sizeof(T));
  return engStsNoErr;
}

template <class T>
EngStatus GetSizes(FFTKind kind, int order, int flag, int* spec_size, int* init_size,
                   int* work_size) {
  if (!spec_size || !init_size || !work_size) return engStsNullPtrErr;
  FFTSpec spec;
  int scalars;
  if (const EngStatus status = Plan<T>(kind, order, flag, spec, &scalars)) return status;
  *spec_size = 64 + kFFTSpecHeaderBytes + scalars * static_cast<int>(sizeof(T));
  *init_size = 0;
  *work_size = spec.work_bytes;
  return engStsNoErr;
}

template <class T>
EngStatus Prepare(FFTKind kind, FFTSpec** handle, int order, int flag, unsigned char* block) {
  if (!handle || !block) return engStsNullPtrErr;
  FFTSpec plan;
  int scalars;
  if (const EngStatus status = Plan<T>(kind, order, flag, plan, &scalars)) return status;
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  auto* spec = reinterpret_cast<FFTSpec*>((address + 63) & ~static_cast<std::uintptr_t>(63));
  *spec = plan;
  T* tables = reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(spec) + kFFTSpecHeaderBytes);
  if (spec->core_length > 0) FillCoreTables<T>(*spec, tables);
  if (IsRealKind<T>(kind) && spec->core_length > 0) {
    const int quarter = spec->core_length / 2;
    T* roots_re = tables + spec->real_twiddles;
    T* roots_im = roots_re + quarter + 1;
    for (int k = 0; k <= quarter; ++k) {
      FFTUnitRoot(k, 2LL * spec->core_length, roots_re + k, roots_im + k);
    }
  }
  *handle = spec;
  return engStsNoErr;
}

// Whether the core of this kind and order is shorter than lanes^2 points (and not direct), and
// runs faster at a level with narrower registers. Float cores of 128 points are the exception:
// their 8 rows of 16 lanes stay in the 32 registers, where 16 rows of 8 spill.
template <class T>
constexpr bool IsShortCore(FFTKind kind, int order) {
  if (order < 0 || order > kFFTMaxOrder) return false;
  const int core_order = IsRealKind<T>(kind) ? order - 1 : order;
  constexpr int kLanes = FFTVector<T>::kLanes;
  constexpr int kOwnFrom = sizeof(T) == 4 ? 128 : kLanes * kLanes;
  return core_order >= 1 && (1 << core_order) < kOwnFrom;
}

// Whether the core of this kind and order is a float one of at most 16 points (and not direct).
template <class T>
constexpr bool IsTinyFloatCore(FFTKind kind, int order) {
  if (order < 0 || order > kFFTMaxOrder) return false;
  const int core_order = IsRealKind<T>(kind) ? order - 1 : order;
  return sizeof(T) == 4 && core_order >= 1 && core_order <= 4;
}

// Arguments of a transform, checked before any memory is touched.
template <class... Pointers>
ZAL_INLINE EngStatus CheckTransform(FFTKind kind, const FFTSpec* spec, const unsigned char* work,
                                    const Pointers*... pointers) {
  if (!spec || !(pointers && ...)) return engStsNullPtrErr;
  if (spec->level != kSpecLevel || spec->kind != static_cast<int>(kind)) {
    return engStsContextMatchErr;
  }
  return spec->work_bytes > 0 && !work ? engStsNullPtrErr : engStsNoErr;
}

template <class T>
ZAL_INLINE const T* RealTables(const FFTSpec& spec) {
  return reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(&spec) +
                                    kFFTSpecHeaderBytes) +
         spec.real_twiddles;
}

template <bool kInverse, class T>
EngStatus ComplexTransform(FFTKind kind, const T* src, T* dst, const FFTSpec* spec,
                           unsigned char* work) {
  if (const EngStatus status = CheckTransform(kind, spec, work, src, dst)) return status;
  if (spec->core_length == 0) {
    dst[0] = src[0];
    dst[1] = src[1];
    return engStsNoErr;
  }
  const T scale = T(1) / static_cast<T>(spec->core_length);
  if (spec->short_rows > 0) {
    using V = FFTVector<T>;
    WithShortRows(spec->short_rows, [&](auto rows) {
      ShortCore<decltype(rows)::value, kInverse, V>(*spec, PairsIn<V, T, kInverse>{src},
                                                    PairsOut<V, T, kInverse>{dst}, scale);
    });
    return engStsNoErr;
  }
  T* buffers = reinterpret_cast<T*>(work);
  WithLanes<T>(*spec, [&](auto lanes) {
    using V = decltype(lanes);
    RunCore<kInverse, V>(*spec, PairsIn<V, T, kInverse>{src}, PairsOut<V, T, kInverse>{dst},
                         buffers, scale);
  });
  return engStsNoErr;
}

template <bool kInverse, class T>
EngStatus SplitTransform(FFTKind kind, const T* src_re, const T* src_im, T* dst_re, T* dst_im,
                         const FFTSpec* spec, unsigned char* work) {
  if (const EngStatus status = CheckTransform(kind, spec, work, src_re, src_im, dst_re, dst_im)) {
    return status;
  }
  if (spec->core_length == 0) {
    dst_re[0] = src_re[0];
    dst_im[0] = src_im[0];
    return engStsNoErr;
  }
  const T scale = T(1) / static_cast<T>(spec->core_length);
  if (spec->short_rows > 0) {
    using V = FFTVector<T>;
    WithShortRows(spec->short_rows, [&](auto rows) {
      ShortCore<decltype(rows)::value, kInverse, V>(*spec, SplitIn<V, T, kInverse>{src_re, src_im},
                                                    SplitOut<V, T, kInverse>{dst_re, dst_im},
                                                    scale);
    });
    return engStsNoErr;
  }
  T* buffers = reinterpret_cast<T*>(work);
  WithLanes<T>(*spec, [&](auto lanes) {
    using V = decltype(lanes);
    RunCore<kInverse, V>(*spec, SplitIn<V, T, kInverse>{src_re, src_im},
                         SplitOut<V, T, kInverse>{dst_re, dst_im}, buffers, scale);
  });
  return engStsNoErr;
}

// Lengths 1 and 2, whose packed spectra are the sums themselves. Length 1 still writes N + 2
// values: x[0], then the two zero imaginary parts.
template <bool kInverse, class T>
void ShortRealTransform(const T* src, T* dst, int order) {
  if (order == 0) {
    dst[0] = src[0];
    if constexpr (!kInverse) dst[1] = dst[2] = 0;
    return;
  }
  const T a = src[0];
  const T b = kInverse ? src[2] : src[1];
  if constexpr (kInverse) {
    dst[0] = (a + b) * T(0.5);
    dst[1] = (a - b) * T(0.5);
  } else {
    dst[0] = a + b;
    dst[1] = 0;
    dst[2] = a - b;
    dst[3] = 0;
  }
}

// A real kind's short core: the half-length transform's result stays on the stack.
template <bool kInverse, int kRows, class T>
ZAL_INLINE void ShortCoreRealTransform(const T* src, T* dst, const FFTSpec& spec) {
  using V = FFTVector<T>;
  constexpr int kN = kRows * V::kLanes;
  const T* roots_re = RealTables<T>(spec);
  const T* roots_im = roots_re + kN / 2 + 1;
  alignas(64) T z[2 * kN];
  if constexpr (kInverse) {
    JoinHalves<V>(src, z, z + kN, kN, roots_re, roots_im);
    ShortCore<kRows, true, V>(spec, SplitIn<V, T, true>{z, z + kN}, PairsOut<V, T, true>{dst},
                              T(0.5) / T(kN));
  } else {
    ShortCore<kRows, false, V>(spec, PairsIn<V, T, false>{src}, SplitOut<V, T, false>{z, z + kN},
                               T(1));
    SeparateHalves<V>(z, z + kN, dst, kN, roots_re, roots_im);
  }
}

template <bool kInverse, class T>
EngStatus RealTransform(FFTKind kind, const T* src, T* dst, const FFTSpec* spec,
                        unsigned char* work) {
  if (const EngStatus status = CheckTransform(kind, spec, work, src, dst)) return status;
  if (spec->core_length == 0) {
    ShortRealTransform<kInverse>(src, dst, spec->order);
    return engStsNoErr;
  }
  if (spec->short_rows > 0) {
    WithShortRows(spec->short_rows, [&](auto rows) {
      ShortCoreRealTransform<kInverse, decltype(rows)::value>(src, dst, *spec);
    });
    return engStsNoErr;
  }
  T* buffers = reinterpret_cast<T*>(work);
  const std::ptrdiff_t n = spec->core_length;
  const T* roots_re = RealTables<T>(*spec);
  const T* roots_im = roots_re + n / 2 + 1;
  WithLanes<T>(*spec, [&](auto lanes) {
    using V = decltype(lanes);
    if constexpr (kInverse) {
      // Joined into the second buffer, which the first pass does not write.
      T* z = buffers + 2 * n;
      JoinHalves<V>(src, z, z + n, spec->core_length, roots_re, roots_im);
      RunCore<true, V>(*spec, SplitIn<V, T, true>{z, z + n}, PairsOut<V, T, true>{dst}, buffers,
                       T(0.5) / static_cast<T>(n));
    } else {
      // The core's result goes to the buffer its last pass did not write.
      T* z = buffers + ((spec->pass_count & 1) ? 2 * n : 0);
      RunCore<false, V>(*spec, PairsIn<V, T, false>{src}, SplitOut<V, T, false>{z, z + n}, buffers,
                        T(1));
      SeparateHalves<V>(z, z + n, dst, spec->core_length, roots_re, roots_im);
    }
  });
  return engStsNoErr;
}

// The primitives of one kind, defined by the includer outside the anonymous namespace. A level
// may hand short transforms to another: ZAL_FFT_SHORT_SETUP(K, T, call) and
// ZAL_FFT_SHORT_RUN(call) return that level's call when it takes the order, or the spec.
#define ZAL_FFT_SETUP(K, T)                                                                      \
  EngStatus FFTGetSize##K(int order, int flag, [[maybe_unused]] int hint, int* spec_size,        \
                          int* init_size, int* work_size) {                                      \
    ZAL_FFT_SHORT_SETUP(K, T, FFTGetSize##K(order, flag, hint, spec_size, init_size, work_size)) \
    return GetSizes<T>(FFTKind::k##K, order, flag, spec_size, init_size, work_size);             \
  }                                                                                              \
  EngStatus FFTInit##K(FFTSpec** spec, int order, int flag, [[maybe_unused]] int hint,           \
                       unsigned char* block, [[maybe_unused]] unsigned char* init_buffer) {      \
    ZAL_FFT_SHORT_SETUP(K, T, FFTInit##K(spec, order, flag, hint, block, init_buffer))           \
    return Prepare<T>(FFTKind::k##K, spec, order, flag, block);                                  \
  }

#define ZAL_FFT_REAL_PRIMITIVES(K, T)                                                   \
  ZAL_FFT_SETUP(K, T)                                                                   \
  EngStatus FFTFwd##K(const T* src, T* dst, const FFTSpec* spec, unsigned char* work) { \
    ZAL_FFT_SHORT_RUN(FFTFwd##K(src, dst, spec, work))                                  \
    return RealTransform<false>(FFTKind::k##K, src, dst, spec, work);                   \
  }                                                                                     \
  EngStatus FFTInv##K(const T* src, T* dst, const FFTSpec* spec, unsigned char* work) { \
    ZAL_FFT_SHORT_RUN(FFTInv##K(src, dst, spec, work))                                  \
    return RealTransform<true>(FFTKind::k##K, src, dst, spec, work);                    \
  }

#define ZAL_FFT_COMPLEX_PRIMITIVES(K, T, E)                                             \
  ZAL_FFT_SETUP(K, T)                                                                   \
  EngStatus FFTFwd##K(const E* src, E* dst, const FFTSpec* spec, unsigned char* work) { \
    ZAL_FFT_SHORT_RUN(FFTFwd##K(src, dst, spec, work))                                  \
    return ComplexTransform<false>(FFTKind::k##K, reinterpret_cast<const T*>(src),      \
                                   reinterpret_cast<T*>(dst), spec, work);              \
  }                                                                                     \
  EngStatus FFTInv##K(const E* src, E* dst, const FFTSpec* spec, unsigned char* work) { \
    ZAL_FFT_SHORT_RUN(FFTInv##K(src, dst, spec, work))                                  \
    return ComplexTransform<true>(FFTKind::k##K, reinterpret_cast<const T*>(src),       \
                                  reinterpret_cast<T*>(dst), spec, work);               \
  }

#define ZAL_FFT_SPLIT_PRIMITIVES(K, T)                                                             \
  ZAL_FFT_SETUP(K, T)                                                                              \
  EngStatus FFTFwd##K(const T* src_re, const T* src_im, T* dst_re, T* dst_im, const FFTSpec* spec, \
                      unsigned char* work) {                                                       \
    ZAL_FFT_SHORT_RUN(FFTFwd##K(src_re, src_im, dst_re, dst_im, spec, work))                       \
    return SplitTransform<false>(FFTKind::k##K, src_re, src_im, dst_re, dst_im, spec, work);       \
  }                                                                                                \
  EngStatus FFTInv##K(const T* src_re, const T* src_im, T* dst_re, T* dst_im, const FFTSpec* spec, \
                      unsigned char* work) {                                                       \
    ZAL_FFT_SHORT_RUN(FFTInv##K(src_re, src_im, dst_re, dst_im, spec, work))                       \
    return SplitTransform<true>(FFTKind::k##K, src_re, src_im, dst_re, dst_im, spec, work);        \
  }

#define ZAL_FFT_ALL_PRIMITIVES                              \
  ZAL_FFT_REAL_PRIMITIVES(RealF32, float)                   \
  ZAL_FFT_REAL_PRIMITIVES(RealF64, double)                  \
  ZAL_FFT_COMPLEX_PRIMITIVES(ComplexF32, float, Complex32)  \
  ZAL_FFT_COMPLEX_PRIMITIVES(ComplexF64, double, Complex64) \
  ZAL_FFT_SPLIT_PRIMITIVES(SplitF32, float)                 \
  ZAL_FFT_SPLIT_PRIMITIVES(SplitF64, double)
