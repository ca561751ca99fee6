// The reductions whose entry points only forward to the includer's own ExtremeValue, NormL1,
// NormL2 and DotProduct: the level kernels and the portable variant define those differently.
#define ZAL_STATISTICS_FORWARDED(T, E)                           \
  EngStatus Min##E(const T* src, int n, T* result) {             \
    return ExtremeValue<true>(src, n, result);                   \
  }                                                              \
  EngStatus Max##E(const T* src, int n, T* result) {             \
    return ExtremeValue<false>(src, n, result);                  \
  }                                                              \
  EngStatus NormL1##E(const T* src, int n, T* result) {          \
    return NormL1(src, n, result);                               \
  }                                                              \
  EngStatus NormL2##E(const T* src, int n, T* result) {          \
    return NormL2(src, n, result);                               \
  }                                                              \
  EngStatus DotProduct##E(const T* a, const T* b, int n, T* r) { \
    return DotProduct(a, b, n, r);                               \
  }

ZAL_STATISTICS_FORWARDED(float, F32)
ZAL_STATISTICS_FORWARDED(double, F64)
#undef ZAL_STATISTICS_FORWARDED
