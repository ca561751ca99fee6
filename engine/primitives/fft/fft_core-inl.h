// The transform, written once over a vector type V of V::kLanes lanes (a scalar wrapper with one
// lane at the portable level and for lengths too short for a level's registers). Included inside
// a level namespace's anonymous namespace, after the vector layer.
//
// A core transform of n complex points, n = rows * lanes, index n = lanes * m + l, splits into:
//  1. a rows-point transform along m of each column l, all columns at once: a point is one vector.
//     Stockham radix-16 (or radix-8) passes and one closing radix-8, -4 or -2 pass for what
//     remains, self-sorting, ping-ponging between two split buffers;
//  2. one pass per block of lanes rows: twiddle by exp(-2 pi i l k1 / n), transpose the
//     lanes x lanes block in registers, and a lanes-point transform across the registers, which
//     yields X[k1 + rows * k2] as whole vectors in natural order.
// The inverse is the forward transform with real and imaginary parts swapped on the way in and
// out. Real kinds run the half-length complex core on the even/odd samples and separate the
// halves in one pass.

// Clang unrolls these constant-count loops by itself, and under some instrumentation (the thread
// sanitizer) cannot honour the request, which it reports as an error in warning-clean builds.
#if defined(__GNUC__) && !defined(__clang__)
#define ZAL_FFT_UNROLL _Pragma("GCC unroll 16")
#else
#define ZAL_FFT_UNROLL
#endif

template <class V>
struct Cx {
  V re;
  V im;
};

template <class V, class T>
ZAL_INLINE V LoadLanes(const T* p) {
  if constexpr (V::kLanes == 1) {
    return V{*p};
  } else {
    return Load(p);
  }
}
template <class V, class T>
ZAL_INLINE void StoreLanes(T* p, V v) {
  if constexpr (V::kLanes == 1) {
    *p = v.raw;
  } else {
    Store(p, v);
  }
}
template <class V, class T>
ZAL_INLINE V BroadcastLanes(T x) {
  if constexpr (V::kLanes == 1) {
    return V{x};
  } else {
    return Broadcast(x);
  }
}

template <class V>
ZAL_INLINE Cx<V> operator+(Cx<V> a, Cx<V> b) {
  return {a.re + b.re, a.im + b.im};
}
template <class V>
ZAL_INLINE Cx<V> operator-(Cx<V> a, Cx<V> b) {
  return {a.re - b.re, a.im - b.im};
}
template <class V>
ZAL_INLINE Cx<V> Times(Cx<V> a, Cx<V> w) {
  return {FusedMulSub(a.re, w.re, a.im * w.im), FusedMulAdd(a.re, w.im, a.im * w.re)};
}
// a * -i and a * i.
template <class V>
ZAL_INLINE Cx<V> TimesMinusI(Cx<V> a) {
  return {a.im, V{} - a.re};
}

