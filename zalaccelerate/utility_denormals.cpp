#include "zalaccelerate/core.h"
#include "zalaccelerate/utility.h"

namespace zalaccelerate::utility {

void SetFlushDenormalsToZero(bool enable) {
  engSetFlushToZeroMode(enable ? 1 : 0, nullptr);
}
void SetDenormalsAreZero(bool enable) {
  engSetDenormalsAreZeroMode(enable ? 1 : 0);
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
