// The memory of one cross-level case, filled from its seed.
#pragma once

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tests/engine/harness/buffers.h"
#include "tests/engine/harness/grid.h"
#include "tests/engine/harness/shape_drivers.h"
#include "tests/engine/harness/values.h"

namespace zal::test::harness {

inline constexpr int kScaleCount = static_cast<int>(std::size(kScales));

template <class T>
bool SameBytes(std::span<const T> a, std::span<const T> b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size_bytes()) == 0);
}

// Whether `values` is `period` over and over.
template <class T>
bool Repeats(std::span<const T> values, std::span<const T> period) {
  for (std::size_t start = 0; start < values.size(); start += period.size()) {
    const std::size_t length = std::min(values.size() - start, period.size());
    if (!SameBytes<T>(values.subspan(start, length), period.first(length))) return false;
  }
  return true;
}

// The kernel's destination covers the whole length; the portable variant's only one period:
// operands repeat with kRepeatPeriod and the shapes are elementwise, so one period of the
// portable result stands for every period of the kernel's. Shapes whose results are not
// elementwise run the portable variant over the whole length instead, and reductions get a few
// result cells as destination. Sources that are the destination itself are not allocated. The
// constant has a cell of its own, so that AddressSanitizer sees a read past it. A destination
// overlapping the first source shares one buffer of n + shift elements with it, and the portable
// variant runs over a copy of the whole buffer.
template <class T>
class CaseMemory {
 public:
  CaseMemory(const Case& c, int sources, ConstantKind constant_kind, bool whole_length = false,
             int result_cells = 0)
      : case_(c),
        shift_(OverlapShift(c)),
        period_(std::min(c.n, kRepeatPeriod)),
        portable_n_(whole_length || shift_ ? c.n : period_),
        got_(result_cells ? result_cells : c.n + shift_, c.dst_offset, true),
        expected_(result_cells ? result_cells : portable_n_ + shift_, c.dst_offset, false),
        constant_(1, 0, false) {
    Random random(c.seed);
    Fill(got_.Elements(), c.profile, random);
    std::copy_n(got_.Data(), expected_.Elements().size(), expected_.Data());
    for (int i = 0; i < sources; ++i) {
      if (IsDst(i)) continue;
      sources_[i].emplace(c.n, c.source_offsets[i], false);
      Fill(sources_[i]->Elements(), c.profile, random);
      originals_[i].assign(sources_[i]->Data(), sources_[i]->Data() + period_);
    }
    const int variant =
        constant_kind == ConstantKind::kScaled ? c.variant / kScaleCount : c.variant;
    constant_.Data()[0] =
        constant_kind == ConstantKind::kNone ? T{} : ConstantOperand<T>(variant, c.profile, random);
    original_constant_ = constant_.Data()[0];
    scale_ = constant_kind == ConstantKind::kScaled ? kScales[c.variant % kScaleCount] : 0;
    // Drawn last, so that the shapes with one constant see the same values as before it existed.
    second_constant_ = constant_kind == ConstantKind::kNone
                           ? T{}
                           : ConstantOperand<T>(variant + kConstantVariants / 2, c.profile, random);
  }

  Operands<T> KernelOperands() const { return OperandsFor(got_, case_.n); }
  Operands<T> PortableOperands() const { return OperandsFor(expected_, portable_n_); }

  std::span<const T> Got() const { return got_.Elements(); }
  std::span<const T> Expected() const { return expected_.Elements(); }

  // Empty when the call left everything but the destination's [0, n) alone.
  std::string Disturbance() const {
    if (!got_.CanariesIntact()) return "wrote outside the destination";
    for (int i = 0; i < 2; ++i) {
      if (sources_[i] && !Repeats<T>(sources_[i]->Elements(), originals_[i])) {
        return i == 0 ? "changed the first source" : "changed the second source";
      }
    }
    if (std::memcmp(constant_.Data(), &original_constant_, sizeof(T)) != 0) {
      return "changed the constant";
    }
    return {};
  }

 private:
  // Elements between an overlapping destination and the first source: 1 up to 96, and below n
  // where n allows, drawn from the seed; 0 without overlap.
  static int OverlapShift(const Case& c) {
    if (c.aliasing != Aliasing::kDstOverlapsBelowFirst &&
        c.aliasing != Aliasing::kDstOverlapsAboveFirst) {
      return 0;
    }
    const int span = std::max(1, std::min(c.n - 1, 96));
    return 1 + static_cast<int>(c.seed % static_cast<std::uint64_t>(span));
  }

  bool IsDst(int source) const {
    return (case_.aliasing == Aliasing::kDstIsFirst && source == 0) ||
           (case_.aliasing == Aliasing::kDstIsSecond && source == 1) || (shift_ && source == 0);
  }

  const T* Source(int i, const Vector<T>& buffer) const {
    if (IsDst(i)) {
      return case_.aliasing == Aliasing::kDstOverlapsBelowFirst ? buffer.Data() + shift_
                                                                : buffer.Data();
    }
    return sources_[i] ? sources_[i]->Data() : nullptr;
  }

  T* Destination(const Vector<T>& buffer) const {
    return case_.aliasing == Aliasing::kDstOverlapsAboveFirst ? buffer.Data() + shift_
                                                              : buffer.Data();
  }

  Operands<T> OperandsFor(const Vector<T>& dst, int n) const {
    Operands<T> operands{Source(0, dst), Source(1, dst), constant_.Data(), Destination(dst)};
    operands.constant = constant_.Data()[0];
    operands.n = n;
    operands.scale = scale_;
    operands.second_constant = second_constant_;
    return operands;
  }

  Case case_;
  int shift_;
  int period_;
  int portable_n_;
  Vector<T> got_;
  Vector<T> expected_;
  Vector<T> constant_;
  std::optional<Vector<T>> sources_[2];
  std::vector<T> originals_[2];
  T original_constant_{};
  int scale_ = 0;
  T second_constant_{};
};

}  // namespace zal::test::harness
