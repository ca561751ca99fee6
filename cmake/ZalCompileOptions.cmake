# Options every target of the project compiles with. Floating point stays strict: no contraction
# of a*b+c into FMA behind the kernels' back, and never fast-math, so that exact primitives give
# the same bits at every level.
add_library(zal_compile_options INTERFACE)
if(MSVC)
  target_compile_options(zal_compile_options INTERFACE /W4 /fp:precise /permissive- /Zc:__cplusplus)
  if(ZAL_WERROR)
    target_compile_options(zal_compile_options INTERFACE /WX)
  endif()
else()
  target_compile_options(zal_compile_options INTERFACE -Wall -Wextra -ffp-contract=off)
  if(ZAL_WERROR)
    target_compile_options(zal_compile_options INTERFACE -Werror)
  endif()
endif()

# MinGW: the GCC runtime, libstdc++ and winpthread linked in, so that the DLL and the test
# programs need no DLL beyond the system's.
if(MINGW)
  target_link_options(zal_compile_options INTERFACE -static)
endif()

if(ZAL_SANITIZE)
  target_compile_options(zal_compile_options INTERFACE
    -fsanitize=${ZAL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(zal_compile_options INTERFACE -fsanitize=${ZAL_SANITIZE})
endif()
