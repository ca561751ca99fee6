// Plain per-sample transposed-direct-form-II loops, as a user writes them, built for this machine
// (-O3 -march=native, multiply-adds contracted as the compiler's default allows).
#pragma once

namespace zal::bench::iir {

// Sections of 5 taps each (b0 b1 b2 a1 a2, normalised), 2 states each.
// Section by section over the block, the states in registers.
void PlainCascadeBySection(const float* taps, float* state, int sections, const float* src,
                           float* dst, int n);
void PlainCascadeBySection(const double* taps, double* state, int sections, const double* src,
                           double* dst, int n);
// Sample by sample through every section, so that sections overlap in the processor.
void PlainCascadeBySample(const float* taps, float* state, int sections, const float* src,
                          float* dst, int n);
void PlainCascadeBySample(const double* taps, double* state, int sections, const double* src,
                          double* dst, int n);
// A direct form of order `order`: b0..bN, a1..aN normalised, N states.
void PlainDirect(const float* taps, float* state, int order, const float* src, float* dst, int n);
void PlainDirect(const double* taps, double* state, int order, const double* src, double* dst,
                 int n);

}  // namespace zal::bench::iir
