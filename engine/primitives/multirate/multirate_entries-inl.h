// The multirate primitives: size query, preparation and the filter's framing (argument checks,
// the stream's start against the delay line, the delay line's update). Included inside a level
// namespace after multirate_bank-inl.h and the level's PolyphaseOutputs(spec, x, dst, first,
// end), which writes outputs first..end-1 of a call whose input i is x[i], reading
// x[base - window + 1 .. base] for each.

namespace {

// The header, its bank and tables, in bytes, and the work buffer's bytes (the delay line's zone
// and as many inputs, staged contiguously). Sizes past the engine's 32-bit range are refused.
inline EngStatus Layout(int up, int down, int taps_len, int element_size, MRFSpec& spec,
                        int* spec_bytes, int* work_bytes) {
  if (up < 1 || down < 1) return engStsFIRMRFactorErr;
  if (taps_len < 1) return engStsFIRLenErr;
  const int line = 64 / element_size;
  const long long phase_taps = (static_cast<long long>(taps_len) + up - 1) / up;
  const long long row_length = (phase_taps + line - 1) / line * line;
  const long long bank_bytes = row_length * up * element_size;
  const long long tables_bytes = (2LL * up * static_cast<long long>(sizeof(int)) + 63) / 64 * 64;
  const long long spec_total = 64 + kMRFSpecHeaderBytes + bank_bytes + tables_bytes;
  const long long work_total = 2 * row_length * element_size;
  constexpr long long kLimit = 0x7FFFFFFF - 72;
  if (spec_total > kLimit || work_total > kLimit) return engStsSizeErr;
  spec = MRFSpec{};
  spec.element_size = element_size;
  spec.up_factor = up;
  spec.down_factor = down;
  spec.taps_len = taps_len;
  spec.phase_taps = static_cast<int>(phase_taps);
  spec.row_length = static_cast<int>(row_length);
  spec.bank_offset = kMRFSpecHeaderBytes;
  spec.rows_offset = static_cast<int>(kMRFSpecHeaderBytes + bank_bytes);
  spec.bases_offset = spec.rows_offset + up * static_cast<int>(sizeof(int));
  *spec_bytes = static_cast<int>(spec_total);
  *work_bytes = static_cast<int>(work_total);
  return engStsNoErr;
}

template <class T>
EngStatus Prepare(MRFSpec** handle, const T* taps, int taps_len, int up, int up_phase, int down,
                  int down_phase, unsigned char* block) {
  if (!handle || !taps || !block) return engStsNullPtrErr;
  MRFSpec plan;
  int spec_bytes = 0;
  int work_bytes = 0;
  if (const EngStatus status =
          Layout(up, down, taps_len, static_cast<int>(sizeof(T)), plan, &spec_bytes, &work_bytes)) {
    return status;
  }
  if (up_phase < 0 || up_phase >= up || down_phase < 0 || down_phase >= down) {
    return engStsFIRMRPhaseErr;
  }
  plan.up_phase = up_phase;
  plan.down_phase = down_phase;
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  auto* spec = reinterpret_cast<MRFSpec*>((address + 63) & ~static_cast<std::uintptr_t>(63));
  *spec = plan;
  auto* bytes = reinterpret_cast<unsigned char*>(spec);
  T* bank = reinterpret_cast<T*>(bytes + plan.bank_offset);
  const int rows = plan.row_length;
  for (int p = 0; p < up; ++p) {
    T* row = bank + static_cast<std::ptrdiff_t>(p) * rows;
    for (int i = 0; i < rows; ++i) {
      const long long k = p + static_cast<long long>(up) * (rows - 1 - i);
      row[i] = k < taps_len ? taps[k] : T(0);
    }
  }
  // Output r of a period sits at r down + down_phase on the upsampled time line of the period,
  // whose inputs sit at j up + up_phase: its newest input and phase follow by floor division.
  int* row_table = reinterpret_cast<int*>(bytes + plan.rows_offset);
  int* base_table = reinterpret_cast<int*>(bytes + plan.bases_offset);
  for (int r = 0; r < up; ++r) {
    const long long t = static_cast<long long>(r) * down + down_phase - up_phase;
    const long long base = t >= 0 ? t / up : -1;
    row_table[r] = static_cast<int>(t - base * up) * rows;
    base_table[r] = static_cast<int>(base);
  }
  *handle = spec;
  return engStsNoErr;
}

template <class T>
EngStatus Filter(const T* src, T* dst, int iters, const MRFSpec* spec, const T* dly_src, T* dly_dst,
                 unsigned char* work) {
  if (!src || !dst || !spec || !work) return engStsNullPtrErr;
  if (spec->element_size != static_cast<int>(sizeof(T))) return engStsContextMatchErr;
  if (iters <= 0) return engStsSizeErr;
  const long long inputs = static_cast<long long>(iters) * spec->down_factor;
  const long long outputs = static_cast<long long>(iters) * spec->up_factor;
  if (inputs > 0x7FFFFFFF || outputs > 0x7FFFFFFF) return engStsSizeErr;
  const std::ptrdiff_t n = static_cast<std::ptrdiff_t>(inputs);
  const std::ptrdiff_t m_end = static_cast<std::ptrdiff_t>(outputs);
  const int history = spec->phase_taps;
  const int rows = spec->row_length;
  const int window = WindowOf<T>(*spec);

  // The stream's start, contiguous: zeros, the delay line, then the first inputs. Outputs whose
  // window reaches back before src read here; the rest read src itself.
  T* stage = reinterpret_cast<T*>(work);
  const std::ptrdiff_t staged = n < rows ? n : rows;
  for (int i = 0; i < rows - history; ++i) stage[i] = T(0);
  for (int i = 0; i < history; ++i) stage[rows - history + i] = dly_src ? dly_src[i] : T(0);
  for (std::ptrdiff_t i = 0; i < staged; ++i) stage[rows + i] = src[i];

  const int up = spec->up_factor;
  const int down = spec->down_factor;
  const int* bases = BaseTable(*spec);
  std::ptrdiff_t first_direct = 0;
  while (first_direct < m_end &&
         (first_direct / up) * down + bases[first_direct % up] < window - 1) {
    ++first_direct;
  }
  if (first_direct > 0) PolyphaseOutputs(*spec, stage + rows, dst, 0, first_direct);
  if (first_direct < m_end) PolyphaseOutputs(*spec, src, dst, first_direct, m_end);

  if (dly_dst) {
    const T* newest = n >= history ? src + n : stage + rows + n;
    for (int i = 0; i < history; ++i) dly_dst[i] = newest[i - history];
  }
  return engStsNoErr;
}

}  // namespace

