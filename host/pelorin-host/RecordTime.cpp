#include "RecordTime.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "runtime/NumberText.h"

namespace PelorinHost {
namespace {

// std::isdigit asks the locale for what is always '0' to '9'.
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

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
  return text.size() <= Quillan::kMaxNumberText && std::all_of(text.begin(), text.end(), plain) &&
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

}  // namespace

void RecordTime::MakeJsonNumber(std::string* text) {
  // Most recordings write plain numbers: keep them without converting.
  if (IsPlainJsonNumber(*text)) return;
  double seconds = 0.0;
  if (!Quillan::ParseDecimal(*text, &seconds)) {
    *text = "0";
    return;
  }
  std::string written = Quillan::TrimText(*text);
  for (char& c : written) {
    if (c == ',') c = '.';
  }
  if (!written.empty() && written[0] == '+') written.erase(0, 1);
  *text = IsJsonNumber(written) ? written : ShortestText(seconds);
}

}  // namespace PelorinHost