// Point e (a vector of lanes) of split arrays, or of interleaved (re, im) pairs; kSwap exchanges
// the parts, which turns the forward transform into the inverse one.
template <class V, class T, bool kSwap>
struct SplitIn {
  const T* re;
  const T* im;
  ZAL_INLINE Cx<V> operator()(std::ptrdiff_t e) const {
    const V r = LoadLanes<V>(re + e * V::kLanes);
    const V i = LoadLanes<V>(im + e * V::kLanes);
    if constexpr (kSwap) return {i, r};
    return {r, i};
  }
};
template <class V, class T, bool kSwap>
struct PairsIn {
  const T* pairs;
  ZAL_INLINE Cx<V> operator()(std::ptrdiff_t e) const {
    const T* p = pairs + 2 * e * V::kLanes;
    V r;
    V i;
    if constexpr (V::kLanes == 1) {
      r = V{p[0]};
      i = V{p[1]};
    } else {
      Unzip(Load(p), Load(p + V::kLanes), r, i);
    }
    if constexpr (kSwap) return {i, r};
    return {r, i};
  }
};
template <class V, class T, bool kSwap>
struct SplitOut {
  T* re;
  T* im;
  ZAL_INLINE void operator()(std::ptrdiff_t e, Cx<V> x) const {
    StoreLanes(re + e * V::kLanes, kSwap ? x.im : x.re);
    StoreLanes(im + e * V::kLanes, kSwap ? x.re : x.im);
  }
  // The first `count` lanes of x at point `point` (count below the lane count).
  ZAL_INLINE void Partial(std::ptrdiff_t point, Cx<V> x, int count) const {
    if constexpr (V::kLanes > 1) {
      StoreN(re + point, kSwap ? x.im : x.re, count);
      StoreN(im + point, kSwap ? x.re : x.im, count);
    }
  }
};
template <class V, class T, bool kSwap>
struct PairsOut {
  T* pairs;
  ZAL_INLINE void operator()(std::ptrdiff_t e, Cx<V> x) const {
    T* p = pairs + 2 * e * V::kLanes;
    const V r = kSwap ? x.im : x.re;
    const V i = kSwap ? x.re : x.im;
    if constexpr (V::kLanes == 1) {
      p[0] = r.raw;
      p[1] = i.raw;
    } else {
      V a;
      V b;
      Zip(r, i, a, b);
      Store(p, a);
      Store(p + V::kLanes, b);
    }
  }
  ZAL_INLINE void Partial(std::ptrdiff_t point, Cx<V> x, int count) const {
    if constexpr (V::kLanes > 1) {
      T* p = pairs + 2 * point;
      V a;
      V b;
      Zip(kSwap ? x.im : x.re, kSwap ? x.re : x.im, a, b);
      if (2 * count < V::kLanes) {
        StoreN(p, a, 2 * count);
      } else if (2 * count == V::kLanes) {
        Store(p, a);
      } else {
        Store(p, a);
        StoreN(p + V::kLanes, b, 2 * count - V::kLanes);
      }
    }
  }
};

// The passes' own buffers hold point e as its real vector followed by its imaginary one: one
// address per point keeps the four streams of a radix-4 pass within the general registers.
template <class V, class T>
struct BlocksIn {
  const T* blocks;
  ZAL_INLINE Cx<V> operator()(std::ptrdiff_t e) const {
    const T* p = blocks + 2 * e * V::kLanes;
    return {LoadLanes<V>(p), LoadLanes<V>(p + V::kLanes)};
  }
};
template <class V, class T>
struct BlocksOut {
  T* blocks;
  ZAL_INLINE void operator()(std::ptrdiff_t e, Cx<V> x) const {
    T* p = blocks + 2 * e * V::kLanes;
    StoreLanes(p, x.re);
    StoreLanes(p + V::kLanes, x.im);
  }
};

template <class V, class T>
ZAL_INLINE Cx<V> BroadcastRoot(const T* root) {
  return {BroadcastLanes<V>(root[0]), BroadcastLanes<V>(root[1])};
}

// The radix-4 butterfly in place: x[0..3] become sum_j x[j] (-i)^(jk), k = 0..3.
template <class V>
ZAL_INLINE void Butterfly4(Cx<V>* x) {
  const Cx<V> apc = x[0] + x[2];
  const Cx<V> amc = x[0] - x[2];
  const Cx<V> bpd = x[1] + x[3];
  const Cx<V> bmd_i = TimesMinusI(x[1] - x[3]);  // -i (b - d)
  x[0] = apc + bpd;
  x[1] = amc + bmd_i;
  x[2] = apc - bpd;
  x[3] = amc - bmd_i;
}

