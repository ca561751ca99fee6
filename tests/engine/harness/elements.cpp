#include "tests/engine/harness/elements.h"

#include <cstdio>

namespace zal::test::harness {

// The bits first, then the value: two NaNs or two zeros differ only in the former.
std::string Show(float x) {
  char text[48];
  std::snprintf(text, sizeof text, "0x%08x (%.9g)", std::bit_cast<std::uint32_t>(x), x);
  return text;
}
std::string Show(double x) {
  char text[64];
  std::snprintf(text, sizeof text, "0x%016llx (%.17g)",
                static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(x)), x);
  return text;
}
std::string Show(short x) {
  return std::to_string(x);
}
std::string Show(Complex32 x) {
  return Show(x.re).append(" + i ").append(Show(x.im));
}
std::string Show(Complex64 x) {
  return Show(x.re).append(" + i ").append(Show(x.im));
}

}  // namespace zal::test::harness
