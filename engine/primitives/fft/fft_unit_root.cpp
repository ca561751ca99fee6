// Unit roots for the transform tables, computed once per preparation in extended precision: the
// tables' rounding is the only error they contribute.
#include <cmath>

#include "engine/primitives/fft/fft_spec.h"

namespace zal::engine {
namespace {

// The angle reduced to the first octant by the symmetries of sine and cosine, so that the
// extended evaluation never sees an argument above pi / 4.
void UnitRoot(long long k, long long n, long double* re, long double* im) {
  constexpr long double kTwoPi = 6.283185307179586476925286766559005768L;
  long long k8 = 8 * k;
  const bool lower_half = k8 < 4 * n;  // angle below pi
  if (!lower_half) k8 = 8 * n - k8;    // reflect: sin changes sign
  const bool first_quadrant = k8 < 2 * n;
  if (!first_quadrant) k8 = 4 * n - k8;  // pi - angle: cos changes sign
  const bool below_octant = k8 <= n;
  if (!below_octant) k8 = 2 * n - k8;  // pi / 2 - angle: cos and sin swap
  const long double angle = kTwoPi * static_cast<long double>(k8) / (8.0L * n);
  long double c = std::cos(angle);
  long double s = std::sin(angle);
  if (!below_octant) {
    const long double t = c;
    c = s;
    s = t;
  }
  if (!first_quadrant) c = -c;
  if (!lower_half) s = -s;
  *re = c;
  *im = -s;
}

}  // namespace

void FFTUnitRoot(long long k, long long n, double* re, double* im) {
  long double r;
  long double i;
  UnitRoot(k, n, &r, &i);
  *re = static_cast<double>(r);
  *im = static_cast<double>(i);
}

void FFTUnitRoot(long long k, long long n, float* re, float* im) {
  long double r;
  long double i;
  UnitRoot(k, n, &r, &i);
  *re = static_cast<float>(r);
  *im = static_cast<float>(i);
}

}  // namespace zal::engine
