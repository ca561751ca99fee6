// A one-lane stand-in for a vector, so that the transform's single source also runs one point at
// a time: the portable variant, and lengths below a level's lane count. Included inside a
// level namespace's anonymous namespace.

template <class T>
struct Scalar {
  T raw;
  static constexpr int kLanes = 1;
};

template <class T>
ZAL_INLINE Scalar<T> operator+(Scalar<T> a, Scalar<T> b) {
  return {a.raw + b.raw};
}
template <class T>
ZAL_INLINE Scalar<T> operator-(Scalar<T> a, Scalar<T> b) {
  return {a.raw - b.raw};
}
template <class T>
ZAL_INLINE Scalar<T> operator*(Scalar<T> a, Scalar<T> b) {
  return {a.raw * b.raw};
}
template <class T>
ZAL_INLINE Scalar<T> FusedMulAdd(Scalar<T> a, Scalar<T> b, Scalar<T> c) {
  return {a.raw * b.raw + c.raw};
}
template <class T>
ZAL_INLINE Scalar<T> FusedMulSub(Scalar<T> a, Scalar<T> b, Scalar<T> c) {
  return {a.raw * b.raw - c.raw};
}
