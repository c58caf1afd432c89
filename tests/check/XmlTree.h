#pragma once
// A small XML reader for the checker's tests: parses a document into
// elements with their attributes and text, and refuses what is not
// well-formed XML 1.0 (unmatched tags, bad attributes or entities, and
// characters that XML forbids, invalid UTF-8 included). Enough for the SVG
// that pelorin-check draws; no DTDs, comments, CDATA or namespaces.

#include <cctype>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace pelorin_check_test {

struct XmlElement {
  std::string name;
  std::map<std::string, std::string> attributes;
  std::string text;  // the character data directly inside, entities decoded
  std::vector<std::unique_ptr<XmlElement>> children;

  std::string Attribute(const std::string& key) const {
    const auto found = attributes.find(key);
    return found == attributes.end() ? std::string() : found->second;
  }
  // Every element below this one named `wanted`, depth first.
  void Collect(const std::string& wanted, std::vector<const XmlElement*>* out) const {
    for (const auto& child : children) {
      if (child->name == wanted) out->push_back(child.get());
      child->Collect(wanted, out);
    }
  }
};

class XmlTree {
 public:
  // False with `error` set when `document` is not well-formed.
  bool Parse(const std::string& document) {
    m_text = document;
    for (m_pos = 0; m_pos < m_text.size();) {
      if (!Allowed(Decode())) return Fail("character not allowed in XML");
    }
    m_pos = 0;
    if (m_text.compare(0, 5, "<?xml") == 0) {
      m_pos = m_text.find("?>");
      if (m_pos == std::string::npos) return Fail("unterminated declaration");
      m_pos += 2;
    }
    SkipBlanks();
    root = std::make_unique<XmlElement>();
    if (!Element(*root)) return false;
    SkipBlanks();
    return m_pos == m_text.size() || Fail("content after the root element");
  }

  std::unique_ptr<XmlElement> root;
  std::string error;

 private:
  bool Fail(const std::string& what) {
    error = what + " at byte " + std::to_string(m_pos);
    return false;
  }
  bool At(char c) const { return m_pos < m_text.size() && m_text[m_pos] == c; }
  void SkipBlanks() {
    while (m_pos < m_text.size() && std::isspace(static_cast<unsigned char>(m_text[m_pos])))
      ++m_pos;
  }
  std::string Name() {
    const size_t start = m_pos;
    while (m_pos < m_text.size() &&
           (std::isalnum(static_cast<unsigned char>(m_text[m_pos])) ||
            std::string("-_:.").find(m_text[m_pos]) != std::string::npos)) {
      ++m_pos;
    }
    return m_text.substr(start, m_pos - start);
  }

  static bool Allowed(uint32_t c) {
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) ||
           (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
  }
  // The character at m_pos, moving past it; 0 for invalid UTF-8.
  uint32_t Decode() {
    const auto byte = [this](size_t i) { return static_cast<unsigned char>(m_text[i]); };
    const unsigned char lead = byte(m_pos);
    const int extra = lead < 0x80 ? 0 : lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC2 ? 1 : -1;
    if (extra < 0 || lead > 0xF4 || m_pos + extra >= m_text.size()) return 0;
    uint32_t c = extra == 0 ? lead : lead & (0x3F >> extra);
    for (int i = 1; i <= extra; ++i) {
      if ((byte(m_pos + i) & 0xC0) != 0x80) return 0;
      c = (c << 6) | (byte(m_pos + i) & 0x3F);
    }
    const uint32_t smallest[] = {0, 0x80, 0x800, 0x10000};
    m_pos += 1 + extra;
    return c < smallest[extra] ? 0 : c;  // overlong; surrogates fail Allowed
  }

  // Character data up to `end`, entities decoded.
  bool CharacterData(char end, std::string* out) {
    static const std::map<std::string, char> kEntities = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (; m_pos < m_text.size() && m_text[m_pos] != end; ++m_pos) {
      if (m_text[m_pos] == '<') return Fail("'<' in character data");
      if (m_text[m_pos] != '&') {
        *out += m_text[m_pos];
        continue;
      }
      const size_t semicolon = m_text.find(';', m_pos);
      const auto found = kEntities.find(
          m_text.substr(m_pos + 1, semicolon == std::string::npos ? 0 : semicolon - m_pos - 1));
      if (found == kEntities.end()) return Fail("unknown entity");
      *out += found->second;
      m_pos = semicolon;
    }
    return true;
  }

  bool Attributes(XmlElement& element) {
    for (SkipBlanks(); !At('>') && !At('/'); SkipBlanks()) {
      const std::string key = Name();
      if (key.empty() || !At('=')) return Fail("bad attribute");
      ++m_pos;
      const char quote = At('"') ? '"' : At('\'') ? '\'' : 0;
      ++m_pos;
      std::string value;
      if (quote == 0 || !CharacterData(quote, &value) || !At(quote)) return Fail("bad value");
      ++m_pos;
      if (!element.attributes.emplace(key, value).second) return Fail("repeated attribute");
    }
    return true;
  }

  bool Element(XmlElement& element) {
    if (!At('<')) return Fail("expected '<'");
    ++m_pos;
    element.name = Name();
    if (element.name.empty() || !Attributes(element)) return Fail("bad start tag");
    if (At('/')) {
      ++m_pos;
      return At('>') ? (++m_pos, true) : Fail("bad empty-element tag");
    }
    ++m_pos;
    for (;;) {
      if (!CharacterData('<', &element.text) || !At('<')) return Fail("unclosed element");
      if (m_text.compare(m_pos, 2, "</") == 0) break;
      element.children.push_back(std::make_unique<XmlElement>());
      if (!Element(*element.children.back())) return false;
    }
    m_pos += 2;
    if (Name() != element.name || !At('>')) return Fail("mismatched end tag");
    ++m_pos;
    return true;
  }

  std::string m_text;
  size_t m_pos = 0;
};

}  // namespace pelorin_check_test
