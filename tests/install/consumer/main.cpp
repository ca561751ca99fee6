#include <zalaccelerate/core.h>
#include <zalaccelerate/utility.h>

#include <cstdio>

int main() {
  float* buffer = zalaccelerate::utility::Malloc_Float(256);
  const bool ok = buffer != nullptr && engGetDispatchIndex() >= 0;
  zalaccelerate::utility::Free(buffer);
  std::printf("%s\n", engLibraryVersion()->version);
  return ok ? 0 : 1;
}
