// The window entry points, the same for the level kernels and the portable variant: each includer
// defines its own ApplySymmetric, which applies a weight formula to the whole vector, and
// ApplyByRecurrence, which walks the float raised-cosine windows' chains, and ApplyByAngleSum,
// which walks the long double raised-cosine windows block by block.
// Included inside namespace zal::engine::ZAL_LEVEL, after both.

namespace {

template <class T, RaisedCosine kKind>
ZAL_INLINE EngStatus RaisedCosineWindow(const T* src, T* dst, int n, double alpha) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (n < 3) return engStsSizeErr;
  if constexpr (sizeof(T) == 4) {
    ApplyByRecurrence(src, dst, n, MakeRaisedCosineRecurrence<kKind>(n, alpha));
  } else if (n >= kSumMinLength) {
    ApplyByAngleSum(src, dst, n, MakeAngleSum<kKind>(n, alpha));
  } else {
    ApplySymmetric(src, dst, n, MakePreciseRaisedCosine<kKind>(n, alpha));
  }
  return engStsNoErr;
}

template <class T>
ZAL_INLINE EngStatus KaiserWindow(const T* src, T* dst, int n, T alpha) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (KaiserTooBig(n, alpha)) return engStsHugeWinErr;
  if (n == 1) {
    dst[0] = src[0];
    return engStsNoErr;
  }
  ApplySymmetric(src, dst, n, MakeKaiser<sizeof(T) == 8>(n, alpha));
  return engStsNoErr;
}

}  // namespace

EngStatus WindowBartlettF32(const float* src, float* dst, int n) {
  if (const EngStatus status = Check(n, src, dst)) return status;
  if (n < 3) return engStsSizeErr;
  ApplySymmetric(src, dst, n, TriangleWeight{2.0 / (n - 1)});
  return engStsNoErr;
}

EngStatus WindowHannF32(const float* src, float* dst, int n) {
  return RaisedCosineWindow<float, RaisedCosine::kHann>(src, dst, n, 0);
}
EngStatus WindowHammingF32(const float* src, float* dst, int n) {
  return RaisedCosineWindow<float, RaisedCosine::kHamming>(src, dst, n, 0);
}
EngStatus WindowBlackmanF32(const float* src, float* dst, int n, float alpha) {
  return RaisedCosineWindow<float, RaisedCosine::kBlackman>(src, dst, n, alpha);
}
EngStatus WindowKaiserF32(const float* src, float* dst, int n, float alpha) {
  return KaiserWindow(src, dst, n, alpha);
}

EngStatus WindowHannF64(const double* src, double* dst, int n) {
  return RaisedCosineWindow<double, RaisedCosine::kHann>(src, dst, n, 0);
}
EngStatus WindowHammingF64(const double* src, double* dst, int n) {
  return RaisedCosineWindow<double, RaisedCosine::kHamming>(src, dst, n, 0);
}
EngStatus WindowBlackmanF64(const double* src, double* dst, int n, double alpha) {
  return RaisedCosineWindow<double, RaisedCosine::kBlackman>(src, dst, n, alpha);
}
EngStatus WindowKaiserF64(const double* src, double* dst, int n, double alpha) {
  return KaiserWindow(src, dst, n, alpha);
}
