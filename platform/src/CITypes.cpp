// Stand-in for the head unit's traffic-service data types: the factory and
// the text type's integer parse.

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "CIString.h"
#include "CITypesFactory.h"

std::shared_ptr<CIUInt8Array> CITypesFactory::createUInt8Array(uint32_t size) {
  return std::make_shared<CIUInt8Array>(size);
}

// A null text makes an empty string; the encoding value is kept as given.
std::shared_ptr<CIString> CITypesFactory::createString(const char* text, int encoding) {
  return std::make_shared<CIString>(std::string(text != nullptr ? text : ""), encoding);
}

namespace {

bool IsLeadingBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

}  // namespace

// Leading blanks, then an optional sign, then decimal digits up to the first
// other character. A number beyond the 32-bit range saturates at the nearest
// limit, as the platform's parse does on a 32-bit target.
int32_t CIString::toInt32() const {
  size_t pos = 0;
  while (pos < m_text.size() && IsLeadingBlank(m_text[pos])) ++pos;
  bool negative = false;
  if (pos < m_text.size() && (m_text[pos] == '+' || m_text[pos] == '-')) {
    negative = m_text[pos] == '-';
    ++pos;
  }
  // Magnitude limit: 2147483647, or 2147483648 for a negative number.
  const uint32_t limit =
      static_cast<uint32_t>(std::numeric_limits<int32_t>::max()) + (negative ? 1u : 0u);
  uint32_t magnitude = 0;
  for (; pos < m_text.size() && m_text[pos] >= '0' && m_text[pos] <= '9'; ++pos) {
    const uint32_t digit = static_cast<uint32_t>(m_text[pos] - '0');
    if (magnitude > (limit - digit) / 10u) {
      magnitude = limit;
      break;
    }
    magnitude = magnitude * 10u + digit;
  }
  if (!negative) return static_cast<int32_t>(magnitude);
  // -2147483648 has no positive counterpart: negate in 64 bits.
  return static_cast<int32_t>(-static_cast<int64_t>(magnitude));
}
