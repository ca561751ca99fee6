// The polyphase filter kernel, written once against the vector layer. Each output is the dot
// product of its phase's row with the window of inputs ending at its newest one; four outputs run
// side by side (four independent accumulator chains, each tap and input load feeding one fused
// step) and their lane sums come out of one transpose. The inserted zeros are never multiplied:
// a row holds only the taps that meet real inputs.
// Included once per level translation unit, inside which ZAL_LEVEL names the level.

#include <cstddef>
#include <cstdint>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/multirate/multirate_spec.h"
#include "engine/simd/vec-inl.h"

// After the vector layer, whose registers it takes apart.
#include "engine/primitives/multirate/multirate_sums-inl.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

template <class T>
constexpr int kWindowLanes = VectorOf<T>::kLanes;

#include "engine/primitives/multirate/multirate_bank-inl.h"

template <class T>
void PolyphaseOutputs(const MRFSpec& spec, const T* x, T* dst, std::ptrdiff_t first,
                      std::ptrdiff_t end) {
  using V = VectorOf<T>;
  constexpr int kLanes = V::kLanes;
  const int up = spec.up_factor;
  const int down = spec.down_factor;
  const int window = WindowOf<T>(spec);
  const T* bank = Bank<T>(spec) + (spec.row_length - window);
  const int* rows = RowTable(spec);
  const int* bases = BaseTable(spec);
  // The period of the next output, as its first input, and the output's place in the period.
  const T* period = x + (first / up) * down - (window - 1);
  int r = static_cast<int>(first % up);
  const auto next = [&](const T*& taps, const T*& inputs) {
    taps = bank + rows[r];
    inputs = period + bases[r];
    if (++r == up) {
      r = 0;
      period += down;
    }
  };
  std::ptrdiff_t m = first;
  for (; m + 4 <= end; m += 4) {
    const T *h0, *h1, *h2, *h3, *x0, *x1, *x2, *x3;
    next(h0, x0);
    next(h1, x1);
    next(h2, x2);
    next(h3, x3);
    V a0 = Load(h0) * Load(x0);
    V a1 = Load(h1) * Load(x1);
    V a2 = Load(h2) * Load(x2);
    V a3 = Load(h3) * Load(x3);
    for (int i = kLanes; i < window; i += kLanes) {
      a0 = MulAdd(Load(h0 + i), Load(x0 + i), a0);
      a1 = MulAdd(Load(h1 + i), Load(x1 + i), a1);
      a2 = MulAdd(Load(h2 + i), Load(x2 + i), a2);
      a3 = MulAdd(Load(h3 + i), Load(x3 + i), a3);
    }
    StoreSums(dst + m, a0, a1, a2, a3);
  }
  for (; m < end; ++m) {
    const T *h, *in;
    next(h, in);
    V a = Load(h) * Load(in);
    for (int i = kLanes; i < window; i += kLanes) a = MulAdd(Load(h + i), Load(in + i), a);
    alignas(64) T sums[4];
    const V zero = Broadcast(T(0));
    StoreSums(sums, a, zero, zero, zero);
    dst[m] = sums[0];
  }
}

}  // namespace

#include "engine/primitives/multirate/multirate_entries-inl.h"

}  // namespace zal::engine::ZAL_LEVEL

ZAL_MULTIRATE_PRIMITIVES(ZAL_CHECK_SHAPE)