// The closing radix-4 pass when the rows' order is 2 mod 4: span 4, roots 1.
template <class V, class T, class In>
ZAL_NOINLINE void Radix4Pass(In in, T* out_blocks, int stride) {
  const BlocksOut<V, T> out{out_blocks};
  const std::ptrdiff_t s = stride;
  for (std::ptrdiff_t q = 0; q < s; ++q) {
    Cx<V> x[4] = {in(q), in(q + s), in(q + 2 * s), in(q + 3 * s)};
    Butterfly4(x);
    ZAL_FFT_UNROLL
    for (int k = 0; k < 4; ++k) out(q + k * s, x[k]);
  }
}

// exp(-2 pi i t / 16) for t = 0 .. 9, the inner twiddles of the radix-16 and radix-8 passes.
inline constexpr double kRoots16[10][2] = {
    {1, 0},
    {0.92387953251128675613, -0.38268343236508977173},
    {0.70710678118654752440, -0.70710678118654752440},
    {0.38268343236508977173, -0.92387953251128675613},
    {0, -1},
    {-0.38268343236508977173, -0.92387953251128675613},
    {-0.70710678118654752440, -0.70710678118654752440},
    {-0.92387953251128675613, -0.38268343236508977173},
    {-1, 0},
    {-0.92387953251128675613, 0.38268343236508977173},
};

template <class V, class T>
ZAL_INLINE Cx<V> TimesRoot16(Cx<V> x, int t) {
  if (t == 0) return x;
  if (t == 4) return TimesMinusI(x);
  return Times(x, Cx<V>{BroadcastLanes<V>(static_cast<T>(kRoots16[t][0])),
                        BroadcastLanes<V>(static_cast<T>(kRoots16[t][1]))});
}

// The kN-point butterfly (kN = 2 or 4) in place.
template <int kN, class V>
ZAL_INLINE void Butterfly(Cx<V>* x) {
  if constexpr (kN == 4) {
    Butterfly4(x);
  } else {
    const Cx<V> a = x[0];
    x[0] = a + x[1];
    x[1] = a - x[1];
  }
}

// One Stockham radix-16 or radix-8 pass, two steps of the same sub-transforms per trip through
// memory: with r = kRadix / 4, j = j1 + r j2 and k = k1 + 4 k2, radix-4 along j2, twiddle by
// w^(j1 k1) (w = exp(-2 pi i / kRadix)), radix-r along j1. Roots w_span^(p k), k = 1 .. kRadix - 1,
// 2 (kRadix - 1) scalars per p; none for the last pass.
template <int kRadix, bool kTwiddled, class V, class T, class In>
ZAL_NOINLINE void TwoStepPass(In in, T* out_blocks, int span, int stride, const T* roots) {
  constexpr int kR = kRadix / 4;
  const BlocksOut<V, T> out{out_blocks};
  const std::ptrdiff_t part = span / kRadix;
  const std::ptrdiff_t s = stride;
  for (std::ptrdiff_t p = 0; p < part; ++p) {
    const T* w = roots + 2 * (kRadix - 1) * p;
    for (std::ptrdiff_t q = 0; q < s; ++q) {
      Cx<V> x[kRadix];
      ZAL_FFT_UNROLL
      for (int j1 = 0; j1 < kR; ++j1) {
        Cx<V> column[4];
        ZAL_FFT_UNROLL
        for (int j2 = 0; j2 < 4; ++j2) column[j2] = in(q + s * (p + (j1 + kR * j2) * part));
        Butterfly4(column);
        ZAL_FFT_UNROLL
        for (int k1 = 0; k1 < 4; ++k1) {
          x[kR * k1 + j1] = TimesRoot16<V, T>(column[k1], j1 * k1 * (16 / kRadix));
        }
      }
      const std::ptrdiff_t o = q + s * kRadix * p;
      ZAL_FFT_UNROLL
      for (int k1 = 0; k1 < 4; ++k1) {
        Butterfly<kR>(x + kR * k1);
        ZAL_FFT_UNROLL
        for (int k2 = 0; k2 < kR; ++k2) {
          const int k = k1 + 4 * k2;
          if constexpr (kTwiddled) {
            if (k > 0) {
              out(o + s * k, Times(x[kR * k1 + k2], BroadcastRoot<V>(w + 2 * (k - 1))));
              continue;
            }
          }
          out(o + s * k, x[kR * k1 + k2]);
        }
      }
    }
  }
}

