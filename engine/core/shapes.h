// Function types shared by primitives. A kernel is declared through its shape at every level, so
// one whose signature drifts fails to compile.
#pragma once

#include "zalaccelerate/core.h"

namespace zal::engine {

// Accuracy class of a primitive, which the cross-level tests compare by.
enum class Accuracy {
  kService,  // no elementwise result: tested by its own contract
};

using Allocate = void*(int count);
using Release = void(void* block);
using SetFlushToZero = EngStatus(int flag, unsigned int* saved_underflow_mask);
using SetFlag = EngStatus(int flag);
using VersionQuery = const EngLibraryVersion*();

}  // namespace zal::engine
