// The SSE control and status register around a kernel call.
#pragma once

#include <xmmintrin.h>

namespace zal::test::harness {

inline constexpr unsigned kDenormalsAreZero = 0x40;
inline constexpr unsigned kFlushToZero = 0x8000;
// The rounding control field and its four modes.
inline constexpr unsigned kRoundingControl = 0x6000;
inline constexpr unsigned kRoundToNearest = 0x0000;
inline constexpr unsigned kRoundDown = 0x2000;
inline constexpr unsigned kRoundUp = 0x4000;
inline constexpr unsigned kRoundTowardZero = 0x6000;
inline constexpr unsigned kRoundingModes[] = {kRoundToNearest, kRoundDown, kRoundUp,
                                              kRoundTowardZero};
// Everything but the sticky exception flags, which the arithmetic itself raises.
inline constexpr unsigned kMxcsrControl = 0xFFC0;

// Puts the given denormal and rounding modes in force (the rest as found) and restores the
// register on exit.
class FpModes {
 public:
  explicit FpModes(unsigned modes) : saved_(_mm_getcsr()) {
    _mm_setcsr((saved_ & ~(kFlushToZero | kDenormalsAreZero | kRoundingControl)) | modes);
  }
  ~FpModes() { _mm_setcsr(saved_); }
  FpModes(const FpModes&) = delete;
  FpModes& operator=(const FpModes&) = delete;

 private:
  unsigned saved_;
};

inline unsigned MxcsrControl() {
  return _mm_getcsr() & kMxcsrControl;
}

}  // namespace zal::test::harness
