#include "engine/core/dispatch.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {

namespace dispatch = zal::engine::dispatch;

void SetFlushDenormalsToZero(bool enable) {
  dispatch::SetFlushToZeroMode(enable ? 1 : 0, nullptr);
}
void SetDenormalsAreZero(bool enable) {
  dispatch::SetDenormalsAreZeroMode(enable ? 1 : 0);
}
void SetDenormalExceptionsEnabled(bool) {}

// Deliberately constant: callers rely on these never reading the register.
bool GetFlushDenormalsToZero() {
  return false;
}
bool GetDenormalsAreZero() {
  return false;
}
bool GetDenormalExceptionsEnabled() {
  return false;
}

}  // namespace zalaccelerate::utility