// The closing radix-2 pass when the rows' order is 1 mod 4: span 2, roots 1.
template <class V, class T, class In>
ZAL_NOINLINE void Radix2Pass(In in, T* out_blocks, int stride) {
  const BlocksOut<V, T> out{out_blocks};
  for (std::ptrdiff_t q = 0; q < stride; ++q) {
    const Cx<V> a = in(q);
    const Cx<V> b = in(q + stride);
    out(q, a + b);
    out(q + stride, a - b);
  }
}

template <class V, class T, class In>
ZAL_INLINE void RunPass(const FFTPass& pass, In in, T* out, const T* tables) {
  if (pass.radix == 2) {
    Radix2Pass<V, T>(in, out, pass.stride);
  } else if (pass.radix == 16) {
    if (pass.span == 16) {
      TwoStepPass<16, false, V, T>(in, out, 16, pass.stride, tables);
    } else {
      TwoStepPass<16, true, V, T>(in, out, pass.span, pass.stride, tables + pass.twiddles);
    }
  } else if (pass.radix == 8) {
    if (pass.span == 8) {
      TwoStepPass<8, false, V, T>(in, out, 8, pass.stride, tables);
    } else {
      TwoStepPass<8, true, V, T>(in, out, pass.span, pass.stride, tables + pass.twiddles);
    }
  } else {
    Radix4Pass<V, T>(in, out, pass.stride);
  }
}

constexpr int BitReversed(int i, int bits) {
  int r = 0;
  for (int b = 0; b < bits; ++b) r |= ((i >> b) & 1) << (bits - 1 - b);
  return r;
}
constexpr int Log2(int n) {
  int bits = 0;
  while ((1 << bits) < n) ++bits;
  return bits;
}

// The lanes-point transform across x[0..kW): radix-2 decimation in frequency, results in
// bit-reversed positions. roots[2t], roots[2t + 1] = exp(-2 pi i t / kW).
template <int kW, class V, class T>
ZAL_INLINE void LanesTransform(Cx<V>* x, const T* roots) {
  ZAL_FFT_UNROLL
  for (int span = kW / 2; span >= 1; span /= 2) {
    ZAL_FFT_UNROLL
    for (int i = 0; i < kW; i += 2 * span) {
      ZAL_FFT_UNROLL
      for (int j = 0; j < span; ++j) {
        const int t = j * (kW / (2 * span));
        const Cx<V> a = x[i + j];
        const Cx<V> b = x[i + j + span];
        x[i + j] = a + b;
        if (t == 0) {
          x[i + j + span] = a - b;
        } else if (4 * t == kW) {
          x[i + j + span] = TimesMinusI(a - b);
        } else {
          x[i + j + span] = Times(a - b, BroadcastRoot<V>(roots + 2 * t));
        }
      }
    }
  }
}

