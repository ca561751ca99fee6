// Real transforms of 16 points as straight-line scalar code: the half-length complex
// transform of the even/odd pairs and the separation of its halves, every loop of constant count
// so that the points live in registers. At these lengths the vector path's unzip, lanes block and
// trip through the stack cost more than the arithmetic itself. Included by fft_entries-inl.h.

// Whether a real transform of this order runs here. At 32 points the scalar code measured slower
// than the vector path (its 48 live scalars spill).
constexpr bool IsStraightRealOrder(int order) {
  return order == 4;
}

// One radix-2 step of decimation in frequency over kM <= 16 complex scalars, sub-transforms of
// 2 kSpan points, then the steps after it; results in bit-reversed positions. The roots are
// powers of exp(-2 pi i / 16). The span is a template argument, as in RowsTransform, so that
// every loop has a constant count and the points stay in registers.
template <int kSpan, int kM, class T>
ZAL_INLINE void StraightTransform(T* re, T* im) {
  ZAL_FFT_UNROLL
  for (int i = 0; i < kM; i += 2 * kSpan) {
    ZAL_FFT_UNROLL
    for (int j = 0; j < kSpan; ++j) {
      constexpr int kStep = 8 / kSpan;
      const int t = j * kStep;
      const T ar = re[i + j];
      const T ai = im[i + j];
      const T br = re[i + j + kSpan];
      const T bi = im[i + j + kSpan];
      const T dr = ar - br;
      const T di = ai - bi;
      re[i + j] = ar + br;
      im[i + j] = ai + bi;
      if (t == 0) {
        re[i + j + kSpan] = dr;
        im[i + j + kSpan] = di;
      } else if (t == 4) {
        re[i + j + kSpan] = di;
        im[i + j + kSpan] = -dr;
      } else {
        const T wr = static_cast<T>(kRoots16[t][0]);
        const T wi = static_cast<T>(kRoots16[t][1]);
        re[i + j + kSpan] = dr * wr - di * wi;
        im[i + j + kSpan] = dr * wi + di * wr;
      }
    }
  }
  if constexpr (kSpan > 1) StraightTransform<kSpan / 2, kM, T>(re, im);
}

// Forward: Z = the kH-point transform of z[m] = x[2m] + i x[2m+1], then, as in SeparateHalves,
// X[k] = (E + t) / 2 and X[H-k] = conj(E - t) / 2 with E = Z[k] + conj Z[H-k],
// t = w^k (-i (Z[k] - conj Z[H-k])). Inverse: the joining step of JoinHalves, then the inverse
// half-length transform (the forward one with the parts swapped) scaled by 1 / (2 kH).
// Every input is read before the first output is written, so src and dst may share memory.
template <bool kInverse, int kN, class T>
ZAL_INLINE void StraightRealTransform(const T* src, T* dst, const T* roots_re, const T* roots_im) {
  constexpr int kH = kN / 2;
  constexpr int kBits = Log2(kH);
  T zr[kH];
  T zi[kH];
  if constexpr (kInverse) {
    T xr[kH + 1];
    T xi[kH + 1];
    ZAL_FFT_UNROLL
    for (int k = 0; k <= kH; ++k) {
      xr[k] = src[2 * k];
      xi[k] = src[2 * k + 1];
    }
    // The parts swapped on the way in: zr holds the imaginary parts.
    zi[0] = xr[0] + xr[kH];
    zr[0] = xr[0] - xr[kH];
    ZAL_FFT_UNROLL
    for (int k = 1; k <= kH / 2; ++k) {
      const T er = xr[k] + xr[kH - k];
      const T ei = xi[k] - xi[kH - k];
      const T dr = xr[k] - xr[kH - k];
      const T di = xi[k] + xi[kH - k];
      const T orr = dr * roots_re[k] + di * roots_im[k];
      const T oi = di * roots_re[k] - dr * roots_im[k];
      zi[k] = er - oi;
      zr[k] = ei + orr;
      zi[kH - k] = er + oi;
      zr[kH - k] = orr - ei;
    }
    StraightTransform<kH / 2, kH, T>(zr, zi);
    const T scale = T(0.5) / T(kH);
    ZAL_FFT_UNROLL
    for (int m = 0; m < kH; ++m) {
      const int p = BitReversed(m, kBits);
      dst[2 * m] = zi[p] * scale;
      dst[2 * m + 1] = zr[p] * scale;
    }
  } else {
    ZAL_FFT_UNROLL
    for (int m = 0; m < kH; ++m) {
      zr[m] = src[2 * m];
      zi[m] = src[2 * m + 1];
    }
    StraightTransform<kH / 2, kH, T>(zr, zi);
    T yr[kH];
    T yi[kH];
    ZAL_FFT_UNROLL
    for (int k = 0; k < kH; ++k) {
      yr[k] = zr[BitReversed(k, kBits)];
      yi[k] = zi[BitReversed(k, kBits)];
    }
    dst[0] = yr[0] + yi[0];
    dst[1] = 0;
    dst[2 * kH] = yr[0] - yi[0];
    dst[2 * kH + 1] = 0;
    ZAL_FFT_UNROLL
    for (int k = 1; k <= kH / 2; ++k) {
      const T er = yr[k] + yr[kH - k];
      const T ei = yi[k] - yi[kH - k];
      const T dr = yr[k] - yr[kH - k];
      const T di = yi[k] + yi[kH - k];
      const T tr = roots_re[k] * di + roots_im[k] * dr;
      const T ti = roots_im[k] * di - roots_re[k] * dr;
      dst[2 * k] = (er + tr) * T(0.5);
      dst[2 * k + 1] = (ei + ti) * T(0.5);
      dst[2 * (kH - k)] = (er - tr) * T(0.5);
      dst[2 * (kH - k) + 1] = (ti - ei) * T(0.5);
    }
  }
}
