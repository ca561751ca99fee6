// The SSE control and status register around a kernel call.
#pragma once

#include <xmmintrin.h>

namespace zal::test::harness {

inline constexpr unsigned kDenormalsAreZero = 0x40;
inline constexpr unsigned kFlushToZero = 0x8000;
// Everything but the sticky exception flags, which the arithmetic itself raises.
inline constexpr unsigned kMxcsrControl = 0xFFC0;

// Puts the given denormal modes in force (the rest as found) and restores the register on exit.
class DenormalModes {
 public:
  explicit DenormalModes(unsigned modes) : saved_(_mm_getcsr()) {
    _mm_setcsr((saved_ & ~(kFlushToZero | kDenormalsAreZero)) | modes);
  }
  ~DenormalModes() { _mm_setcsr(saved_); }
  DenormalModes(const DenormalModes&) = delete;
  DenormalModes& operator=(const DenormalModes&) = delete;

 private:
  unsigned saved_;
};

inline unsigned MxcsrControl() {
  return _mm_getcsr() & kMxcsrControl;
}

}  // namespace zal::test::harness
