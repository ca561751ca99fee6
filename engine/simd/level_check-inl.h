// Fails the build when a level translation unit is compiled with flags other than its level's:
// too few would break its kernels, too many would let the compiler emit instructions that a
// processor of that level lacks. MSVC offers no macros below AVX, so only its /arch is checked.

#if !defined(ZAL_LEVEL) || !defined(ZAL_LEVEL_INDEX)
#error "a level translation unit defines ZAL_LEVEL and ZAL_LEVEL_INDEX"
#endif

#if defined(_MSC_VER) && !defined(__clang__)
#define ZAL_HAS_SSSE3 (ZAL_LEVEL_INDEX >= 1)
#define ZAL_HAS_SSE42 (ZAL_LEVEL_INDEX >= 2)
#else
#if defined(__SSSE3__)
#define ZAL_HAS_SSSE3 1
#else
#define ZAL_HAS_SSSE3 0
#endif
#if defined(__SSE4_2__)
#define ZAL_HAS_SSE42 1
#else
#define ZAL_HAS_SSE42 0
#endif
#endif

#if defined(__AVX__)
#define ZAL_HAS_AVX 1
#else
#define ZAL_HAS_AVX 0
#endif
#if defined(__AVX2__) && (defined(__FMA__) || defined(_MSC_VER))
#define ZAL_HAS_AVX2 1
#else
#define ZAL_HAS_AVX2 0
#endif
#if defined(__AVX512F__) && defined(__AVX512CD__) && defined(__AVX512BW__) && \
    defined(__AVX512DQ__) && defined(__AVX512VL__)
#define ZAL_HAS_AVX512 1
#else
#define ZAL_HAS_AVX512 0
#endif

#if ZAL_HAS_SSSE3 != (ZAL_LEVEL_INDEX >= 1) || ZAL_HAS_SSE42 != (ZAL_LEVEL_INDEX >= 2) || \
    ZAL_HAS_AVX != (ZAL_LEVEL_INDEX >= 3) || ZAL_HAS_AVX2 != (ZAL_LEVEL_INDEX >= 4) ||    \
    ZAL_HAS_AVX512 != (ZAL_LEVEL_INDEX >= 5)
#error "this translation unit's instruction-set flags do not match its level"
#endif
#if !defined(_M_X64) && !defined(__SSE2__)
#error "every level needs SSE2"
#endif
#if !defined(_MSC_VER) && ZAL_LEVEL_INDEX == 0 && defined(__SSE3__)
#error "level 0 must not assume SSE3"
#endif
#if !defined(_MSC_VER) && ZAL_LEVEL_INDEX == 3 && (defined(__FMA__) || defined(__F16C__))
#error "the AVX level has no FMA"
#endif

#undef ZAL_HAS_SSSE3
#undef ZAL_HAS_SSE42
#undef ZAL_HAS_AVX
#undef ZAL_HAS_AVX2
#undef ZAL_HAS_AVX512
