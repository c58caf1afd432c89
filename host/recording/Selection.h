#pragma once
// Selection: which records of a recording a tool takes (--from, --until,
// --only, --skip), one grammar and meaning for every tool. A bound is a
// record time as written in the file, "+S" (seconds after the first
// record's time) or "@N" (line N). Record times are not changed. A value,
// filled while the command line is parsed and then only read (by any
// thread).

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace PelorinRecording {

struct SelectionBound {
  enum Kind { kNone, kTime, kOffset, kLine };
  Kind kind = kNone;
  double seconds = 0.0;  // kTime, kOffset
  uint64_t line = 0;     // kLine
};

class Selection {
 public:
  // Each false with `error` (one line naming the option and the accepted
  // form) when the text cannot be used.
  bool SetFrom(const std::string& text, std::string* error);
  bool SetUntil(const std::string& text, std::string* error);
  bool SetOnly(const std::string& text, std::string* error);
  bool SetSkip(const std::string& text, std::string* error);
  // False when --from lies after --until (bounds of the same kind).
  bool Check(std::string* error) const;

  bool Restricts() const;
  // Whether the record of `line` with `time` and `tag` is played; `first` is
  // the time of the recording's first record.
  bool Accepts(uint64_t line, double time, double first, std::string_view tag) const;
  // Reads a bound as --from does; false with `error` naming `option`.
  static bool ParseBound(const char* option, const std::string& text, SelectionBound* bound,
                         std::string* error);
  // Whether the record of `line` at `time` lies at or after `bound`; `first`
  // as for Accepts.
  static bool Reached(const SelectionBound& bound, uint64_t line, double time, double first);
  // Whether the record of `line` at `time` lies before --from (never
  // without it); `first` as for Accepts.
  bool BeforeFrom(uint64_t line, double time, double first) const {
    return m_from.kind != SelectionBound::kNone && !Reached(m_from, line, time, first);
  }
  // Whether a cut at --from begins with the head unit's state there
  // (CutState); --no-state turns it off.
  void SetState(bool state) { m_state = state; }
  bool CarriesState() const { return m_state && m_from.kind != SelectionBound::kNone; }
  // Whether records of `tag` (with the "$") are played at all.
  bool PlaysTag(std::string_view tag) const;
  // No record after `line` can be played.
  bool EndsBefore(uint64_t line) const;

 private:
  static bool ParseTags(const char* option, const std::string& text,
                        std::vector<std::string>* tags, std::string* error);

  SelectionBound m_from;
  SelectionBound m_until;
  std::vector<std::string> m_only;  // with the "$"
  std::vector<std::string> m_skip;
  bool m_state = true;
};

}  // namespace PelorinRecording
