#pragma once
// Number conversions of text (configuration values, events-file time stamps).
// Each reports success or failure; callers fall back to a default. Stateless,
// callable from any thread.
//
// Grammar: surrounding white space is ignored, a leading "+" or "-" is
// allowed, and the conversion succeeds only when it consumed the whole
// trimmed text. Doubles must be finite (no "inf", "nan", no overflow).
// Conversions do not depend on the process locale: ParseDouble reads the
// decimal mark it is given, and ParseDecimal reads "1.5" and, through its
// retry, the "1,5" that recorders in decimal-comma locales write. A number
// text longer than kMaxNumberText bytes after trimming never converts.

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quillan {

constexpr size_t kMaxNumberText = 256;

// Bytes that trimming removes: blank, tab, CR, LF, vertical tab, form feed.
bool IsTrimmedSpace(char c);

// `text` without leading and trailing white space.
std::string TrimText(const std::string& text);

// A decimal floating-point number whose decimal mark is `decimalMark` ("."
// or ","); exponents ("1e3") are accepted.
bool ParseDouble(const char* text, size_t length, char decimalMark, double* value);

// The decimal conversion used for every number the system reads: the text as
// written (decimal point), then with every "." replaced by "," (read as a
// decimal comma, as a decimal-comma locale reads it).
bool ParseDecimal(const char* text, size_t length, double* value);
inline bool ParseDecimal(const std::string& text, double* value) {
  return ParseDecimal(text.data(), text.size(), value);
}

// A base-10 integer (no decimal mark, no exponent) that fits 64 bits.
bool ParseInteger(const char* text, size_t length, int64_t* value);
inline bool ParseInteger(const std::string& text, int64_t* value) {
  return ParseInteger(text.data(), text.size(), value);
}

}  // namespace Quillan
