// Feature detection: the feature word as a pure function of a processor's identification.
#pragma once

#include <cstdint>

#include "engine/core/cpuid_source.h"

namespace zal::engine {

// False when the processor cannot be identified (no leaf 1).
bool DetectFeatures(const CpuidSource& cpu, std::uint64_t* features);

// Leaf 0's EBX, EDX, ECX name the reference vendor.
bool IsReferenceVendor(const CpuidSource& cpu);

// This processor's feature word, detected once and memoised; false when detection fails.
bool DetectedFeatures(std::uint64_t* features);

// Makes later detections answer `features` (the engine's check bypass).
void ReplaceDetectedFeatures(std::uint64_t features);

}  // namespace zal::engine
