#include "JsonMembers.h"

namespace PelorinHost {
namespace {

constexpr int kMaxDepth = 64;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsHex(char c) { return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

}  // namespace

bool JsonMembers::Parse(std::string_view line) {
  m_text = line;
  m_at = 0;
  m_members.clear();
  SkipSpace();
  if (!Object(1, true)) return false;
  SkipSpace();
  return m_at == m_text.size();
}

const std::string* JsonMembers::Find(std::string_view key) const {
  for (const Member& member : m_members) {
    if (member.first == key) return &member.second;
  }
  return nullptr;
}

void JsonMembers::SkipSpace() {
  while (m_at < m_text.size() && (m_text[m_at] == ' ' || m_text[m_at] == '\t' ||
                                  m_text[m_at] == '\r' || m_text[m_at] == '\n')) {
    ++m_at;
  }
}

bool JsonMembers::Take(char c) {
  SkipSpace();
  if (m_at >= m_text.size() || m_text[m_at] != c) return false;
  ++m_at;
  return true;
}

// Members of the outermost object (`keep`) are recorded; nested ones only checked.
bool JsonMembers::Object(int depth, bool keep) {
  if (depth > kMaxDepth || !Take('{')) return false;
  if (Take('}')) return true;
  do {
    SkipSpace();
    const size_t keyBegin = m_at + 1;
    if (!String()) return false;
    const size_t keyEnd = m_at - 1;
    if (!Take(':')) return false;
    SkipSpace();
    const size_t valueBegin = m_at;
    if (!Value(depth)) return false;
    if (keep) {
      m_members.emplace_back(std::string(m_text.substr(keyBegin, keyEnd - keyBegin)),
                             std::string(m_text.substr(valueBegin, m_at - valueBegin)));
    }
  } while (Take(','));
  return Take('}');
}

bool JsonMembers::Array(int depth) {
  if (depth > kMaxDepth || !Take('[')) return false;
  if (Take(']')) return true;
  do {
    SkipSpace();
    if (!Value(depth)) return false;
  } while (Take(','));
  return Take(']');
}

bool JsonMembers::Value(int depth) {
  if (m_at >= m_text.size()) return false;
  switch (m_text[m_at]) {
    case '{':
      return Object(depth + 1, false);
    case '[':
      return Array(depth + 1);
    case '"':
      return String();
    case 't':
      return Literal("true");
    case 'f':
      return Literal("false");
    case 'n':
      return Literal("null");
    default:
      return Number();
  }
}

// A string with its quotes; control bytes must be escaped. Bytes above
// 0x7f are passed on: the comparison is of bytes, not of characters.
bool JsonMembers::String() {
  if (m_at >= m_text.size() || m_text[m_at] != '"') return false;
  for (++m_at; m_at < m_text.size(); ++m_at) {
    const char c = m_text[m_at];
    if (c == '"') {
      ++m_at;
      return true;
    }
    if (static_cast<unsigned char>(c) < 0x20) return false;
    if (c != '\\') continue;
    if (++m_at >= m_text.size()) return false;
    const char escaped = m_text[m_at];
    if (escaped == 'u') {
      if (m_at + 4 >= m_text.size()) return false;
      for (int i = 1; i <= 4; ++i) {
        if (!IsHex(m_text[m_at + i])) return false;
      }
      m_at += 4;
    } else if (std::string_view("\"\\/bfnrt").find(escaped) == std::string_view::npos) {
      return false;
    }
  }
  return false;
}

bool JsonMembers::Number() {
  const auto digits = [this]() {
    const size_t begin = m_at;
    while (m_at < m_text.size() && IsDigit(m_text[m_at])) ++m_at;
    return m_at > begin;
  };
  if (m_at < m_text.size() && m_text[m_at] == '-') ++m_at;
  if (m_at < m_text.size() && m_text[m_at] == '0') {
    ++m_at;
  } else if (!digits()) {
    return false;
  }
  if (m_at < m_text.size() && m_text[m_at] == '.') {
    ++m_at;
    if (!digits()) return false;
  }
  if (m_at < m_text.size() && (m_text[m_at] == 'e' || m_text[m_at] == 'E')) {
    ++m_at;
    if (m_at < m_text.size() && (m_text[m_at] == '+' || m_text[m_at] == '-')) ++m_at;
    if (!digits()) return false;
  }
  return true;
}

bool JsonMembers::Literal(std::string_view word) {
  if (m_text.substr(m_at, word.size()) != word) return false;
  m_at += word.size();
  return true;
}

}  // namespace PelorinHost
