#include "zalcore/utf16_string_stream.h"

namespace zalcore {

UTF16StringStream& UTF16StringStream::WriteDecimal(bool negative, unsigned long long magnitude) {
  char16_t digits[20];
  int count = 0;
  do {
    digits[count++] = static_cast<char16_t>(u'0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  if (negative) text_.push_back(u'-');
  while (count > 0) text_.push_back(digits[--count]);
  return *this;
}

}  // namespace zalcore
