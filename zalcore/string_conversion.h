// Narrow text and numbers made into UTF-16 report text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zalcore::string {

// Widens each byte; bytes above 0x7F are not ASCII and become U+FFFD.
std::u16string AsciiToUTF16(std::string_view ascii);

// Decodes UTF-8. Each ill-formed sequence (a stray continuation byte, a truncated or overlong
// sequence, a surrogate or a value above U+10FFFF) becomes one U+FFFD, and decoding resumes at
// the next byte that can start a sequence.
std::u16string Std8ToUTF16String(std::string_view utf8);

// A byte count for people: "512 B", "1.5 KB", "32 MB".
// - The unit is the largest of B, KB, MB, GB, TB, PB that the rounded value reaches 1 of; each is
//   1024 times the one before, or 1000 times with decimalUnits (then "kB" for the second).
// - The value has at most maxDecimals decimals (clamped to 0..3), rounded half up; trailing zeros
//   and a bare decimal point are dropped, so powers of the unit print as integers. Bytes are
//   always whole.
// - A negative count prints as its magnitude with a minus sign.
std::u16string NumberToMemoryString(std::int64_t bytes, int maxDecimals, bool decimalUnits);

}  // namespace zalcore::string
