// The convolution family's entry points, the same for the level kernels and the portable variant:
// each includer defines ConvolveDirect, ConvolveTransform, WorkBytes<T>, DownSample and UpSample
// its own way.
// Included inside namespace zal::engine::ZAL_LEVEL (or portable), after those.

namespace {

// The checks in their order, the shorter operand first, then the planned method.
template <class T>
EngStatus Convolve(const T* a, int len_a, const T* b, int len_b, T* dst, int method,
                   unsigned char* work) {
  if (!a || !b || !dst) return engStsNullPtrErr;
  if (len_a <= 0 || len_b <= 0 || static_cast<long long>(len_a) + len_b - 1 > 0x7FFFFFFF) {
    return engStsSizeErr;
  }
  if (method < kConvolutionAuto || method > kConvolutionTransform) return engStsAlgTypeErr;
  const bool a_shorter = len_a <= len_b;
  const T* s = a_shorter ? a : b;
  const T* l = a_shorter ? b : a;
  const int m = a_shorter ? len_a : len_b;
  const int len_l = a_shorter ? len_b : len_a;
  const ConvolutionPlan plan = PlanConvolution(len_a, len_b, method);
  if (plan.method == kConvolutionDirect) {
    ConvolveDirect(s, m, l, len_l, dst);
    return engStsNoErr;
  }
  if (!work) return engStsNullPtrErr;
  return ConvolveTransform(s, m, l, len_l, dst, plan, work);
}

}  // namespace

EngStatus ConvolutionGetSize(int len_a, int len_b, int data_type, int method, int* bytes) {
  if (!bytes) return engStsNullPtrErr;
  if (len_a <= 0 || len_b <= 0 || static_cast<long long>(len_a) + len_b - 1 > 0x7FFFFFFF) {
    return engStsSizeErr;
  }
  if (data_type != kConvolutionDataF32 && data_type != kConvolutionDataF64) {
    return engStsDataTypeErr;
  }
  if (method < kConvolutionAuto || method > kConvolutionTransform) return engStsAlgTypeErr;
  const ConvolutionPlan plan = PlanConvolution(len_a, len_b, method);
  const long long single = WorkBytes<float>(plan);
  const long long twice = WorkBytes<double>(plan);
  if (single < 0 || twice < 0) return engStsFftOrderErr;
  // The float query also sizes double work buffers as that many doubles: at least half the
  // double method's bytes, in whole 8-byte units.
  long long needed = data_type == kConvolutionDataF32 ? single : twice;
  if (data_type == kConvolutionDataF32 && needed < (twice + 1) / 2) needed = (twice + 1) / 2;
  *bytes = static_cast<int>((needed + 7) / 8 * 8);
  return engStsNoErr;
}

EngStatus ConvolveF32(const float* a, int len_a, const float* b, int len_b, float* dst, int method,
                      unsigned char* work) {
  return Convolve(a, len_a, b, len_b, dst, method, work);
}
EngStatus ConvolveF64(const double* a, int len_a, const double* b, int len_b, double* dst,
                      int method, unsigned char* work) {
  return Convolve(a, len_a, b, len_b, dst, method, work);
}
EngStatus DownSampleF32(const float* src, int len, float* dst, int* dst_len, int factor,
                        int* phase) {
  return DownSample(src, len, dst, dst_len, factor, phase);
}
EngStatus DownSampleF64(const double* src, int len, double* dst, int* dst_len, int factor,
                        int* phase) {
  return DownSample(src, len, dst, dst_len, factor, phase);
}
EngStatus UpSampleF32(const float* src, int len, float* dst, int* dst_len, int factor, int* phase) {
  return UpSample(src, len, dst, dst_len, factor, phase);
}
EngStatus UpSampleF64(const double* src, int len, double* dst, int* dst_len, int factor,
                      int* phase) {
  return UpSample(src, len, dst, dst_len, factor, phase);
}
