// The argument check every elementwise primitive makes before it touches memory: null pointers
// first, then the length. Included by the kernels and by the portable variants; each level's
// translation unit gets its own copy inside its own namespace.
#pragma once

#include "zalaccelerate/engine_status.h"

namespace zal::engine::ZAL_LEVEL {
namespace {

template <class... Pointers>
EngStatus Check(int n, const Pointers*... pointers) {
  if (!(pointers && ...)) return engStsNullPtrErr;
  return n <= 0 ? engStsSizeErr : engStsNoErr;
}

}  // namespace
}  // namespace zal::engine::ZAL_LEVEL
