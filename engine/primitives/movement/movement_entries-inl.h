// The data-movement entry points, the same for the level kernels and the portable variant: each
// includer defines CopyElements, MoveElements, SetElements, ClearElements, ReverseElements and
// SwapElements its own way.
// Included inside namespace zal::engine::ZAL_LEVEL, after those.

#define ZAL_COPY_ENTRIES(T, E)                     \
  EngStatus Copy##E(const T* src, T* dst, int n) { \
    return CopyElements(src, dst, n);              \
  }
#define ZAL_MOVE_ENTRIES(T, E)                     \
  EngStatus Move##E(const T* src, T* dst, int n) { \
    return MoveElements(src, dst, n);              \
  }
#define ZAL_FILL_ENTRIES(T, E)               \
  EngStatus Set##E(T value, T* dst, int n) { \
    return SetElements(value, dst, n);       \
  }
#define ZAL_CLEAR_ENTRIES(T, E)      \
  EngStatus Zero##E(T* dst, int n) { \
    return ClearElements(dst, n);    \
  }
#define ZAL_REVERSE_ENTRIES(T, E)                  \
  EngStatus Flip##E(const T* src, T* dst, int n) { \
    return ReverseElements(src, dst, n);           \
  }
#define ZAL_SWAP_ENTRIES(T, E)                          \
  EngStatus SwapBytes##E(const T* src, T* dst, int n) { \
    return SwapElements(src, dst, n);                   \
  }                                                     \
  EngStatus SwapBytes##E##InPlace(T* src_dst, int n) {  \
    return SwapElements(src_dst, src_dst, n);           \
  }

ZAL_COPY_ENTRIES(unsigned char, U8)
ZAL_COPY_ENTRIES(short, S16)
ZAL_COPY_ENTRIES(std::uint32_t, U32)
ZAL_COPY_ENTRIES(float, F32)
ZAL_COPY_ENTRIES(double, F64)
ZAL_MOVE_ENTRIES(unsigned char, U8)
ZAL_MOVE_ENTRIES(short, S16)
ZAL_MOVE_ENTRIES(std::uint32_t, U32)
ZAL_MOVE_ENTRIES(double, F64)
ZAL_FILL_ENTRIES(unsigned char, U8)
ZAL_FILL_ENTRIES(short, S16)
ZAL_FILL_ENTRIES(std::int32_t, S32)
ZAL_FILL_ENTRIES(float, F32)
ZAL_FILL_ENTRIES(double, F64)
ZAL_CLEAR_ENTRIES(unsigned char, U8)
ZAL_CLEAR_ENTRIES(short, S16)
ZAL_CLEAR_ENTRIES(float, F32)
ZAL_CLEAR_ENTRIES(double, F64)
ZAL_REVERSE_ENTRIES(float, F32)
ZAL_REVERSE_ENTRIES(double, F64)
ZAL_SWAP_ENTRIES(std::uint16_t, U16)
ZAL_SWAP_ENTRIES(Int24, U24)
ZAL_SWAP_ENTRIES(std::uint32_t, U32)
ZAL_SWAP_ENTRIES(std::uint64_t, U64)

#undef ZAL_COPY_ENTRIES
#undef ZAL_MOVE_ENTRIES
#undef ZAL_FILL_ENTRIES
#undef ZAL_CLEAR_ENTRIES
#undef ZAL_REVERSE_ENTRIES
#undef ZAL_SWAP_ENTRIES
