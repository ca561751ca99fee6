// Short cores held in registers from load to store: n = rows * lanes with at most 16 rows, the
// rows-point transform across registers with constant roots, then, as in the general core's last
// pass, twiddle, lanes x lanes transpose and the lanes-point transform. No work buffer, no pass
// calls: the plan's row count picks one fully unrolled kernel. Included by fft_entries-inl.h.

inline constexpr int kShortMaxRows = 16;

// One radix-2 step of decimation in frequency across x[0..kR), sub-transforms of 2 kSpan points,
// then the steps after it; results in bit-reversed positions. The step's roots are powers of
// exp(-2 pi i / 16). The span is a template argument so that every loop has a constant count and
// unrolls: the points stay in registers.
template <int kSpan, int kR, class V, class T>
ZAL_INLINE void RowsTransform(Cx<V>* x) {
  ZAL_FFT_UNROLL
  for (int i = 0; i < kR; i += 2 * kSpan) {
    ZAL_FFT_UNROLL
    for (int j = 0; j < kSpan; ++j) {
      const Cx<V> a = x[i + j];
      const Cx<V> b = x[i + j + kSpan];
      x[i + j] = a + b;
      x[i + j + kSpan] = TimesRoot16<V, T>(a - b, j * (8 / kSpan));
    }
  }
  if constexpr (kSpan > 1) RowsTransform<kSpan / 2, kR, V, T>(x);
}

// Rows kFirst .. kFirst + kCount - 1 of the rows transform (missing rows are zero; x holds the
// rows in bit-reversed positions): twiddle by exp(-2 pi i l k1 / n), transpose the lanes x lanes
// block, lanes-point transform. y[k2] holds X[k1 + kRows k2] in lane k1 - kFirst.
template <int kRows, int kFirst, int kCount, bool kScaled, class V, class T>
ZAL_INLINE void ShortBlock(const Cx<V>* x, const T* row_roots, V factor, Cx<V>* y) {
  constexpr int kW = V::kLanes;
  V re[kW];
  V im[kW];
  ZAL_FFT_UNROLL
  for (int j = 0; j < kW; ++j) {
    Cx<V> row{};
    if (j < kCount) row = x[BitReversed(kFirst + j, Log2(kRows))];
    if constexpr (kW > 1) {
      if (j < kCount && kFirst + j > 0) {
        const T* w = row_roots + 2 * kW * (kFirst + j);
        row = Times(row, Cx<V>{Load(w), Load(w + kW)});
      }
    }
    re[j] = row.re;
    im[j] = row.im;
  }
  Cx<V> columns[kW];
  if constexpr (kW > 1) {
    Transpose(re);
    Transpose(im);
  }
  ZAL_FFT_UNROLL
  for (int l = 0; l < kW; ++l) columns[l] = {re[l], im[l]};
  if constexpr (kW > 1) RowsTransform<kW / 2, kW, V, T>(columns);
  ZAL_FFT_UNROLL
  for (int k2 = 0; k2 < kW; ++k2) {
    y[k2] = columns[BitReversed(k2, Log2(kW))];
    if constexpr (kScaled) y[k2] = {y[k2].re * factor, y[k2].im * factor};
  }
}

// Blocks kBlock .. of the core, each stored as whole vectors.
template <int kRows, int kBlock, bool kScaled, class V, class T, class Out>
ZAL_INLINE void ShortBlocks(const Cx<V>* x, Out out, const T* row_roots, V factor) {
  constexpr int kW = V::kLanes;
  constexpr int kBlocks = kRows / kW;
  Cx<V> y[kW];
  ShortBlock<kRows, kBlock * kW, kW, kScaled, V, T>(x, row_roots, factor, y);
  ZAL_FFT_UNROLL
  for (int k2 = 0; k2 < kW; ++k2) out(k2 * kBlocks + kBlock, y[k2]);
  if constexpr (kBlock + 1 < kBlocks) {
    ShortBlocks<kRows, kBlock + 1, kScaled, V, T>(x, out, row_roots, factor);
  }
}

// The whole core of kRows rows: X[k1 + kRows k2] goes to point k1 + kRows k2 of `out`. Every
// point is read before the first is written, so `in` and `out` may share memory.
template <int kRows, bool kScaled, class V, class T, class In, class Out>
ZAL_INLINE void ShortCore(const FFTSpec& spec, In in, Out out, T scale) {
  constexpr int kW = V::kLanes;
  const T* row_roots = reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(&spec) +
                                                  kFFTSpecHeaderBytes) +
                       spec.row_twiddles;
  Cx<V> x[kRows];
  ZAL_FFT_UNROLL
  for (int m = 0; m < kRows; ++m) x[m] = in(m);
  if constexpr (kRows > 1) RowsTransform<kRows / 2, kRows, V, T>(x);
  const V factor = BroadcastLanes<V>(scale);
  if constexpr (kRows < kW) {
    Cx<V> y[kW];
    ShortBlock<kRows, 0, kRows, kScaled, V, T>(x, row_roots, factor, y);
    ZAL_FFT_UNROLL
    for (int k2 = 0; k2 < kW; ++k2) out.Partial(std::ptrdiff_t{k2} * kRows, y[k2], kRows);
  } else {
    ShortBlocks<kRows, 0, kScaled, V, T>(x, out, row_roots, factor);
  }
}

// body(rows) with the plan's row count as a constant.
template <class Body>
ZAL_INLINE void WithShortRows(int rows, Body body) {
  switch (rows) {
    case 1:
      body(std::integral_constant<int, 1>{});
      break;
    case 2:
      body(std::integral_constant<int, 2>{});
      break;
    case 4:
      body(std::integral_constant<int, 4>{});
      break;
    case 8:
      body(std::integral_constant<int, 8>{});
      break;
    default:
      body(std::integral_constant<int, kShortMaxRows>{});
      break;
  }
}