// Step 2 for the rows first_row .. first_row + count - 1 (count <= lanes; missing rows are
// zero): twiddle, transpose, lanes-point transform. y[k2] holds X[k1 + rows * k2] in lane
// k1 - first_row.
template <bool kScaled, class V, class T, class In>
ZAL_INLINE void LanesBlock(In in, std::ptrdiff_t first_row, int count, const T* row_roots,
                           const T* lane_roots, V factor, Cx<V>* y) {
  constexpr int kW = V::kLanes;
  constexpr int kBits = Log2(kW);
  V re[kW];
  V im[kW];
  ZAL_FFT_UNROLL
  for (int j = 0; j < kW; ++j) {
    const std::ptrdiff_t row = first_row + j;
    Cx<V> x{};
    if (j < count) x = in(row);
    if constexpr (kW > 1) {
      const T* w = row_roots + 2 * kW * row;
      if (j < count) x = Times(x, Cx<V>{Load(w), Load(w + kW)});
    }
    re[j] = x.re;
    im[j] = x.im;
  }
  if constexpr (kW > 1) {
    Transpose(re);
    Transpose(im);
  }
  Cx<V> x[kW];
  ZAL_FFT_UNROLL
  for (int l = 0; l < kW; ++l) x[l] = {re[l], im[l]};
  LanesTransform<kW, V, T>(x, lane_roots);
  ZAL_FFT_UNROLL
  for (int k2 = 0; k2 < kW; ++k2) {
    y[k2] = x[BitReversed(k2, kBits)];
    if constexpr (kScaled) y[k2] = {y[k2].re * factor, y[k2].im * factor};
  }
}

// Step 2 over all rows. Fewer rows than lanes (short transforms) fill one block partly and
// store only the lanes that hold results.
template <bool kScaled, class V, class T, class In, class Out>
ZAL_NOINLINE void LanesPass(In in, Out out, int rows, const T* row_roots, const T* lane_roots,
                            T scale) {
  constexpr int kW = V::kLanes;
  const V factor = BroadcastLanes<V>(scale);
  Cx<V> y[kW];
  if (rows < kW) {
    LanesBlock<kScaled, V, T>(in, 0, rows, row_roots, lane_roots, factor, y);
    ZAL_FFT_UNROLL
    for (int k2 = 0; k2 < kW; ++k2) out.Partial(std::ptrdiff_t{k2} * rows, y[k2], rows);
    return;
  }
  const std::ptrdiff_t blocks = rows / kW;
  for (std::ptrdiff_t b = 0; b < blocks; ++b) {
    LanesBlock<kScaled, V, T>(in, b * kW, kW, row_roots, lane_roots, factor, y);
    ZAL_FFT_UNROLL
    for (int k2 = 0; k2 < kW; ++k2) out(k2 * blocks + b, y[k2]);
  }
}

// The whole core: passes from `in` through the two buffers of `work`, then `out`. A core of
// one row has no passes: step 2 reads `in` itself.
template <bool kScaled, class V, class T, class In, class Out>
ZAL_INLINE void RunCore(const FFTSpec& spec, In in, Out out, T* work, T scale) {
  const T* tables = reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(&spec) +
                                               kFFTSpecHeaderBytes);
  const T* row_roots = tables + spec.row_twiddles;
  const T* lane_roots = tables + spec.lane_twiddles;
  if (spec.pass_count == 0) {
    LanesPass<kScaled, V, T>(in, out, spec.rows, row_roots, lane_roots, scale);
    return;
  }
  const std::ptrdiff_t n = spec.core_length;
  T* buffers[2] = {work, work + 2 * n};
  RunPass<V, T>(spec.passes[0], in, buffers[0], tables);
  int current = 0;
  for (int i = 1; i < spec.pass_count; ++i) {
    const BlocksIn<V, T> from{buffers[current]};
    current ^= 1;
    RunPass<V, T>(spec.passes[i], from, buffers[current], tables);
  }
  LanesPass<kScaled, V, T>(BlocksIn<V, T>{buffers[current]}, out, spec.rows, row_roots, lane_roots,
                           scale);
}

