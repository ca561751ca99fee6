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
// Integers of the data-movement rows in hexadecimal, as their bytes matter rather than values.
std::string Show(unsigned char x) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%02x", x);
  return text;
}
std::string Show(std::uint16_t x) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%04x", x);
  return text;
}
std::string Show(std::int32_t x) {
  return Show(static_cast<std::uint32_t>(x));
}
std::string Show(std::uint32_t x) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08x", x);
  return text;
}
std::string Show(std::uint64_t x) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%016llx", static_cast<unsigned long long>(x));
  return text;
}
std::string Show(Int24 x) {
  char text[24];
  std::snprintf(text, sizeof text, "bytes %02x %02x %02x", x.bytes[0], x.bytes[1], x.bytes[2]);
  return text;
}
std::string Show(Complex32 x) {
  return Show(x.re).append(" + i ").append(Show(x.im));
}
std::string Show(Complex64 x) {
  return Show(x.re).append(" + i ").append(Show(x.im));
}

}  // namespace zal::test::harness
