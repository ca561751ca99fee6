#include <zalcore/string_conversion.h>
#include <zalcore/utf16_string_stream.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace {

using zalcore::UTF16StringStream;
using zalcore::string::AsciiToUTF16;
using zalcore::string::NumberToMemoryString;
using zalcore::string::Std8ToUTF16String;

TEST(UTF16StringStream, WritesTextIntegersAndLineEnds) {
  UTF16StringStream stream;
  stream << u"a" << 0 << u' ' << -7 << u' ' << 42u << zalcore::EndLine
         << std::numeric_limits<std::int64_t>::min() << u' '
         << std::numeric_limits<std::uint64_t>::max() << u' ' << static_cast<short>(-32768);
  stream.EndLine();
  EXPECT_EQ(stream.str(), u"a0 -7 42\n-9223372036854775808 18446744073709551615 -32768\n");
  EXPECT_EQ(std::move(stream).str().back(), UTF16StringStream::kEndOfLine);
}

TEST(StringConversion, AsciiWidensAndReplacesWhatIsNotAscii) {
  EXPECT_EQ(AsciiToUTF16(""), u"");
  EXPECT_EQ(AsciiToUTF16("\tCPU:  0x"), u"\tCPU:  0x");
  EXPECT_EQ(AsciiToUTF16("a\xC3\xA9z"), u"a\uFFFD\uFFFDz");
  EXPECT_EQ(AsciiToUTF16(std::string("a\0b", 3)), std::u16string(u"a\0b", 3));
}

TEST(StringConversion, Utf8DecodesAndReplacesEachIllFormedSequence) {
  struct Case {
    std::string utf8;
    std::u16string utf16;
  };
  const Case cases[] = {
      {"", u""},
      {"plain", u"plain"},
      {"\xC3\xA9", u"\u00E9"},
      {"\xE2\x82\xAC", u"\u20AC"},
      {"\xF0\x9F\x8E\xB5", u"\U0001F3B5"},  // a surrogate pair
      {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},  // the last code point
      {"\x80x", u"\uFFFDx"},                // stray continuation byte
      {"\xC3x", u"\uFFFDx"},                // truncated by an ASCII byte
      {"\xE2\x82", u"\uFFFD"},              // truncated by the end
      {"\xC0\xAF", u"\uFFFD"},              // overlong
      {"\xE0\x80\xAF", u"\uFFFD"},          // overlong
      {"\xED\xA0\x80", u"\uFFFD"},          // a surrogate
      {"\xF4\x90\x80\x80", u"\uFFFD"},      // above U+10FFFF
      {"\xFF\xFEz", u"\uFFFD\uFFFDz"},      // never a lead byte
  };
  for (const Case& c : cases) EXPECT_EQ(Std8ToUTF16String(c.utf8), c.utf16) << c.utf8;
}

TEST(StringConversion, MemorySizes) {
  struct Case {
    std::int64_t bytes;
    int decimals;
    bool decimal_units;
    std::u16string text;
  };
  constexpr std::int64_t kKi = 1024, kMi = kKi * kKi, kGi = kMi * kKi, kPi = kGi * kMi;
  const Case cases[] = {
      {0, 2, false, u"0 B"},
      {1, 2, false, u"1 B"},
      {1023, 2, false, u"1023 B"},
      {1024, 2, false, u"1 KB"},
      {1536, 2, false, u"1.5 KB"},
      {1025, 2, false, u"1 KB"},     // 1.0009... rounds to 1.00, zeros dropped
      {1029, 2, false, u"1 KB"},     // 1.00488...
      {1030, 2, false, u"1.01 KB"},  // 1.00585...
      {1030, 0, false, u"1 KB"},
      {1536, 0, false, u"2 KB"},  // half rounds up
      {1030, 3, false, u"1.006 KB"},
      {1030, 9, false, u"1.006 KB"},  // decimals clamped to 3
      {1536, -4, false, u"2 KB"},     // and to 0
      {kMi - 1, 2, false, u"1 MB"},   // 1023.999 KB carries into the next unit
      {32 * kMi, 2, false, u"32 MB"},
      {36 * kMi + kMi / 4, 2, false, u"36.25 MB"},
      {3 * kGi / 2, 2, false, u"1.5 GB"},
      {5 * kPi, 2, false, u"5 PB"},
      {std::numeric_limits<std::int64_t>::max(), 2, false, u"8192 PB"},
      {-1, 2, false, u"-1 B"},
      {-1536, 2, false, u"-1.5 KB"},
      {std::numeric_limits<std::int64_t>::min(), 2, false, u"-8192 PB"},
      {999, 2, true, u"999 B"},
      {1000, 2, true, u"1 kB"},
      {1024, 2, true, u"1.02 kB"},
      {33554432, 2, true, u"33.55 MB"},
      {999999, 2, true, u"1 MB"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(NumberToMemoryString(c.bytes, c.decimals, c.decimal_units), c.text)
        << c.bytes << " " << c.decimals << " " << c.decimal_units;
  }
}

}  // namespace
