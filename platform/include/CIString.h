#pragma once
// CIString: the traffic services' text type, made by
// CITypesFactory::createString from text in a given encoding (3 is UTF-8).
// Immutable once made; shared through std::shared_ptr.

#include <cstdint>
#include <string>

class CIString {
 public:
  CIString(std::string text, int encoding) : m_text(std::move(text)), m_encoding(encoding) {}
  // The text as UTF-8 (stand-in: as it was given).
  const std::string& utf8() const { return m_text; }
  int encoding() const { return m_encoding; }
  // Signed base-10 integer parse of the text, as the platform does it:
  // leading blanks and a sign are accepted, parsing stops at the first
  // character that is not a digit, and a text without digits gives 0.
  int32_t toInt32() const;

 private:
  std::string m_text;
  int m_encoding;
};
