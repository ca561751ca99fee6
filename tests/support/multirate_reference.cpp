#include "tests/support/multirate_reference.h"

#include <cmath>
#include <cstddef>

namespace zal::test {

template <class T>
std::vector<long double> MultirateReference(const MultirateCase& c, const std::vector<T>& taps,
                                            const std::vector<T>& history,
                                            const std::vector<T>& inputs, int iters,
                                            std::vector<long double>* magnitude) {
  // The upsampled stream starts with the history: input j (history counted negative) sits at
  // (j + |history|) up + up_phase, and the call's time 0 at |history| up.
  const std::ptrdiff_t before = static_cast<std::ptrdiff_t>(history.size());
  const std::ptrdiff_t count = before + static_cast<std::ptrdiff_t>(iters) * c.down;
  std::vector<long double> upsampled(static_cast<std::size_t>(count * c.up), 0.0L);
  for (std::ptrdiff_t j = 0; j < count; ++j) {
    const T x = j < before ? history[j] : inputs[j - before];
    upsampled[j * c.up + c.up_phase] = x;
  }
  const std::ptrdiff_t origin = before * c.up;
  const std::ptrdiff_t outputs = static_cast<std::ptrdiff_t>(iters) * c.up;
  std::vector<long double> y(static_cast<std::size_t>(outputs));
  magnitude->assign(y.size(), 0.0L);
  for (std::ptrdiff_t m = 0; m < outputs; ++m) {
    const std::ptrdiff_t t = origin + m * c.down + c.down_phase;
    long double sum = 0;
    long double size = 0;
    for (std::ptrdiff_t k = 0; k < c.taps_len && k <= t; ++k) {
      const long double term = static_cast<long double>(taps[k]) * upsampled[t - k];
      sum += term;
      size += std::fabs(term);
    }
    y[m] = sum;
    (*magnitude)[m] = size;
  }
  return y;
}

template std::vector<long double> MultirateReference(const MultirateCase&,
                                                     const std::vector<float>&,
                                                     const std::vector<float>&,
                                                     const std::vector<float>&, int,
                                                     std::vector<long double>*);
template std::vector<long double> MultirateReference(const MultirateCase&,
                                                     const std::vector<double>&,
                                                     const std::vector<double>&,
                                                     const std::vector<double>&, int,
                                                     std::vector<long double>*);

}  // namespace zal::test
