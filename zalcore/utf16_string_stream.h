// The host framework's text stream for diagnostics: it collects UTF-16 text, as the debug monitor
// shows it. Narrow text goes in through the string helpers (string_conversion.h), so that its
// encoding is always stated by the caller.
#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <type_traits>

namespace zalcore {

class UTF16StringStream {
 public:
  // What EndLine writes.
  static constexpr char16_t kEndOfLine = u'\n';

  UTF16StringStream& operator<<(std::u16string_view text) {
    text_.append(text);
    return *this;
  }
  UTF16StringStream& operator<<(char16_t unit) {
    text_.push_back(unit);
    return *this;
  }
  // Integers in decimal, with a minus sign when negative. Characters and bool are not integers
  // here.
  template <std::integral Integer>
  requires(!std::is_same_v<Integer, bool> && !std::is_same_v<Integer, char> &&
           !std::is_same_v<Integer, char8_t> && !std::is_same_v<Integer, char16_t> &&
           !std::is_same_v<Integer, char32_t> &&
           !std::is_same_v<Integer, wchar_t>) UTF16StringStream&
  operator<<(Integer value) {
    if constexpr (std::is_signed_v<Integer>) {
      return WriteDecimal(value < 0, value < 0 ? 0 - static_cast<unsigned long long>(value)
                                               : static_cast<unsigned long long>(value));
    } else {
      return WriteDecimal(false, value);
    }
  }
  // Manipulators such as zalcore::EndLine.
  UTF16StringStream& operator<<(UTF16StringStream& (*manipulator)(UTF16StringStream&)) {
    return manipulator(*this);
  }

  UTF16StringStream& EndLine() { return *this << kEndOfLine; }

  // The text written so far.
  const std::u16string& str() const& { return text_; }
  std::u16string str() && { return std::move(text_); }

 private:
  UTF16StringStream& WriteDecimal(bool negative, unsigned long long magnitude);

  std::u16string text_;
};

inline UTF16StringStream& EndLine(UTF16StringStream& stream) {
  return stream.EndLine();
}

}  // namespace zalcore
