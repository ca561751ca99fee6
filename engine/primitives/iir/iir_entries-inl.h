// The recursive filter's primitives, for a translation unit that has defined kSpecLevel (the tag
// its specs carry) and IIRVector<T>, then included iir_block-inl.h. Building and the delay line
// are baseline code; only the run is the level's.

#define ZAL_IIR_ENTRIES(T, E)                                                                \
  EngStatus IIRGetSize##E(int order, int* size) {                                            \
    return IIRBlockSize(1, order, sizeof(T), size);                                          \
  }                                                                                          \
  EngStatus IIRGetSizeBiQuad##E(int sections, int* size) {                                   \
    return IIRBlockSize(sections, 2, sizeof(T), size);                                       \
  }                                                                                          \
  EngStatus IIRInit##E(IIRSpec** spec, const T* taps, int order, const T* dly_line,          \
                       unsigned char* block) {                                               \
    return IIRPrepare(spec, kSpecLevel, 1, order, taps, dly_line, block);                    \
  }                                                                                          \
  EngStatus IIRInitBiQuad##E(IIRSpec** spec, const T* taps, int sections, const T* dly_line, \
                             unsigned char* block) {                                         \
    return IIRPrepare(spec, kSpecLevel, sections, 2, taps, dly_line, block);                 \
  }                                                                                          \
  EngStatus IIR##E(const T* src, T* dst, int n, IIRSpec* spec) {                             \
    return RunFilter<IIRVector<T>>(src, dst, n, spec, kSpecLevel);                           \
  }                                                                                          \
  EngStatus IIRGetDlyLine##E(const IIRSpec* spec, T* dly_line) {                             \
    return IIRReadDelayLine(spec, dly_line);                                                 \
  }                                                                                          \
  EngStatus IIRSetDlyLine##E(IIRSpec* spec, const T* dly_line) {                             \
    return IIRWriteDelayLine(spec, dly_line);                                                \
  }

#define ZAL_IIR_ALL_ENTRIES   \
  ZAL_IIR_ENTRIES(float, F32) \
  ZAL_IIR_ENTRIES(double, F64)
