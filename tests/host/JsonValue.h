#pragma once
// JsonValue: a strict little JSON reader for the tests that read the tools'
// JSON Lines. Parse refuses what RFC 8259 does not allow (raw control
// characters, bad escapes, leading zeros, repeated member names, trailing
// text), so a badly written line fails the test that reads it.

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace pelorin_tool_test {

struct JsonValue {
  enum class Type { kNull, kBool, kNumber, kString, kArray, kObject };
  Type type = Type::kNull;
  bool boolean = false;
  double number = 0.0;
  std::string string;
  std::vector<JsonValue> array;
  std::vector<std::pair<std::string, JsonValue>> members;  // in the order written

  bool IsNull() const { return type == Type::kNull; }
  // The member, or a null value when there is none.
  const JsonValue& operator[](const std::string& key) const {
    static const JsonValue kNone;
    for (const auto& member : members) {
      if (member.first == key) return member.second;
    }
    return kNone;
  }
  // False unless `text` is exactly one JSON value.
  static bool Parse(const std::string& text, JsonValue* value) {
    size_t pos = 0;
    *value = JsonValue();
    if (!ParseValue(text, &pos, value, 0)) return false;
    SkipBlanks(text, &pos);
    return pos == text.size();
  }

 private:
  static void SkipBlanks(const std::string& s, size_t* pos) {
    while (*pos < s.size() && s[*pos] != '\0' && std::strchr(" \t\r\n", s[*pos])) ++*pos;
  }
  static bool Digits(const std::string& s, size_t* pos) {
    const size_t from = *pos;
    while (*pos < s.size() && std::isdigit(static_cast<unsigned char>(s[*pos]))) ++*pos;
    return *pos > from;
  }

  static bool ParseValue(const std::string& s, size_t* pos, JsonValue* v, int depth) {
    SkipBlanks(s, pos);
    if (*pos >= s.size() || depth > 32) return false;
    const char c = s[*pos];
    if (c == '"') {
      v->type = Type::kString;
      return ParseString(s, pos, &v->string);
    }
    if (c == '[' || c == '{') return ParseContainer(s, pos, v, depth, c == '{');
    for (const char* word : {"true", "false", "null"}) {
      if (s.compare(*pos, std::strlen(word), word) == 0) {
        v->type = word[0] == 'n' ? Type::kNull : Type::kBool;
        v->boolean = word[0] == 't';
        *pos += std::strlen(word);
        return true;
      }
    }
    const size_t start = *pos;
    if (s[*pos] == '-') ++*pos;
    if (*pos < s.size() && s[*pos] == '0') {
      ++*pos;
    } else if (!Digits(s, pos)) {
      return false;
    }
    if (*pos < s.size() && s[*pos] == '.' && (++*pos, !Digits(s, pos))) return false;
    if (*pos < s.size() && (s[*pos] == 'e' || s[*pos] == 'E')) {
      ++*pos;
      if (*pos < s.size() && (s[*pos] == '+' || s[*pos] == '-')) ++*pos;
      if (!Digits(s, pos)) return false;
    }
    v->type = Type::kNumber;
    v->number = std::strtod(s.substr(start, *pos - start).c_str(), nullptr);
    return true;
  }

  static bool ParseContainer(const std::string& s, size_t* pos, JsonValue* v, int depth,
                             bool object) {
    v->type = object ? Type::kObject : Type::kArray;
    const char close = object ? '}' : ']';
    ++*pos;
    SkipBlanks(s, pos);
    if (*pos < s.size() && s[*pos] == close) return ++*pos, true;
    for (;;) {
      std::string key;
      if (object) {
        SkipBlanks(s, pos);
        if (!ParseString(s, pos, &key)) return false;
        for (const auto& member : v->members) {
          if (member.first == key) return false;
        }
        SkipBlanks(s, pos);
        if (*pos >= s.size() || s[(*pos)++] != ':') return false;
      }
      JsonValue element;
      if (!ParseValue(s, pos, &element, depth + 1)) return false;
      if (object) {
        v->members.emplace_back(key, std::move(element));
      } else {
        v->array.push_back(std::move(element));
      }
      SkipBlanks(s, pos);
      if (*pos >= s.size()) return false;
      const char next = s[(*pos)++];
      if (next == close) return true;
      if (next != ',') return false;
    }
  }

  static bool ParseString(const std::string& s, size_t* pos, std::string* out) {
    if (*pos >= s.size() || s[*pos] != '"') return false;
    static const char kEscapes[] = "\"\\/bfnrt", kDecoded[] = "\"\\/\b\f\n\r\t";
    for (++*pos; *pos < s.size();) {
      const unsigned char c = static_cast<unsigned char>(s[(*pos)++]);
      if (c == '"') return true;
      if (c < 0x20 || (c == '\\' && *pos >= s.size())) return false;
      if (c != '\\') {
        *out += static_cast<char>(c);
        continue;
      }
      const char e = s[(*pos)++];
      if (const char* plain = e != '\0' ? std::strchr(kEscapes, e) : nullptr) {
        *out += kDecoded[plain - kEscapes];
        continue;
      }
      const std::string hex = e == 'u' ? s.substr(*pos, 4) : std::string();
      if (hex.size() != 4 || hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return false;
      *pos += 4;
      const unsigned code = static_cast<unsigned>(std::strtoul(hex.c_str(), nullptr, 16));
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
    return false;
  }
};

}  // namespace pelorin_tool_test
