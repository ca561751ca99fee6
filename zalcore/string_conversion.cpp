#include "zalcore/string_conversion.h"

#include <algorithm>

namespace zalcore::string {
namespace {

constexpr char16_t kReplacement = u'\uFFFD';

bool IsContinuation(unsigned char byte) {
  return (byte & 0xC0) == 0x80;
}

void AppendCodePoint(std::u16string& out, char32_t code_point) {
  if (code_point < 0x10000) {
    out.push_back(static_cast<char16_t>(code_point));
    return;
  }
  code_point -= 0x10000;
  out.push_back(static_cast<char16_t>(0xD800 + (code_point >> 10)));
  out.push_back(static_cast<char16_t>(0xDC00 + (code_point & 0x3FF)));
}

void AppendAscii(std::u16string& out, std::string_view ascii) {
  out.append(ascii.begin(), ascii.end());
}

}  // namespace

std::u16string AsciiToUTF16(std::string_view ascii) {
  std::u16string out;
  out.reserve(ascii.size());
  for (const char c : ascii) {
    const auto byte = static_cast<unsigned char>(c);
    out.push_back(byte < 0x80 ? char16_t{byte} : kReplacement);
  }
  return out;
}

std::u16string Std8ToUTF16String(std::string_view utf8) {
  std::u16string out;
  out.reserve(utf8.size());
  std::size_t i = 0;
  while (i < utf8.size()) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    int length;
    char32_t code_point;
    char32_t smallest;
    if (lead < 0x80) {
      out.push_back(lead);
      ++i;
      continue;
    } else if ((lead & 0xE0) == 0xC0) {
      length = 2, code_point = lead & 0x1F, smallest = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
      length = 3, code_point = lead & 0x0F, smallest = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
      length = 4, code_point = lead & 0x07, smallest = 0x10000;
    } else {
      out.push_back(kReplacement);
      ++i;
      continue;
    }
    int taken = 1;
    while (taken < length && i + taken < utf8.size() &&
           IsContinuation(static_cast<unsigned char>(utf8[i + taken]))) {
      code_point = (code_point << 6) | (static_cast<unsigned char>(utf8[i + taken]) & 0x3F);
      ++taken;
    }
    const bool well_formed = taken == length && code_point >= smallest && code_point <= 0x10FFFF &&
                             (code_point < 0xD800 || code_point > 0xDFFF);
    if (well_formed) {
      AppendCodePoint(out, code_point);
    } else {
      out.push_back(kReplacement);
    }
    i += taken;
  }
  return out;
}

std::u16string NumberToMemoryString(std::int64_t bytes, int maxDecimals, bool decimalUnits) {
  static constexpr const char* kBinaryUnits[] = {"B", "KB", "MB", "GB", "TB", "PB"};
  static constexpr const char* kDecimalUnits[] = {"B", "kB", "MB", "GB", "TB", "PB"};
  constexpr int kUnitCount = 6;
  const std::uint64_t step = decimalUnits ? 1000 : 1024;
  const int decimals = std::clamp(maxDecimals, 0, 3);
  std::uint64_t scale = 1;
  for (int i = 0; i < decimals; ++i) scale *= 10;

  // The magnitude in unsigned arithmetic, so that INT64_MIN has one.
  const std::uint64_t magnitude =
      bytes < 0 ? 0 - static_cast<std::uint64_t>(bytes) : static_cast<std::uint64_t>(bytes);
  int unit_index = 0;
  std::uint64_t unit = 1;
  while (unit_index + 1 < kUnitCount && magnitude / unit >= step) {
    unit *= step;
    ++unit_index;
  }
  // Value in units of 1/scale, rounded half up; the remainder times 1000 stays below 2^61.
  std::uint64_t whole = magnitude / unit;
  std::uint64_t fraction =
      unit_index == 0 ? 0 : ((magnitude % unit) * scale * 2 + unit) / (unit * 2);
  if (fraction == scale) {
    ++whole;
    fraction = 0;
  }
  // Rounding up to a whole next unit: 1023.999 KB is 1 MB.
  if (whole == step && unit_index + 1 < kUnitCount) {
    whole = 1;
    ++unit_index;
  }

  std::u16string out;
  if (bytes < 0) out.push_back(u'-');
  AppendAscii(out, std::to_string(whole));
  if (fraction != 0) {
    std::string digits = std::to_string(fraction);
    digits.insert(0, static_cast<std::size_t>(decimals) - digits.size(), '0');
    digits.erase(digits.find_last_not_of('0') + 1);
    out.push_back(u'.');
    AppendAscii(out, digits);
  }
  out.push_back(u' ');
  AppendAscii(out, (decimalUnits ? kDecimalUnits : kBinaryUnits)[unit_index]);
  return out;
}

}  // namespace zalcore::string