EngStatus MultirateFirGetSize(int up_factor, int down_factor, int taps_len, int data_type,
                              int* spec_size, int* buf_size) {
  if (!spec_size || !buf_size) return engStsNullPtrErr;
  int element_size = 0;
  if (data_type == kMRFDataTypeF32) {
    element_size = 4;
  } else if (data_type == kMRFDataTypeF64) {
    element_size = 8;
  } else {
    return engStsDataTypeErr;
  }
  MRFSpec plan;
  return Layout(up_factor, down_factor, taps_len, element_size, plan, spec_size, buf_size);
}

EngStatus MultirateFirInitF32(MRFSpec** spec, const float* taps, int taps_len, int up_factor,
                              int up_phase, int down_factor, int down_phase, unsigned char* block) {
  return Prepare(spec, taps, taps_len, up_factor, up_phase, down_factor, down_phase, block);
}
EngStatus MultirateFirInitF64(MRFSpec** spec, const double* taps, int taps_len, int up_factor,
                              int up_phase, int down_factor, int down_phase, unsigned char* block) {
  return Prepare(spec, taps, taps_len, up_factor, up_phase, down_factor, down_phase, block);
}

EngStatus MultirateFirF32(const float* src, float* dst, int iters, const MRFSpec* spec,
                          const float* dly_src, float* dly_dst, unsigned char* work) {
  return Filter(src, dst, iters, spec, dly_src, dly_dst, work);
}
EngStatus MultirateFirF64(const double* src, double* dst, int iters, const MRFSpec* spec,
                          const double* dly_src, double* dly_dst, unsigned char* work) {
  return Filter(src, dst, iters, spec, dly_src, dly_dst, work);
}
