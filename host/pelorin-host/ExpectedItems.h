#pragma once
// ExpectedItems: --expect FILE. It holds the traffic items (tmc,
// serviceList, onlineTraffic) of an earlier --json run and compares this
// run's traffic items with them in order. Values compare as their JSON
// text; "t" is left out, and the path of a setNewData call compares by its
// file name, since the folder depends on where the recording lies. Only
// what both runs have is compared: the kinds of item this run plays and the
// file holds, the keys both items have, and the first pass when only the
// file looped; what was left out is said at the end.
// At the first difference it raises EndSignal::kMismatch and compares
// nothing more. Load, End and Verdict: main thread, before the module
// starts and once it is down; Check: one caller at a time (the Reporter
// holds an Output::Line). Does not own the EndSignal.

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "JsonMembers.h"

namespace PelorinHost {

class EndSignal;

class ExpectedItems {
 public:
  // What this run plays.
  struct RunShape {
    bool tmc = true;
    bool serviceList = true;
    bool onlineTraffic = true;
    bool loops = false;
  };

  explicit ExpectedItems(EndSignal& endSignal) : m_endSignal(endSignal) {}

  // Reads FILE (`name` as the user gave it); false with `error` naming the
  // file, the line and the reason.
  bool Load(const std::string& path, const std::string& name, const RunShape& run,
            std::string* error);
  // One traffic item of this run, as its JSON line; false when it is the
  // first that differs.
  bool Check(std::string_view item);
  // The run is over; `finished`: playback reached its end, so expected
  // items not received are missing.
  void End(bool finished);
  bool Differs() const { return !m_difference.empty(); }
  // What standard error says: the difference, or the match, and what was
  // not compared. `recording` names the events file.
  std::vector<std::string> Verdict(const std::string& recording) const;

 private:
  struct Item {
    uint64_t fileLine = 0;
    std::string text;
    JsonMembers members;
  };
  enum class Difference { kNone, kDiffers, kMissing, kExtra };
  bool Keep(const JsonMembers& members, const RunShape& run);
  Difference Compare(const JsonMembers& expected, const JsonMembers& received);
  void Record(Difference difference, const Item* expected, std::string_view received,
              const JsonMembers* receivedMembers);

  EndSignal& m_endSignal;
  std::string m_name;
  std::vector<Item> m_items;
  size_t m_next = 0;                     // the next expected item
  std::set<std::string> m_skippedKinds;  // in the file, not played by this run
  std::set<std::string> m_seenKinds;     // in the file
  std::set<std::string> m_uncompared;    // kinds this run made that the file lacks
  std::set<std::string> m_keysOnlyInFile;
  std::set<std::string> m_keysOnlyInRun;
  uint64_t m_laterPasses = 0;             // file items of passes this run does not play
  std::vector<std::string> m_difference;  // the lines that tell it, empty when none
  uint64_t m_recordingLine = 0;           // of the difference, 0 when not known
  bool m_ended = false;
  bool m_finished = false;
  JsonMembers m_received;  // reused for each item
};

}  // namespace PelorinHost
