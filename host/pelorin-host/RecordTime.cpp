#include "RecordTime.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace PelorinHost {
namespace {

constexpr size_t kMaxNumberText = 256;

// std::isdigit asks the locale for what is always '0' to '9'.
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

std::string Trimmed(std::string_view text) {
  size_t begin = 0;
  size_t end = text.size();
  while (begin < end && IsSpace(text[begin])) ++begin;
  while (end > begin && IsSpace(text[end - 1])) --end;
  return std::string(text.substr(begin, end - begin));
}

// Decimal digits, one decimal point and an exponent only: no hex, inf or nan.
bool Convert(const std::string& text, double* value) {
  if (text.empty() || text.size() > kMaxNumberText) return false;
  for (char c : text) {
    if (!IsDigit(c) && c != '.' && c != 'e' && c != 'E' && c != '+' && c != '-') {
      return false;
    }
  }
  char* end = nullptr;
  const double parsed = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size() || !std::isfinite(parsed)) return false;
  *value = parsed;
  return true;
}

// The number text as written when JSON accepts it as it stands.
bool IsJsonNumber(const std::string& text) {
  size_t i = 0;
  const size_t n = text.size();
  auto digits = [&]() {
    const size_t from = i;
    while (i < n && IsDigit(text[i])) ++i;
    return i > from;
  };
  if (i < n && text[i] == '-') ++i;
  if (i < n && text[i] == '0') {
    ++i;
  } else if (!digits()) {
    return false;
  }
  if (i < n && text[i] == '.') {
    ++i;
    if (!digits()) return false;
  }
  if (i < n && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    if (i < n && (text[i] == '+' || text[i] == '-')) ++i;
    if (!digits()) return false;
  }
  return i == n;
}

// Digits and a decimal point only, valid JSON as written, and short enough
// to convert: a finite number that needs no rewriting.
bool IsPlainJsonNumber(const std::string& text) {
  const auto plain = [](char c) { return IsDigit(c) || c == '.'; };
  return text.size() <= kMaxNumberText && std::all_of(text.begin(), text.end(), plain) &&
         IsJsonNumber(text);
}

// The shortest text that reads back as `value`.
std::string ShortestText(double value) {
  char text[40];
  for (int precision = 15; precision <= 17; ++precision) {
    std::snprintf(text, sizeof(text), "%.*g", precision, value);
    if (std::strtod(text, nullptr) == value) break;
  }
  return text;
}

// Digits with at most one decimal point, as most recordings write their
// times: read exactly as strtod reads them. With at most 15 digits the
// digits as an integer and the power of ten are exact doubles, so their
// quotient is the correctly rounded value. False for any other text.
bool PlainDecimal(std::string_view text, double* value) {
  constexpr size_t kExactDigits = 15;
  static const double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  uint64_t digits = 0;
  size_t count = 0;
  size_t decimals = 0;
  bool point = false;
  for (char c : text) {
    if (c == '.' && !point) {
      point = true;
    } else if (c >= '0' && c <= '9') {
      digits = digits * 10 + static_cast<uint64_t>(c - '0');
      if (++count > kExactDigits) return false;
      if (point) ++decimals;
    } else {
      return false;
    }
  }
  if (count == 0) return false;
  *value = static_cast<double>(digits) / kPowers[decimals];
  return true;
}

}  // namespace

bool RecordTime::Parse(std::string_view text, double* seconds) {
  *seconds = 0.0;
  if (PlainDecimal(text, seconds)) return true;
  std::string trimmed = Trimmed(text);
  if (Convert(trimmed, seconds)) return true;
  // A decimal comma: the module's retry reads every "." as a "," too.
  for (char& c : trimmed) {
    if (c == ',') c = '.';
  }
  return Convert(trimmed, seconds);
}

void RecordTime::MakeJsonNumber(std::string* text) {
  // Most recordings write plain numbers: keep them without converting.
  if (IsPlainJsonNumber(*text)) return;
  double seconds = 0.0;
  if (!Parse(*text, &seconds)) {
    *text = "0";
    return;
  }
  std::string written = Trimmed(*text);
  for (char& c : written) {
    if (c == ',') c = '.';
  }
  if (!written.empty() && written[0] == '+') written.erase(0, 1);
  *text = IsJsonNumber(written) ? written : ShortestText(seconds);
}

}  // namespace PelorinHost
