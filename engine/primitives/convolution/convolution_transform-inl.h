// The convolution's real transforms, bound to the includer's own level of the FFT primitives:
// their sizes, preparation and the in-place forward and inverse runs, and the work layout built
// on them. Included inside namespace zal::engine::ZAL_LEVEL (or portable), in its anonymous
// namespace.

// The transform's algorithm hint: fast.
inline constexpr int kFastHint = 1;

EngStatus RealSizes(float, int order, int* spec, int* init, int* work) {
  return FFTGetSizeRealF32(order, kFFTDivInvByN, kFastHint, spec, init, work);
}
EngStatus RealSizes(double, int order, int* spec, int* init, int* work) {
  return FFTGetSizeRealF64(order, kFFTDivInvByN, kFastHint, spec, init, work);
}
EngStatus RealPrepare(float, FFTSpec** spec, int order, unsigned char* block) {
  return FFTInitRealF32(spec, order, kFFTDivInvByN, kFastHint, block, nullptr);
}
EngStatus RealPrepare(double, FFTSpec** spec, int order, unsigned char* block) {
  return FFTInitRealF64(spec, order, kFFTDivInvByN, kFastHint, block, nullptr);
}
EngStatus Forward(float* data, const FFTSpec* spec, unsigned char* scratch) {
  return FFTFwdRealF32(data, data, spec, scratch);
}
EngStatus Forward(double* data, const FFTSpec* spec, unsigned char* scratch) {
  return FFTFwdRealF64(data, data, spec, scratch);
}
EngStatus Inverse(float* data, const FFTSpec* spec, unsigned char* scratch) {
  return FFTInvRealF32(data, data, spec, scratch);
}
EngStatus Inverse(double* data, const FFTSpec* spec, unsigned char* scratch) {
  return FFTInvRealF64(data, data, spec, scratch);
}

// The work layout of one element type and block order; false when the transform is not offered.
template <class T>
bool LayOut(int order, ConvolutionLayout* layout, int* spec_bytes) {
  int init_bytes;
  int scratch_bytes;
  if (RealSizes(T(0), order, spec_bytes, &init_bytes, &scratch_bytes) || init_bytes != 0) {
    return false;
  }
  *layout = LayOutConvolution(order, *spec_bytes, scratch_bytes, static_cast<int>(sizeof(T)));
  return true;
}
