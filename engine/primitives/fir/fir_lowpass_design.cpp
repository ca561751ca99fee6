// The windowed-sinc lowpass design: baseline code in double, shared by every level, since the
// design runs once per filter and its cost does not matter. The first half of the taps is
// computed and mirrored, so the taps are exactly symmetric.
#include <cmath>
#include <cstring>

#include "engine/primitives/fir/fir_spec.h"

namespace zal::engine {
namespace {

constexpr double kPi = 3.141592653589793238462643383279502884;

// The window weight at n of a symmetric window of length len, n in the first half. Codes beyond
// the four shapes leave the sinc unwindowed.
double WindowWeight(int window, int n, int len) {
  const double phase = 2.0 * kPi * n / (len - 1);
  switch (window) {
    case 0:
      return 2.0 * n / (len - 1);
    case 1:
      return 0.42 - 0.5 * std::cos(phase) + 0.08 * std::cos(2.0 * phase);
    case 2:
      return 0.54 - 0.46 * std::cos(phase);
    case 3:
      return 0.5 - 0.5 * std::cos(phase);
    default:
      return 1.0;
  }
}

double Sinc(double t) {
  return t == 0.0 ? 1.0 : std::sin(kPi * t) / (kPi * t);
}

}  // namespace

EngStatus DesignLowpass(double rfreq, double* taps, int taps_len, int window, int normalize,
                        unsigned char* buffer) {
  if (!taps || !buffer) return engStsNullPtrErr;
  if (taps_len < 5 || !(rfreq > 0.0 && rfreq < 0.5)) return engStsSizeErr;
  // The window goes through the caller's scratch, one double per tap, whatever its alignment.
  for (int n = 0; 2 * n < taps_len; ++n) {
    const double w = WindowWeight(window, n, taps_len);
    std::memcpy(buffer + 8 * n, &w, sizeof w);
  }
  const double centre = (taps_len - 1) / 2.0;
  for (int n = 0; 2 * n < taps_len; ++n) {
    double w;
    std::memcpy(&w, buffer + 8 * n, sizeof w);
    const double h = 2.0 * rfreq * Sinc(2.0 * rfreq * (n - centre)) * w;
    taps[n] = h;
    taps[taps_len - 1 - n] = h;
  }
  if (normalize) {
    double sum = 0.0;
    for (int n = 0; n < taps_len; ++n) sum += taps[n];
    for (int n = 0; n < taps_len; ++n) taps[n] /= sum;
  }
  return engStsNoErr;
}

}  // namespace zal::engine
