#include "engine/core/dispatch.h"

namespace zal::engine {

std::atomic<std::int32_t> g_dispatch_index{-1};

DispatchTables g_dispatch_tables = {
#define ZAL_DISPATCH_ROW(family, name, shape, accuracy)   \
  {&Dispatcher<&DispatchTables::name, shape>::Initialise, \
   &sse2::name,                                           \
   &ssse3::name,                                          \
   &sse42::name,                                          \
   &avx::name,                                            \
   &avx2::name,                                           \
   &avx512::name,                                         \
   nullptr},
    ZAL_PRIMITIVES(ZAL_DISPATCH_ROW)
#undef ZAL_DISPATCH_ROW
};

}  // namespace zal::engine
