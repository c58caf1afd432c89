#include "host/common/SpeedText.h"

#include <cmath>
#include <cstdlib>

namespace PelorinTools {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Digits, optionally a point and more digits; nothing else (no sign, no
// exponent, no hex, no blanks).
bool IsPlainDecimal(const std::string& text) {
  size_t digits = 0;
  size_t i = 0;
  while (i < text.size() && IsDigit(text[i])) ++i, ++digits;
  if (i < text.size() && text[i] == '.') {
    ++i;
    while (i < text.size() && IsDigit(text[i])) ++i, ++digits;
  }
  return digits > 0 && i == text.size() && text.size() <= 40;
}

}  // namespace

bool SpeedText::Parse(const std::string& text, int32_t* percent) {
  std::string number = text;
  double scale = 100.0;
  if (!number.empty() && (number.back() == 'x' || number.back() == 'X')) {
    number.pop_back();
  } else if (!number.empty() && number.back() == '%') {
    number.pop_back();
    scale = 1.0;
  }
  if (!IsPlainDecimal(number)) return false;
  const double value = std::floor(std::strtod(number.c_str(), nullptr) * scale + 0.5);
  if (!(value >= kMinPercent && value <= kMaxPercent)) return false;
  *percent = static_cast<int32_t>(value);
  return true;
}

std::string SpeedText::Accepted() {
  return "a speed from 0.01 to 21474836.47 times the recorded speed, written as a factor (2, 2x) "
         "or a percentage (200%)";
}

}  // namespace PelorinTools
