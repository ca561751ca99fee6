// How the exported fronts hand their arguments to the engine. Internal: not installed.
#pragma once

#include <complex>

#include "engine/core/shapes.h"

namespace zalaccelerate::engine_arguments {

// Lengths of 2^31 and more arrive negative, and the engine refuses them.
inline int Length(unsigned int len) {
  return static_cast<int>(len);
}

// The engine's view of the caller's types: std::complex is layout-compatible with {re, im}.
inline const float* Engine(const float* p) {
  return p;
}
inline float* Engine(float* p) {
  return p;
}
inline const double* Engine(const double* p) {
  return p;
}
inline double* Engine(double* p) {
  return p;
}
inline const zal::engine::Complex32* Engine(const std::complex<float>* p) {
  return reinterpret_cast<const zal::engine::Complex32*>(p);
}
inline zal::engine::Complex32* Engine(std::complex<float>* p) {
  return reinterpret_cast<zal::engine::Complex32*>(p);
}
inline const zal::engine::Complex64* Engine(const std::complex<double>* p) {
  return reinterpret_cast<const zal::engine::Complex64*>(p);
}
inline zal::engine::Complex64* Engine(std::complex<double>* p) {
  return reinterpret_cast<zal::engine::Complex64*>(p);
}

}  // namespace zalaccelerate::engine_arguments
