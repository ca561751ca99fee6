// The engine API functions that are primitives themselves: each is its dispatcher.
#include "engine/core/dispatch.h"

using namespace zal::engine;

const EngLibraryVersion* engLibraryVersion() {
  return dispatch::LibraryVersion();
}

EngStatus engSetFlushToZeroMode(int flag, unsigned int* savedUnderflowMask) {
  return dispatch::SetFlushToZeroMode(flag, savedUnderflowMask);
}

EngStatus engSetDenormalsAreZeroMode(int flag) {
  return dispatch::SetDenormalsAreZeroMode(flag);
}
