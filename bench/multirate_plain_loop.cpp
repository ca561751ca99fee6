// The polyphase loop a user writes for themselves, built with -O3 -march=native: per output, its
// phase's taps against the newest inputs, one sum per output, the history kept in front of the
// block in one buffer.
#include "bench/multirate_plain_loop.h"

#include <cstring>

namespace zal::bench::multirate {

template <class T>
void PlainPolyphase<T>::Run(const T* src, T* dst, int iters) {
  const int taps = phase_taps;
  T* x = buffer.data();
  std::memcpy(x + taps, src, sizeof(T) * static_cast<std::size_t>(iters) * down);
  T* newest_base = x + taps;
  for (int i = 0; i < iters; ++i) {
    for (int r = 0; r < up; ++r) {
      const int t = r * down;
      const T* newest = newest_base + i * down + t / up;
      const T* h = bank.data() + static_cast<std::size_t>(t % up) * taps;
      T acc = 0;
      for (int q = 0; q < taps; ++q) acc += h[q] * newest[-q];
      dst[i * up + r] = acc;
    }
  }
  std::memmove(x, x + static_cast<std::size_t>(iters) * down, sizeof(T) * taps);
}

template struct PlainPolyphase<float>;
template struct PlainPolyphase<double>;

}  // namespace zal::bench::multirate
