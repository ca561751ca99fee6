// Allocation has no vector form: the baseline build of its kernel is its own reference.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/primitives/memory/memory-inl.h"
#include "engine/simd/level_check-inl.h"
