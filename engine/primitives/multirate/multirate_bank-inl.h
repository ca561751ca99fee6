// Access to a prepared spec's rows and tables. Included inside a level namespace's anonymous
// namespace after kWindowLanes<T>: a phase's window is its taps rounded up to a multiple of it.

template <class T>
ZAL_INLINE const T* Bank(const MRFSpec& spec) {
  return reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(&spec) +
                                    spec.bank_offset);
}
ZAL_INLINE const int* RowTable(const MRFSpec& spec) {
  return reinterpret_cast<const int*>(reinterpret_cast<const unsigned char*>(&spec) +
                                      spec.rows_offset);
}
ZAL_INLINE const int* BaseTable(const MRFSpec& spec) {
  return reinterpret_cast<const int*>(reinterpret_cast<const unsigned char*>(&spec) +
                                      spec.bases_offset);
}

template <class T>
constexpr int WindowOf(const MRFSpec& spec) {
  return (spec.phase_taps + kWindowLanes<T> - 1) / kWindowLanes<T> * kWindowLanes<T>;
}
