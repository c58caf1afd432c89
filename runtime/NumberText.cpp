#include "runtime/NumberText.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace Quillan {
namespace {

// Narrows [*begin, *end) to its text without surrounding white space.
void Trim(const char* text, size_t length, size_t* begin, size_t* end) {
  size_t first = 0;
  size_t last = length;
  while (first < last && IsTrimmedSpace(text[first])) ++first;
  while (last > first && IsTrimmedSpace(text[last - 1])) --last;
  *begin = first;
  *end = last;
}

// Skips a leading "+" (std::from_chars only knows "-"); "+-1" stays invalid.
const char* SkipPlus(const char* first, const char* last) {
  if (first != last && *first == '+' && (last - first == 1 || first[1] != '-')) return first + 1;
  return first;
}

// The whole of [first, last) as a finite double with a decimal point.
bool ConvertDouble(const char* first, const char* last, double* value) {
  first = SkipPlus(first, last);
  double result = 0.0;
  const std::from_chars_result parsed = std::from_chars(first, last, result);
  if (parsed.ec != std::errc() || parsed.ptr != last || !std::isfinite(result)) return false;
  *value = result;
  return true;
}

// The common time stamp "1416131460.25": up to 15 digits with at most one
// decimal point between digits. Such a number is an exact integer divided by
// an exact power of ten, and the one rounding of that division gives the
// same double as the full conversion. False for any other text.
bool ConvertPlainDecimal(const char* text, size_t length, double* value) {
  constexpr size_t kMaxDigits = 15;  // below 2^53, so exact in a double
  static const double kPowersOfTen[kMaxDigits] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6, 1e7,
                                                  1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};
  uint64_t digits = 0;
  size_t count = 0;
  size_t point = length;
  for (size_t i = 0; i < length; ++i) {
    const unsigned digit = static_cast<unsigned char>(text[i]) - unsigned{'0'};
    if (digit <= 9) {
      digits = digits * 10u + digit;
      ++count;
    } else if (text[i] == '.' && point == length && i > 0 && i + 1 < length) {
      point = i;
    } else {
      return false;
    }
  }
  if (count == 0 || count > kMaxDigits) return false;
  const size_t decimals = point == length ? 0 : length - point - 1;
  *value = static_cast<double>(digits) / kPowersOfTen[decimals];
  return true;
}

}  // namespace

bool IsTrimmedSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

std::string TrimText(const std::string& text) {
  size_t begin = 0;
  size_t end = 0;
  Trim(text.data(), text.size(), &begin, &end);
  return text.substr(begin, end - begin);
}

bool ParseDouble(const char* text, size_t length, char decimalMark, double* value) {
  if (text == nullptr || value == nullptr) return false;
  size_t begin = 0;
  size_t end = 0;
  Trim(text, length, &begin, &end);
  if (begin == end || end - begin > kMaxNumberText) return false;
  if (decimalMark == '.') return ConvertDouble(text + begin, text + end, value);

  // std::from_chars reads only the decimal point and ignores the locale: map
  // the requested mark onto it. Under a comma mark a "." ends the number, as
  // it would for the C library in a decimal-comma locale.
  char digits[kMaxNumberText];
  for (size_t i = begin; i < end; ++i) {
    const char c = text[i];
    if (c == '.') return false;
    digits[i - begin] = c == decimalMark ? '.' : c;
  }
  return ConvertDouble(digits, digits + (end - begin), value);
}

bool ParseDecimal(const char* text, size_t length, double* value) {
  if (text == nullptr) return false;
  if (value != nullptr && ConvertPlainDecimal(text, length, value)) return true;
  size_t begin = 0;
  size_t end = 0;
  Trim(text, length, &begin, &end);
  if (end - begin > kMaxNumberText) return false;
  if (ParseDouble(text + begin, end - begin, '.', value)) return true;

  char withCommas[kMaxNumberText];
  for (size_t i = begin; i < end; ++i) withCommas[i - begin] = text[i] == '.' ? ',' : text[i];
  return ParseDouble(withCommas, end - begin, ',', value);
}

bool ParseInteger(const char* text, size_t length, int64_t* value) {
  if (text == nullptr || value == nullptr) return false;
  size_t begin = 0;
  size_t end = 0;
  Trim(text, length, &begin, &end);
  const char* first = SkipPlus(text + begin, text + end);
  const char* last = text + end;
  if (first == last) return false;
  int64_t result = 0;
  const std::from_chars_result parsed = std::from_chars(first, last, result, 10);
  if (parsed.ec != std::errc() || parsed.ptr != last) return false;
  *value = result;
  return true;
}

}  // namespace Quillan
