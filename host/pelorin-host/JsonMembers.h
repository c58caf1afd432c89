#pragma once
// JsonMembers: the members of one JSON object written on one line, each
// value kept as its JSON text, so that items of an earlier --json run can be
// compared key by key with this run's. The whole line is checked against
// RFC 8259 (nesting at most 64 deep); bytes from the file are untrusted.
// A value; any thread.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace PelorinHost {

class JsonMembers {
 public:
  using Member = std::pair<std::string, std::string>;  // key text (no quotes), value text

  // False when `line` is not one JSON object.
  bool Parse(std::string_view line);
  const std::vector<Member>& Members() const { return m_members; }
  // The value text of `key`; null when absent.
  const std::string* Find(std::string_view key) const;

 private:
  bool Value(int depth);
  bool Object(int depth, bool keep);
  bool Array(int depth);
  bool String();
  bool Number();
  bool Literal(std::string_view word);
  void SkipSpace();
  bool Take(char c);

  std::string_view m_text;
  size_t m_at = 0;
  std::vector<Member> m_members;
};

}  // namespace PelorinHost
