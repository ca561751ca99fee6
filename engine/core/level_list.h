// The level tokens in level order; each names the namespace of that level's kernels.
#pragma once

#define ZAL_FOR_EACH_LEVEL(X) X(sse2) X(ssse3) X(sse42) X(avx) X(avx2) X(avx512)
