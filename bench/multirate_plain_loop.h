// The plain polyphase loop of bench/multirate_bench.cpp, in a translation unit of its own built
// for this machine.
#pragma once

#include <cstddef>
#include <vector>

namespace zal::bench::multirate {

// Phases 0, taps grouped by phase (bank[p * phase_taps + q] = h[p + up q]); `buffer` holds the
// last phase_taps inputs, then room for a block.
template <class T>
struct PlainPolyphase {
  int up;
  int down;
  int phase_taps;
  std::vector<T> bank;
  std::vector<T> buffer;
  void Run(const T* src, T* dst, int iters);
};

}  // namespace zal::bench::multirate
