// The vector layer of the level this translation unit is built for, with complex vectors and the
// elementwise loops on top. Kernels include this header only.
#pragma once

#if ZAL_LEVEL_INDEX >= 5
#include "engine/simd/vec_avx512-inl.h"
#include "engine/simd/vec_avx512_compare-inl.h"
#elif ZAL_LEVEL_INDEX >= 3
#include "engine/simd/vec_avx-inl.h"
#include "engine/simd/vec_avx_compare-inl.h"
#else
#include "engine/simd/vec_sse-inl.h"
#include "engine/simd/vec_sse_compare-inl.h"
#endif

#include "engine/simd/vec_complex-inl.h"
#include "engine/simd/vec_nan-inl.h"

// Last: the loops find Load, Store... of every element type by ordinary lookup.
#include "engine/simd/loops-inl.h"
