#include "host/recording/Selection.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "runtime/NumberText.h"

namespace PelorinRecording {
namespace {

bool ParseLine(const std::string& digits, uint64_t* line) {
  if (digits.empty() || digits.size() > 18) return false;
  for (char c : digits) {
    if (c < '0' || c > '9') return false;
  }
  *line = std::strtoull(digits.c_str(), nullptr, 10);
  return *line > 0;
}

// A tag as the file writes it: no blank, no comma, printable.
bool IsTagText(const std::string& tag) {
  if (tag.empty() || tag == "$") return false;
  for (char c : tag) {
    if (c <= ' ' || c > '~' || c == ',') return false;
  }
  return true;
}

double BoundTime(const SelectionBound& bound, double first) {
  return bound.kind == SelectionBound::kOffset ? first + bound.seconds : bound.seconds;
}

}  // namespace

bool Selection::ParseBound(const char* option, const std::string& text, SelectionBound* bound,
                           std::string* error) {
  bool ok = false;
  if (!text.empty() && text[0] == '@') {
    bound->kind = SelectionBound::kLine;
    ok = ParseLine(text.substr(1), &bound->line);
  } else if (!text.empty() && text[0] == '+') {
    bound->kind = SelectionBound::kOffset;
    const std::string rest = text.substr(1);
    ok = !rest.empty() && rest[0] != '-' && rest[0] != '+' &&
         Quillan::ParseDecimal(rest, &bound->seconds);
  } else {
    bound->kind = SelectionBound::kTime;
    ok = Quillan::ParseDecimal(text, &bound->seconds);
  }
  if (!ok) {
    *error = std::string(option) +
             " needs a record time as in the file (1416131460.5), +SECONDS after the first "
             "record or @LINE (from 1), not '" + text + "'";
  }
  return ok;
}

bool Selection::ParseTags(const char* option, const std::string& text,
                          std::vector<std::string>* tags, std::string* error) {
  size_t pos = 0;
  for (;;) {
    const size_t comma = std::min(text.find(',', pos), text.size());
    std::string tag = text.substr(pos, comma - pos);
    if (!IsTagText(tag)) {
      *error = std::string(option) + " needs tags separated by commas, such as TMC,TOT or $TSL, not '" +
               text + "'";
      return false;
    }
    if (tag[0] != '$') tag.insert(0, 1, '$');
    tags->push_back(tag);
    if (comma == text.size()) return true;
    pos = comma + 1;
  }
}

bool Selection::SetFrom(const std::string& text, std::string* error) {
  return ParseBound("--from", text, &m_from, error);
}

bool Selection::SetUntil(const std::string& text, std::string* error) {
  return ParseBound("--until", text, &m_until, error);
}

bool Selection::SetOnly(const std::string& text, std::string* error) {
  return ParseTags("--only", text, &m_only, error);
}

bool Selection::SetSkip(const std::string& text, std::string* error) {
  return ParseTags("--skip", text, &m_skip, error);
}

bool Selection::Check(std::string* error) const {
  if (m_from.kind == SelectionBound::kNone || m_from.kind != m_until.kind) return true;
  const bool after = m_from.kind == SelectionBound::kLine ? m_from.line > m_until.line
                                                          : m_from.seconds > m_until.seconds;
  if (after) *error = "--from lies after --until: give --from T1 --until T2 with T1 <= T2";
  return !after;
}

bool Selection::Restricts() const {
  return m_from.kind != SelectionBound::kNone || m_until.kind != SelectionBound::kNone ||
         !m_only.empty() || !m_skip.empty();
}

bool Selection::Accepts(uint64_t line, double time, double first, std::string_view tag) const {
  if (m_from.kind == SelectionBound::kLine ? line < m_from.line
      : m_from.kind != SelectionBound::kNone && time < BoundTime(m_from, first)) {
    return false;
  }
  if (m_until.kind == SelectionBound::kLine ? line > m_until.line
      : m_until.kind != SelectionBound::kNone && time > BoundTime(m_until, first)) {
    return false;
  }
  return PlaysTag(tag);
}

bool Selection::Reached(const SelectionBound& bound, uint64_t line, double time, double first) {
  return bound.kind == SelectionBound::kLine ? line >= bound.line : time >= BoundTime(bound, first);
}

bool Selection::PlaysTag(std::string_view tag) const {
  if (!m_only.empty() && std::find(m_only.begin(), m_only.end(), tag) == m_only.end()) {
    return false;
  }
  return std::find(m_skip.begin(), m_skip.end(), tag) == m_skip.end();
}

bool Selection::EndsBefore(uint64_t line) const {
  return m_until.kind == SelectionBound::kLine && line > m_until.line;
}

}  // namespace PelorinRecording