// The real forward transform's last pass: X[k] from the half-length transform Z of the
// even/odd pairs, into the packed layout. With E = Z[k] + conj Z[H-k], D = Z[k] - conj Z[H-k]
// and t = w^k (-i D): X[k] = (E + t) / 2 and X[H-k] = conj(E - t) / 2.
template <class V, class T>
ZAL_NOINLINE void SeparateHalves(const T* z_re, const T* z_im, T* dst, int half, const T* roots_re,
                                 const T* roots_im) {
  constexpr int kW = V::kLanes;
  const std::ptrdiff_t h = half;
  dst[0] = z_re[0] + z_im[0];
  dst[1] = 0;
  dst[2 * h] = z_re[0] - z_im[0];
  dst[2 * h + 1] = 0;
  std::ptrdiff_t k = 1;
  if constexpr (kW > 1) {
    const V one_half = Broadcast(T(0.5));
    for (; k + kW - 1 <= h / 2; k += kW) {
      const std::ptrdiff_t mirror = h - k - (kW - 1);
      const Cx<V> a{Load(z_re + k), Load(z_im + k)};
      const Cx<V> b{Reverse(Load(z_re + mirror)), Reverse(Load(z_im + mirror))};
      const Cx<V> w{Load(roots_re + k), Load(roots_im + k)};
      const Cx<V> e{a.re + b.re, a.im - b.im};
      const Cx<V> d{a.re - b.re, a.im + b.im};
      const Cx<V> t = Times(TimesMinusI(d), w);
      V lo;
      V hi;
      Zip((e.re + t.re) * one_half, (e.im + t.im) * one_half, lo, hi);
      Store(dst + 2 * k, lo);
      Store(dst + 2 * k + kW, hi);
      Zip(Reverse((e.re - t.re) * one_half), Reverse((t.im - e.im) * one_half), lo, hi);
      Store(dst + 2 * mirror, lo);
      Store(dst + 2 * mirror + kW, hi);
    }
  }
  for (; k <= h / 2; ++k) {
    const T ar = z_re[k];
    const T ai = z_im[k];
    const T br = z_re[h - k];
    const T bi = z_im[h - k];
    const T er = ar + br;
    const T ei = ai - bi;
    const T dr = ar - br;
    const T di = ai + bi;
    // t = w (di - i dr)
    const T tr = roots_re[k] * di + roots_im[k] * dr;
    const T ti = roots_im[k] * di - roots_re[k] * dr;
    dst[2 * k] = (er + tr) * T(0.5);
    dst[2 * k + 1] = (ei + ti) * T(0.5);
    dst[2 * (h - k)] = (er - tr) * T(0.5);
    dst[2 * (h - k) + 1] = (ti - ei) * T(0.5);
  }
}

// The real inverse transform's first pass, the inverse of SeparateHalves up to a factor 2 (which
// the core's scale removes): Z[k] = E + i conj(w^k) D, Z[H-k] = conj E + i conj(conj(w^k) D),
// with E = X[k] + conj X[H-k], D = X[k] - conj X[H-k].
template <class V, class T>
ZAL_NOINLINE void JoinHalves(const T* src, T* z_re, T* z_im, int half, const T* roots_re,
                             const T* roots_im) {
  constexpr int kW = V::kLanes;
  const std::ptrdiff_t h = half;
  z_re[0] = src[0] + src[2 * h];
  z_im[0] = src[0] - src[2 * h];
  std::ptrdiff_t k = 1;
  if constexpr (kW > 1) {
    for (; k + kW - 1 <= h / 2; k += kW) {
      const std::ptrdiff_t mirror = h - k - (kW - 1);
      Cx<V> a;
      Cx<V> b;
      Unzip(Load(src + 2 * k), Load(src + 2 * k + kW), a.re, a.im);
      Unzip(Load(src + 2 * mirror), Load(src + 2 * mirror + kW), b.re, b.im);
      b = {Reverse(b.re), Reverse(b.im)};
      const Cx<V> w{Load(roots_re + k), V{} - Load(roots_im + k)};
      const Cx<V> e{a.re + b.re, a.im - b.im};
      const Cx<V> o = Times(Cx<V>{a.re - b.re, a.im + b.im}, w);
      Store(z_re + k, e.re - o.im);
      Store(z_im + k, e.im + o.re);
      Store(z_re + mirror, Reverse(e.re + o.im));
      Store(z_im + mirror, Reverse(o.re - e.im));
    }
  }
  for (; k <= h / 2; ++k) {
    const T ar = src[2 * k];
    const T ai = src[2 * k + 1];
    const T br = src[2 * (h - k)];
    const T bi = src[2 * (h - k) + 1];
    const T er = ar + br;
    const T ei = ai - bi;
    const T dr = ar - br;
    const T di = ai + bi;
    // o = d * conj(w)
    const T orr = dr * roots_re[k] + di * roots_im[k];
    const T oi = di * roots_re[k] - dr * roots_im[k];
    z_re[k] = er - oi;
    z_im[k] = ei + orr;
    z_re[h - k] = er + oi;
    z_im[h - k] = orr - ei;
  }
}

