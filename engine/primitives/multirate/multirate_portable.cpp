// The reference of the multirate family: each output a plain dot product of its phase's taps with
// the inputs, newest first, one rounding per product and per sum.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/simd/level_check-inl.h"

#include <cstddef>
#include <cstdint>

#include "engine/core/primitive_declarations.h"
#include "engine/primitives/multirate/multirate_spec.h"
#include "engine/simd/vec_common-inl.h"

namespace zal::engine::portable {
namespace {

template <class T>
constexpr int kWindowLanes = 1;

#include "engine/primitives/multirate/multirate_bank-inl.h"

template <class T>
void PolyphaseOutputs(const MRFSpec& spec, const T* x, T* dst, std::ptrdiff_t first,
                      std::ptrdiff_t end) {
  const int up = spec.up_factor;
  const int taps = spec.phase_taps;
  const T* bank = Bank<T>(spec) + spec.row_length - 1;
  for (std::ptrdiff_t m = first; m < end; ++m) {
    const int r = static_cast<int>(m % up);
    const T* row = bank + RowTable(spec)[r];
    const T* newest = x + (m / up) * spec.down_factor + BaseTable(spec)[r];
    T sum = T(0);
    for (int q = 0; q < taps; ++q) sum = sum + row[-q] * newest[-q];
    dst[m] = sum;
  }
}

}  // namespace

#include "engine/primitives/multirate/multirate_entries-inl.h"

}  // namespace zal::engine::portable

ZAL_MULTIRATE_PRIMITIVES(ZAL_CHECK_SHAPE)
