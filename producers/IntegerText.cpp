#include "producers/IntegerText.h"

#include <limits>

namespace Quillan {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// Digit value of `c`, or -1 when it is not a digit of `base`.
int DigitValue(char c, int base) {
  int digit = -1;
  if (c >= '0' && c <= '9') {
    digit = c - '0';
  } else if (c >= 'a' && c <= 'f') {
    digit = c - 'a' + 10;
  } else if (c >= 'A' && c <= 'F') {
    digit = c - 'A' + 10;
  }
  return digit < base ? digit : -1;
}

// Reads the digits from `pos` into `*magnitude`; false on no digit, a
// non-digit or a magnitude above `limit`. Leaves `pos` after the digits.
bool ReadMagnitude(const std::string& text, int base, uint64_t limit, size_t& pos,
                   uint64_t* magnitude) {
  const size_t first = pos;
  uint64_t result = 0;
  for (; pos < text.size() && !IsBlank(text[pos]); ++pos) {
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

bool IntegerText::Convert(const std::string& text, int base, int64_t* value) {
  if (base != 10 && base != 16) return false;
  size_t pos = 0;
  while (pos < text.size() && IsBlank(text[pos])) ++pos;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) {
    negative = text[pos] == '-';
    ++pos;
  }
  if (base == 16 && pos + 1 < text.size() && text[pos] == '0' &&
      (text[pos + 1] == 'x' || text[pos + 1] == 'X')) {
    pos += 2;
  }
  const uint64_t limit =
      static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) + (negative ? 1u : 0u);
  uint64_t magnitude = 0;
  if (!ReadMagnitude(text, base, limit, pos, &magnitude)) return false;
  while (pos < text.size() && IsBlank(text[pos])) ++pos;
  if (pos != text.size()) return false;
  // Two's complement negation in unsigned arithmetic covers INT64_MIN.
  *value = static_cast<int64_t>(negative ? (~magnitude + 1u) : magnitude);
  return true;
}

int64_t IntegerText::DecimalOrZero(const std::string& text) {
  int64_t value = 0;
  return Convert(text, 10, &value) ? value : 0;
}

int64_t IntegerText::HexOrZero(const std::string& text) {
  int64_t value = 0;
  return Convert(text, 16, &value) ? value : 0;
}

}  // namespace Quillan
