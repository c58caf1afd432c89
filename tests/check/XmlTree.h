#pragma once
// A small XML reader for the checker's tests: parses a document into
// elements with their attributes and text, and refuses what is not
// well-formed XML 1.0 (unmatched tags, bad attributes or entities, and
// characters that XML forbids, invalid UTF-8 included). Enough for the SVG
// that pelorin-check draws; no DTDs, CDATA or namespaces.

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
  std::string text;  // all character data directly inside, entities decoded
  std::vector<std::unique_ptr<XmlElement>> children;

  std::string Attribute(const std::string& key) const {
    const auto found = attributes.find(key);
    return found == attributes.end() ? std::string() : found->second;
  }
  // Every element below this one (depth first) named `name`.
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
    m_pos = 0;
    if (!CheckCharacters()) return false;
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
  void SkipBlanks() {
    while (m_pos < m_text.size() && std::string(" \t\r\n").find(m_text[m_pos]) != std::string::npos) {
      ++m_pos;
    }
  }
  static bool IsNameByte(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' || c == ':' ||
           c == '.';
  }
  std::string Name() {
    const size_t start = m_pos;
    while (m_pos < m_text.size() && IsNameByte(m_text[m_pos])) ++m_pos;
    return m_text.substr(start, m_pos - start);
  }

  // Every character must be one that XML 1.0 allows, in well-formed UTF-8.
  bool CheckCharacters() {
    for (m_pos = 0; m_pos < m_text.size();) {
      const uint32_t c = Decode();
      if (c == UINT32_MAX) return Fail("invalid UTF-8");
      const bool allowed = c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) ||
                           (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
      if (!allowed) return Fail("character U+" + std::to_string(c) + " not allowed in XML");
    }
    return true;
  }
  uint32_t Decode() {
    const auto byte = [this](size_t i) { return static_cast<unsigned char>(m_text[i]); };
    const unsigned char lead = byte(m_pos);
    const int extra = lead < 0x80 ? 0 : lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC2 ? 1 : -1;
    if (extra < 0 || lead > 0xF4 || m_pos + extra >= m_text.size()) {
      return UINT32_MAX;
    }
    uint32_t c = extra == 0 ? lead : lead & (0x3F >> extra);
    for (int i = 1; i <= extra; ++i) {
      if ((byte(m_pos + i) & 0xC0) != 0x80) return UINT32_MAX;
      c = (c << 6) | (byte(m_pos + i) & 0x3F);
    }
    const uint32_t smallest[] = {0, 0x80, 0x800, 0x10000};
    m_pos += 1 + extra;
    if (c < smallest[extra] || (c >= 0xD800 && c <= 0xDFFF)) return UINT32_MAX;
    return c;
  }

  // Character data up to `end` (a byte), entities decoded.
  bool CharacterData(char end, std::string* out) {
    while (m_pos < m_text.size() && m_text[m_pos] != end) {
      const char c = m_text[m_pos];
      if (c == '<') return Fail("'<' in character data");
      if (c != '&') {
        *out += c;
        ++m_pos;
        continue;
      }
      const size_t semicolon = m_text.find(';', m_pos);
      if (semicolon == std::string::npos) return Fail("unterminated entity");
      const std::string entity = m_text.substr(m_pos + 1, semicolon - m_pos - 1);
      static const std::map<std::string, char> kEntities = {
          {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
      const auto found = kEntities.find(entity);
      if (found == kEntities.end()) return Fail("unknown entity '" + entity + "'");
      *out += found->second;
      m_pos = semicolon + 1;
    }
    return true;
  }

  bool Attributes(XmlElement& element) {
    for (;;) {
      SkipBlanks();
      if (m_pos >= m_text.size()) return Fail("unterminated tag");
      if (m_text[m_pos] == '>' || m_text[m_pos] == '/') return true;
      const std::string key = Name();
      if (key.empty() || m_pos + 1 >= m_text.size() || m_text[m_pos] != '=' ||
          (m_text[m_pos + 1] != '"' && m_text[m_pos + 1] != '\'')) {
        return Fail("bad attribute");
      }
      const char quote = m_text[m_pos + 1];
      m_pos += 2;
      std::string value;
      if (!CharacterData(quote, &value) || m_pos >= m_text.size()) return Fail("bad attribute value");
      ++m_pos;
      if (!element.attributes.emplace(key, value).second) return Fail("repeated attribute");
    }
  }

  bool Element(XmlElement& element) {
    if (m_pos >= m_text.size() || m_text[m_pos] != '<') return Fail("expected '<'");
    ++m_pos;
    element.name = Name();
    if (element.name.empty()) return Fail("element without a name");
    if (!Attributes(element)) return false;
    if (m_text[m_pos] == '/') {
      m_pos += 2;
      return m_text[m_pos - 1] == '>' || Fail("bad empty-element tag");
    }
    ++m_pos;
    for (;;) {
      if (!CharacterData('<', &element.text)) return false;
      if (m_pos >= m_text.size()) return Fail("unclosed <" + element.name + ">");
      if (m_text.compare(m_pos, 2, "</") == 0) break;
      element.children.push_back(std::make_unique<XmlElement>());
      if (!Element(*element.children.back())) return false;
    }
    m_pos += 2;
    if (Name() != element.name || m_pos >= m_text.size() || m_text[m_pos] != '>') {
      return Fail("mismatched end tag for <" + element.name + ">");
    }
    ++m_pos;
    return true;
  }

  std::string m_text;
  size_t m_pos = 0;
};

}  // namespace pelorin_check_test
