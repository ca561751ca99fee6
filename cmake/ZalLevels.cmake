# The six kernel levels. Each kernel source is compiled once per level, with that level's
# instruction-set flags only, into the object library zal_engine_<level>.
set(ZAL_LEVELS sse2 ssse3 sse42 avx avx2 avx512)

if(MSVC)
  # MSVC has no switches below AVX; its x64 baseline is SSE2.
  set(ZAL_LEVEL_FLAGS_sse2 "")
  set(ZAL_LEVEL_FLAGS_ssse3 "")
  set(ZAL_LEVEL_FLAGS_sse42 "")
  set(ZAL_LEVEL_FLAGS_avx /arch:AVX)
  set(ZAL_LEVEL_FLAGS_avx2 /arch:AVX2)
  set(ZAL_LEVEL_FLAGS_avx512 /arch:AVX512)
  set(ZAL_LEVEL_OPTIMIZE /O2)
  # Run-time checks cannot be combined with /O2, which the kernels always build with.
  string(REGEX REPLACE "/RTC[1csu]*" "" CMAKE_CXX_FLAGS_DEBUG "${CMAKE_CXX_FLAGS_DEBUG}")
else()
  # Each list also switches off the next extension up, so that flags a user adds for the whole
  # build (say -march=native) cannot leak into a lower level.
  set(ZAL_LEVEL_FLAGS_sse2 -msse2 -mno-sse3)
  set(ZAL_LEVEL_FLAGS_ssse3 -mssse3 -mno-sse4.1)
  set(ZAL_LEVEL_FLAGS_sse42 -msse4.2 -mno-avx)
  set(ZAL_LEVEL_FLAGS_avx -mavx -mno-avx2 -mno-fma -mno-f16c)
  set(ZAL_LEVEL_FLAGS_avx2 -mavx2 -mfma -mbmi -mbmi2 -mno-avx512f)
  set(ZAL_LEVEL_FLAGS_avx512 -mavx2 -mfma -mbmi -mbmi2
    -mavx512f -mavx512cd -mavx512bw -mavx512dq -mavx512vl)
  # Kernels are optimised in every build type: -O0 keeps shared inline helpers as symbols.
  set(ZAL_LEVEL_OPTIMIZE -O2)
  if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Win64 aligns the stack to 16 bytes only, and MinGW GCC may spill ymm and zmm registers with
    # aligned moves: a fault on Windows whenever the slot is off a 32-byte boundary. Debian patches
    # its GCC to emit unaligned moves; for every other build, the assembler (binutils 2.38+) turns
    # each aligned move into its unaligned twin, which costs nothing on aligned data.
    # build.stack_vector_moves checks the objects.
    foreach(level IN LISTS ZAL_LEVELS)
      list(APPEND ZAL_LEVEL_FLAGS_${level} -Wa,-muse-unaligned-vector-move)
    endforeach()
  endif()
endif()

set(ZAL_LEVEL_INDEX_sse2 0)
set(ZAL_LEVEL_INDEX_ssse3 1)
set(ZAL_LEVEL_INDEX_sse42 2)
set(ZAL_LEVEL_INDEX_avx 3)
set(ZAL_LEVEL_INDEX_avx2 4)
set(ZAL_LEVEL_INDEX_avx512 5)

include(CheckCXXSourceCompiles)
foreach(level IN LISTS ZAL_LEVELS)
  set(CMAKE_REQUIRED_FLAGS "${ZAL_LEVEL_FLAGS_${level}}")
  string(REPLACE ";" " " CMAKE_REQUIRED_FLAGS "${CMAKE_REQUIRED_FLAGS}")
  check_cxx_source_compiles("#include <immintrin.h>\nint main() { return 0; }" ZAL_CAN_BUILD_${level})
  if(NOT ZAL_CAN_BUILD_${level})
    message(FATAL_ERROR "${CMAKE_CXX_COMPILER_ID} cannot build the ${level} level")
  endif()
endforeach()
unset(CMAKE_REQUIRED_FLAGS)

set(ZAL_GENERATED_DIR ${PROJECT_BINARY_DIR}/generated)

foreach(level IN LISTS ZAL_LEVELS)
  add_library(zal_engine_${level} OBJECT)
  target_compile_options(zal_engine_${level} PRIVATE ${ZAL_LEVEL_FLAGS_${level}} ${ZAL_LEVEL_OPTIMIZE})
  target_link_libraries(zal_engine_${level} PRIVATE zal_engine_headers)
endforeach()
add_library(zal_engine_portable OBJECT)
target_link_libraries(zal_engine_portable PRIVATE zal_engine_headers)

# zal_add_family(<name>): the kernels in engine/primitives/<name>/<name>-inl.h, one generated
# translation unit per level, and the family's portable variant <name>_portable.cpp.
function(zal_add_family family)
  set(dir ${PROJECT_SOURCE_DIR}/engine/primitives/${family})
  foreach(level IN LISTS ZAL_LEVELS)
    set(unit ${ZAL_GENERATED_DIR}/engine/${family}_${level}.cpp)
    file(CONFIGURE OUTPUT ${unit} CONTENT
"// Generated: the ${family} kernels at the ${level} level.
#define ZAL_LEVEL ${level}
#define ZAL_LEVEL_INDEX ${ZAL_LEVEL_INDEX_${level}}
#include \"engine/simd/level_check-inl.h\"
#include \"engine/primitives/${family}/${family}-inl.h\"
")
    target_sources(zal_engine_${level} PRIVATE ${unit})
  endforeach()
  target_sources(zal_engine_portable PRIVATE ${dir}/${family}_portable.cpp)
endfunction()
