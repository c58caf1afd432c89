#include "producers/IntegerText.h"

#include <limits>

namespace Quillan {
namespace {

// Texts of only digits up to these lengths cannot leave the signed 64-bit
// range (10^18 - 1 and 16^15 - 1 are below 2^63), so they need no checks.
constexpr size_t kSafeDecimalDigits = 18;
constexpr size_t kSafeHexDigits = 15;

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// The value of every byte as a hexadecimal digit; 16 for a byte that is none.
struct HexDigits {
  uint8_t value[256];
  constexpr HexDigits() : value() {
    for (int c = 0; c < 256; ++c) {
      value[c] = c >= '0' && c <= '9'   ? static_cast<uint8_t>(c - '0')
                 : c >= 'a' && c <= 'f' ? static_cast<uint8_t>(c - 'a' + 10)
                 : c >= 'A' && c <= 'F' ? static_cast<uint8_t>(c - 'A' + 10)
                                        : uint8_t{16};
    }
  }
};
constexpr HexDigits kHexDigits;

// Digit value of `c`, or -1 when it is not a digit of `base`.
int DigitValue(char c, int base) {
  const int digit = kHexDigits.value[static_cast<unsigned char>(c)];
  return digit < base ? digit : -1;
}

// The common case of a payload value: nothing but a few digits. False when
// the text is anything else, which then takes the full conversion.
bool ConvertPlainDecimal(const char* text, size_t length, int64_t* value) {
  if (length == 0 || length > kSafeDecimalDigits) return false;
  uint64_t result = 0;
  for (size_t i = 0; i < length; ++i) {
    const unsigned digit = static_cast<unsigned char>(text[i]) - unsigned{'0'};
    if (digit > 9) return false;
    result = result * 10u + digit;
  }
  *value = static_cast<int64_t>(result);
  return true;
}

bool ConvertPlainHex(const char* text, size_t length, int64_t* value) {
  if (length == 0 || length > kSafeHexDigits) return false;
  uint64_t result = 0;
  for (size_t i = 0; i < length; ++i) {
    const unsigned digit = kHexDigits.value[static_cast<unsigned char>(text[i])];
    if (digit > 15) return false;
    result = (result << 4) | digit;
  }
  *value = static_cast<int64_t>(result);
  return true;
}

// Reads the digits from `pos` into `*magnitude`; false on no digit, a
// non-digit or a magnitude above `limit`. Leaves `pos` after the digits.
bool ReadMagnitude(const char* text, size_t length, int base, uint64_t limit, size_t& pos,
                   uint64_t* magnitude) {
  const size_t first = pos;
  uint64_t result = 0;
  for (; pos < length && !IsBlank(text[pos]); ++pos) {
    const int digit = DigitValue(text[pos], base);
    if (digit < 0) return false;
    const uint64_t next = static_cast<uint64_t>(digit);
    if (result > (limit - next) / static_cast<uint64_t>(base)) return false;
    result = result * static_cast<uint64_t>(base) + next;
  }
  *magnitude = result;
  return pos > first;
}

}  // namespace

bool IntegerText::Convert(const char* text, size_t length, int base, int64_t* value) {
  if (base != 10 && base != 16) return false;
  if (base == 10 ? ConvertPlainDecimal(text, length, value)
                 : ConvertPlainHex(text, length, value)) {
    return true;
  }
  size_t pos = 0;
  while (pos < length && IsBlank(text[pos])) ++pos;
  bool negative = false;
  if (pos < length && (text[pos] == '+' || text[pos] == '-')) {
    negative = text[pos] == '-';
    ++pos;
  }
  if (base == 16 && pos + 1 < length && text[pos] == '0' &&
      (text[pos + 1] == 'x' || text[pos + 1] == 'X')) {
    pos += 2;
  }
  const uint64_t limit =
      static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) + (negative ? 1u : 0u);
  uint64_t magnitude = 0;
  if (!ReadMagnitude(text, length, base, limit, pos, &magnitude)) return false;
  while (pos < length && IsBlank(text[pos])) ++pos;
  if (pos != length) return false;
  // Two's complement negation in unsigned arithmetic covers INT64_MIN.
  *value = static_cast<int64_t>(negative ? (~magnitude + 1u) : magnitude);
  return true;
}

int64_t IntegerText::DecimalOrZero(const char* text, size_t length) {
  int64_t value = 0;
  return Convert(text, length, 10, &value) ? value : 0;
}

int64_t IntegerText::HexOrZero(const char* text, size_t length) {
  int64_t value = 0;
  return Convert(text, length, 16, &value) ? value : 0;
}

}  // namespace Quillan
