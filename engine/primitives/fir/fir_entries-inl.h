// The FIR family's entry points that need nothing of a level: the size query and the lowpass
// design, both baseline code (fir_layout.cpp, fir_lowpass_design.cpp) behind each level's name.
// Included inside namespace zal::engine::ZAL_LEVEL (or portable).

EngStatus FIRGetSizeF32(int taps_len, int data_type, int* spec_size, int* work_size) {
  if (!spec_size || !work_size) return engStsNullPtrErr;
  if (data_type != kFIRDataTypeF32) return engStsDataTypeErr;
  return FIRSizes(taps_len, spec_size, work_size);
}

EngStatus FIRGenLowpassGetBufferSize(int taps_len, int* buffer_size) {
  return LowpassBufferBytes(taps_len, buffer_size);
}

EngStatus FIRGenLowpassF64(double rfreq, double* taps, int taps_len, int window, int normalize,
                           unsigned char* buffer) {
  return DesignLowpass(rfreq, taps, taps_len, window, normalize, buffer);
}
