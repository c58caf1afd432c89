#pragma once
// IntegerText: the integer conversions of the "$TMC" and "$TSL" payload
// values. Stateless; callable from any thread.
//
// Grammar, in both bases: optional blanks (space or tab), an optional "+" or
// "-", in base 16 an optional "0x" or "0X", one or more digits (either letter
// case), optional blanks. The whole text must match and the number must fit
// in a signed 64-bit integer; anything else (an empty text, "12abc", a NUL
// byte among the digits) does not convert.

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quillan {

class IntegerText {
 public:
  // Converts the `length` bytes at `text` in `base` (10 or 16). True and
  // `*value` set on success; false and `*value` untouched otherwise.
  static bool Convert(const char* text, size_t length, int base, int64_t* value);
  static bool Convert(const std::string& text, int base, int64_t* value) {
    return Convert(text.data(), text.size(), base, value);
  }
  // The base-10 value, or 0 when the text does not convert.
  static int64_t DecimalOrZero(const char* text, size_t length);
  static int64_t DecimalOrZero(const std::string& text) {
    return DecimalOrZero(text.data(), text.size());
  }
  // The base-16 value, or 0 when the text does not convert.
  static int64_t HexOrZero(const char* text, size_t length);
  static int64_t HexOrZero(const std::string& text) { return HexOrZero(text.data(), text.size()); }
};

}  // namespace Quillan
