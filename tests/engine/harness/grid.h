// The cases every row runs at every level: lengths, offsets, aliasing, values, and denormal and
// rounding modes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tests/engine/harness/values.h"

namespace zal::test::harness {

// Which source, if any, is the destination itself; or where the destination lies in a buffer it
// shares with the first source, a few elements below or above it (overlapping moves).
enum class Aliasing {
  kNone,
  kDstIsFirst,
  kDstIsSecond,
  kDstOverlapsBelowFirst,
  kDstOverlapsAboveFirst
};

struct Case {
  int n;
  int dst_offset;  // bytes past a 64-byte boundary, like the source offsets
  int source_offsets[2];
  Aliasing aliasing;
  ValueProfile profile;
  unsigned fp_modes;  // MXCSR FTZ, DAZ and rounding control bits in force during the call
  int variant;        // picks the constant operand and the scale, where the shape has them
  std::uint64_t seed;
};

struct GridShape {
  int element_bytes;
  std::span<const Aliasing> aliasings;  // the ones the shape allows, kNone first
  int variant_sweep;                    // variants worth running each at one length
  bool floating;
};

// The same cases on every run: the seeds derive from the row's name.
std::vector<Case> BuildGrid(const GridShape& shape, const char* row_name);

std::string Describe(const Case& c);

}  // namespace zal::test::harness
