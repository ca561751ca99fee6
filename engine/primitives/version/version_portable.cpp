// The version record has no vector form: the baseline build is its own reference.
#define ZAL_LEVEL portable
#define ZAL_LEVEL_INDEX 0
#include "engine/primitives/version/version-inl.h"
#include "engine/simd/level_check-inl.h"
