// The reductions and complex-domain benchmark: what every contender implements, and the buffers
// the harness hands it. Each contender lives in its own translation unit, built with its own
// flags, and exposes one table of kernels; the harness allocates, fills, times and counts.
#pragma once

#include <array>
#include <complex>

namespace zal::bench::statistics {

struct Buffers {
  unsigned n;
  const float* a;                // n floats
  const float* b;                // n floats
  const std::complex<float>* z;  // n complex elements
  float* first;                  // n floats of output
  float* second;                 // n floats of output
};

enum Member {
  kSum,
  kDotProduct,
  kNormL2,
  kMaxIndex,
  kMinMaxIndex,
  kMagnitude,
  kPowerSpectr,
  kCartToPolar,
  kRead,  // the machine's read bandwidth: every byte of a loaded, nothing computed
  kMemberCount,
};

// One call of the member; results that are not stored go through benchmark::DoNotOptimize. A
// null kernel: the contender lacks the member.
using Kernel = void (*)(const Buffers& buffers);

struct Contender {
  const char* name;
  std::array<Kernel, kMemberCount> kernels;
};

Contender Ours();
Contender PlainLoops();
Contender EigenContender();
Contender VolkContender();

}  // namespace zal::bench::statistics
