#include "JsonValue.h"

#include <cstdlib>
#include <cstring>

namespace pelorin_host_test {

class JsonParser {
 public:
  explicit JsonParser(const std::string& text) : m_text(text) {}

  bool ParseDocument(JsonValue* value, std::string* error) {
    SkipBlanks();
    if (!ParseValue(value, 0)) {
      *error = m_error + " at offset " + std::to_string(m_pos);
      return false;
    }
    SkipBlanks();
    if (m_pos != m_text.size()) {
      *error = "trailing text at offset " + std::to_string(m_pos);
      return false;
    }
    return true;
  }

 private:
  bool Fail(const char* why) {
    m_error = why;
    return false;
  }
  void SkipBlanks() {
    while (m_pos < m_text.size() && std::strchr(" \t\r\n", m_text[m_pos]) != nullptr) ++m_pos;
  }
  bool Literal(const char* word) {
    const size_t length = std::strlen(word);
    if (m_text.compare(m_pos, length, word) != 0) return Fail("bad literal");
    m_pos += length;
    return true;
  }

  bool ParseValue(JsonValue* value, int depth) {
    if (depth > 32) return Fail("too deep");
    if (m_pos >= m_text.size()) return Fail("unexpected end");
    const char c = m_text[m_pos];
    if (c == '{') return ParseObject(value, depth);
    if (c == '[') return ParseArray(value, depth);
    if (c == '"') {
      value->m_type = JsonValue::Type::kString;
      return ParseString(&value->m_string);
    }
    if (c == 't' || c == 'f') {
      value->m_type = JsonValue::Type::kBool;
      value->m_bool = c == 't';
      return Literal(c == 't' ? "true" : "false");
    }
    if (c == 'n') {
      value->m_type = JsonValue::Type::kNull;
      return Literal("null");
    }
    return ParseNumber(value);
  }

  bool ParseNumber(JsonValue* value) {
    const size_t start = m_pos;
    if (m_pos < m_text.size() && m_text[m_pos] == '-') ++m_pos;
    if (m_pos >= m_text.size() || !isdigit(static_cast<unsigned char>(m_text[m_pos]))) {
      return Fail("bad number");
    }
    if (m_text[m_pos] == '0' && m_pos + 1 < m_text.size() &&
        isdigit(static_cast<unsigned char>(m_text[m_pos + 1]))) {
      return Fail("leading zero");
    }
    while (m_pos < m_text.size() && std::strchr("0123456789.eE+-", m_text[m_pos]) != nullptr)
      ++m_pos;
    const std::string digits = m_text.substr(start, m_pos - start);
    char* end = nullptr;
    value->m_number = std::strtod(digits.c_str(), &end);
    if (*end != '\0' || digits.back() == '.') return Fail("bad number");
    value->m_type = JsonValue::Type::kNumber;
    return true;
  }

  static void AppendUtf8(std::string* out, unsigned code) {
    if (code < 0x80) {
      *out += static_cast<char>(code);
    } else if (code < 0x800) {
      *out += static_cast<char>(0xc0 | (code >> 6));
      *out += static_cast<char>(0x80 | (code & 0x3f));
    } else {
      *out += static_cast<char>(0xe0 | (code >> 12));
      *out += static_cast<char>(0x80 | ((code >> 6) & 0x3f));
      *out += static_cast<char>(0x80 | (code & 0x3f));
    }
  }

  bool ParseString(std::string* out) {
    ++m_pos;  // opening quote
    while (m_pos < m_text.size()) {
      const unsigned char c = static_cast<unsigned char>(m_text[m_pos++]);
      if (c == '"') return true;
      if (c < 0x20) return Fail("raw control character in string");
      if (c != '\\') {
        *out += static_cast<char>(c);
        continue;
      }
      if (m_pos >= m_text.size()) break;
      const char e = m_text[m_pos++];
      const char* plain = std::strchr("\"\\/bfnrt", e);
      if (plain != nullptr && e != '\0') {
        static const char kDecoded[] = "\"\\/\b\f\n\r\t";
        *out += kDecoded[plain - "\"\\/bfnrt"];
        continue;
      }
      if (e != 'u' || m_pos + 4 > m_text.size()) return Fail("bad escape");
      char* end = nullptr;
      const std::string hex = m_text.substr(m_pos, 4);
      const unsigned code = static_cast<unsigned>(std::strtoul(hex.c_str(), &end, 16));
      if (*end != '\0') return Fail("bad \\u escape");
      m_pos += 4;
      AppendUtf8(out, code);
    }
    return Fail("unterminated string");
  }

  bool ParseArray(JsonValue* value, int depth) {
    value->m_type = JsonValue::Type::kArray;
    ++m_pos;
    SkipBlanks();
    if (m_pos < m_text.size() && m_text[m_pos] == ']') {
      ++m_pos;
      return true;
    }
    for (;;) {
      JsonValue element;
      SkipBlanks();
      if (!ParseValue(&element, depth + 1)) return false;
      value->m_array.push_back(std::move(element));
      SkipBlanks();
      if (m_pos >= m_text.size()) return Fail("unterminated array");
      const char c = m_text[m_pos++];
      if (c == ']') return true;
      if (c != ',') return Fail("expected , or ]");
    }
  }

  bool ParseObject(JsonValue* value, int depth) {
    value->m_type = JsonValue::Type::kObject;
    ++m_pos;
    SkipBlanks();
    if (m_pos < m_text.size() && m_text[m_pos] == '}') {
      ++m_pos;
      return true;
    }
    for (;;) {
      SkipBlanks();
      std::string key;
      if (m_pos >= m_text.size() || m_text[m_pos] != '"' || !ParseString(&key)) {
        return Fail("expected a member name");
      }
      if (value->m_members.count(key) != 0) return Fail("duplicate member");
      SkipBlanks();
      if (m_pos >= m_text.size() || m_text[m_pos++] != ':') return Fail("expected :");
      SkipBlanks();
      JsonValue member;
      if (!ParseValue(&member, depth + 1)) return false;
      value->m_keys.push_back(key);
      value->m_members.emplace(key, std::move(member));
      SkipBlanks();
      if (m_pos >= m_text.size()) return Fail("unterminated object");
      const char c = m_text[m_pos++];
      if (c == '}') return true;
      if (c != ',') return Fail("expected , or }");
    }
  }

  const std::string& m_text;
  size_t m_pos = 0;
  std::string m_error;
};

bool JsonValue::Parse(const std::string& text, JsonValue* value, std::string* error) {
  *value = JsonValue();
  return JsonParser(text).ParseDocument(value, error);
}

const JsonValue& JsonValue::operator[](const std::string& key) const {
  static const JsonValue kNull;
  const auto it = m_members.find(key);
  return it == m_members.end() ? kNull : it->second;
}

}  // namespace pelorin_host_test
