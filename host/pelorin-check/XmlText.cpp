#include "host/pelorin-check/XmlText.h"

#include "host/common/TerminalText.h"

namespace PelorinCheck {
namespace {

// U+FFFE and U+FFFF in UTF-8: EF BF BE and EF BF BF.
bool IsNonCharacterAt(const std::string& text, size_t pos) {
  return pos + 2 < text.size() && static_cast<unsigned char>(text[pos]) == 0xEFu &&
         static_cast<unsigned char>(text[pos + 1]) == 0xBFu &&
         (static_cast<unsigned char>(text[pos + 2]) & 0xFEu) == 0xBEu;
}

}  // namespace

void XmlText::AppendEscaped(std::string& out, const std::string& bytes) {
  const std::string text = PelorinTools::TerminalText::Escaped(bytes);
  for (size_t pos = 0; pos < text.size(); ++pos) {
    const char c = text[pos];
    if (c == '&') {
      out += "&amp;";
    } else if (c == '<') {
      out += "&lt;";
    } else if (c == '>') {
      out += "&gt;";
    } else if (c == '"') {
      out += "&quot;";
    } else if (c == '\'') {
      out += "&apos;";
    } else if (IsNonCharacterAt(text, pos)) {
      out += (text[pos + 2] == '\xBE') ? "\\xEF\\xBF\\xBE" : "\\xEF\\xBF\\xBF";
      pos += 2;
    } else {
      out += c;
    }
  }
}

std::string XmlText::Escaped(const std::string& bytes) {
  std::string out;
  AppendEscaped(out, bytes);
  return out;
}

}  // namespace PelorinCheck
