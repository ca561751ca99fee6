// The math kernels' report of elements outside their function's domain. Level kernels call this
// baseline function from their rare-lane paths, never from the vector fast path.
#pragma once

#include "zalaccelerate/core.h"

namespace zal::engine {

void ReportMathError(int index, EngStatus code, const char* tag);

}  // namespace zal::engine