// ---- Preparation ----

// Radix 16 halves the trips through memory, but its 16 points fill 32 registers: levels with 16
// vector registers spill them, which at 32 .. 512 rows costs more than the extra trip a radix-8
// plan makes (measured at avx2). The one-lane path keeps radix 16.
constexpr int WidestRadix(int rows, int lanes) {
#if ZAL_LEVEL_INDEX >= 5
  (void)rows;
  (void)lanes;
  return 16;
#else
  return lanes > 1 && rows >= 32 && rows <= 512 ? 8 : 16;
#endif
}

// The pass plan and table offsets for a core of 2^core_order points at `lanes` lanes.
template <class T>
void PlanCore(FFTSpec& spec, int core_order, int lanes, int* table_scalars) {
  const int n = 1 << core_order;
  spec.core_length = n;
  spec.lanes = lanes;
  spec.rows = n / lanes;
  spec.pass_count = 0;
  int offset = 0;
  int span = spec.rows;
  int stride = 1;
  // Radix 16 (or 8) passes, then one closing radix-8, -4 or -2 pass for the remaining orders.
  const int widest = WidestRadix(spec.rows, lanes);
  constexpr int kRadices[] = {16, 8, 4};
  for (const int radix : kRadices) {
    if (radix > widest) continue;
    while (span >= radix) {
      spec.passes[spec.pass_count++] = {radix, span, stride, offset};
      if (span > radix) offset += 2 * (radix - 1) * (span / radix);
      span /= radix;
      stride *= radix;
    }
  }
  if (span == 2) spec.passes[spec.pass_count++] = {2, 2, stride, offset};
  spec.row_twiddles = offset;
  if (lanes > 1) offset += 2 * n;
  spec.lane_twiddles = offset;
  offset += lanes;
  spec.real_twiddles = offset;
  *table_scalars = offset;
}

template <class T>
void FillCoreTables(const FFTSpec& spec, T* tables) {
  for (int i = 0; i < spec.pass_count; ++i) {
    const FFTPass& pass = spec.passes[i];
    const int radix = pass.radix;
    if (radix == 2 || pass.span == radix) continue;
    T* roots = tables + pass.twiddles;
    for (int p = 0; p < pass.span / radix; ++p) {
      T* row = roots + 2 * (radix - 1) * p;
      for (int m = 1; m < radix; ++m) {
        FFTUnitRoot(static_cast<long long>(m) * p, pass.span, row + 2 * (m - 1),
                    row + 2 * (m - 1) + 1);
      }
    }
  }
  const int lanes = spec.lanes;
  if (lanes > 1) {
    T* row_roots = tables + spec.row_twiddles;
    for (int row = 0; row < spec.rows; ++row) {
      for (int l = 0; l < lanes; ++l) {
        FFTUnitRoot(static_cast<long long>(row) * l, spec.core_length,
                    row_roots + 2 * lanes * row + l, row_roots + 2 * lanes * row + lanes + l);
      }
    }
  }
  T* lane_roots = tables + spec.lane_twiddles;
  for (int t = 0; t < lanes / 2; ++t) {
    FFTUnitRoot(t, lanes, lane_roots + 2 * t, lane_roots + 2 * t + 1);
  }
}
