// The fused multiply-add peak probe of the FIR benchmark.
#pragma once

#include <cstdint>

namespace zal::bench::fir {

// Float lanes of the widest fused multiply-add this processor has; 0 without one.
int PeakLanes();
// Runs `rounds` rounds of independent fused multiply-adds; returns a value to keep.
double PeakProbe(std::int64_t rounds);
// Floating-point operations per round (two per lane per fused multiply-add).
std::int64_t PeakFlopsPerRound();

}  // namespace zal::bench::fir
