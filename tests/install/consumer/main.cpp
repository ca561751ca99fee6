#include <zalaccelerate/core.h>
#include <zalaccelerate/utility.h>

#include <cstdio>

int main() {
  float* buffer = zalaccelerate::utility::Malloc_Float(256);
  bool ok = buffer != nullptr && engGetDispatchIndex() >= 0;
  zalaccelerate::utility::Free(buffer);
  // The matrix product, whose implementation lives inside the library only.
  const double a[] = {1, 2, 3, 4}, b[] = {5, 6, 7, 8};
  double c[4] = {};
  zalaccelerate::utility::Multiply(zalaccelerate::RowMajor, 2, 2, 2, a, b, c);
  ok = ok && c[0] == 19 && c[1] == 22 && c[2] == 43 && c[3] == 50;
  std::printf("%s\n", engLibraryVersion()->version);
  return ok ? 0 : 1;
}
