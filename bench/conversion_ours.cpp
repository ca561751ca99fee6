// The library's conversions, dispatched (the harness selects the level).
#include "bench/conversion_contenders.h"
#include "zalaccelerate/utility.h"

namespace zal::bench::conversion {
namespace {

namespace u = zalaccelerate::utility;
using zalcore::utility::int24_t;

template <class T>
const T* Source(const Buffers& b) {
  return static_cast<const T*>(b.src);
}
template <class T>
T* Destination(const Buffers& b) {
  return static_cast<T*>(b.dst);
}

// A plain deinterleaving loop over converted floats.
void Deinterleave(const float* src, float* const* dst, unsigned channels, unsigned frames) {
  for (unsigned f = 0; f < frames; ++f) {
    for (unsigned c = 0; c < channels; ++c) dst[c][f] = src[f * channels + c];
  }
}

}  // namespace

Contender OursContender() {
  Contender c{"ours", "zalaccelerate, dispatched", {}};
  c.kernels[kS16ToF32] = [](const Buffers& b) {
    u::Convert(b.n, Source<short>(b), Destination<float>(b), kScale16);
  };
  c.kernels[kF32ToS16] = [](const Buffers& b) {
    u::Convert(b.n, Source<float>(b), Destination<short>(b), -kScale16, true);
  };
  c.kernels[kS32ToF32] = [](const Buffers& b) {
    u::Convert(b.n, Source<int>(b), Destination<float>(b), kScale32);
  };
  c.kernels[kF32ToS32] = [](const Buffers& b) {
    u::Convert(b.n, Source<float>(b), Destination<int>(b), -kScale32, true);
  };
  c.kernels[kS24ToF32] = [](const Buffers& b) {
    u::Convert(b.n, Source<int24_t>(b), Destination<float>(b), kScale24);
  };
  c.kernels[kS24ToF32Unscaled] = [](const Buffers& b) {
    u::Convert(b.n, Source<int24_t>(b), Destination<float>(b), 0);
  };
  c.kernels[kF32ToS24Truncate] = [](const Buffers& b) {
    u::Convert(b.n, Source<float>(b), Destination<int24_t>(b), -kScale24, false);
  };
  c.kernels[kF32ToS24Round] = [](const Buffers& b) {
    u::Convert(b.n, Source<float>(b), Destination<int24_t>(b), -kScale24, true);
  };
  c.kernels[kF16ToF32] = [](const Buffers& b) {
    u::ConvertHalf2Float(const_cast<unsigned short*>(Source<unsigned short>(b)),
                         Destination<float>(b), b.n);
  };
  c.kernels[kF32ToF16] = [](const Buffers& b) {
    u::ConvertFloat2Half(const_cast<float*>(Source<float>(b)), Destination<unsigned short>(b), b.n);
  };
  c.kernels[kF32ToF64] = [](const Buffers& b) {
    u::Convert(b.n, Source<float>(b), Destination<double>(b));
  };
  c.kernels[kF64ToF32] = [](const Buffers& b) {
    u::Convert(b.n, Source<double>(b), Destination<float>(b));
  };
  c.kernels[kDeinterleaveS16x2] = [](const Buffers& b) {
    u::DeinterleaveConvert(2, b.n / 2, Source<short>(b), b.planar, kScale16);
  };
  c.kernels[kDeinterleaveS24x6] = [](const Buffers& b) {
    u::DeinterleaveConvert(6, b.n / 6, Source<int24_t>(b), b.planar, kScale24);
  };
  return c;
}

Contender TwoPassContender() {
  Contender c{
      "two-pass", "Convert into a whole-length float buffer, then a plain deinterleaving loop", {}};
  c.kernels[kDeinterleaveS16x2] = [](const Buffers& b) {
    u::Convert(b.n, Source<short>(b), Destination<float>(b), kScale16);
    Deinterleave(Destination<float>(b), b.planar, 2, b.n / 2);
  };
  c.kernels[kDeinterleaveS24x6] = [](const Buffers& b) {
    u::Convert(b.n, Source<int24_t>(b), Destination<float>(b), kScale24);
    Deinterleave(Destination<float>(b), b.planar, 6, b.n / 6);
  };
  return c;
}

}  // namespace zal::bench::conversion
