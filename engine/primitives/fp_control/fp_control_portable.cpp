// The floating-point modes are one register write at any level: the baseline build of the kernel
// is its own reference.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/primitives/fp_control/fp_control-inl.h"
#include "engine/simd/level_check-inl.h"
