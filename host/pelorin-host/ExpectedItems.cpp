#include "ExpectedItems.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "EndSignal.h"
#include "host/common/TerminalText.h"

namespace PelorinHost {
namespace {

using PelorinTools::TerminalText;

// A number value's text, 0 when absent or not a plain count.
uint64_t CountOf(const JsonMembers& members, std::string_view key) {
  const std::string* text = members.Find(key);
  if (text == nullptr || text->empty() ||
      text->find_first_not_of("0123456789") != std::string::npos) {
    return 0;
  }
  return std::strtoull(text->c_str(), nullptr, 10);
}

// Where in the run an item lies: its pass, then its line.
bool Before(const JsonMembers& a, const JsonMembers& b) {
  const uint64_t passA = CountOf(a, "pass") > 0 ? CountOf(a, "pass") : 1;
  const uint64_t passB = CountOf(b, "pass") > 0 ? CountOf(b, "pass") : 1;
  return passA != passB ? passA < passB : CountOf(a, "line") < CountOf(b, "line");
}

// The value as compared: a setNewData path by its file name.
std::string_view Compared(const JsonMembers& item, const std::string& key,
                          const std::string& value) {
  const std::string* call = item.Find("call");
  if (key != "args" || call == nullptr || *call != "\"setNewData\"") return value;
  const size_t slash = value.rfind('/');
  return slash == std::string::npos ? std::string_view(value)
                                    : std::string_view(value).substr(slash + 1);
}

std::string Shown(std::string_view item) { return TerminalText::Escaped(std::string(item)); }

}  // namespace

bool ExpectedItems::Load(const std::string& path, const std::string& name, const RunShape& run,
                         std::string* error) {
  m_name = TerminalText::Escaped(name);
  FILE* file = std::fopen(path.c_str(), "r");
  if (file == nullptr) {
    *error = "--expect " + m_name + ": " + std::strerror(errno);
    return false;
  }
  char* buffer = nullptr;
  size_t capacity = 0;
  uint64_t fileLine = 0;
  bool usable = true;
  for (ssize_t size; usable && (size = ::getline(&buffer, &capacity, file)) >= 0;) {
    ++fileLine;
    std::string_view line(buffer, static_cast<size_t>(size));
    if (!line.empty() && line.back() == '\n') line.remove_suffix(1);
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) continue;
    Item item;
    item.fileLine = fileLine;
    usable = item.members.Parse(line) && item.members.Find("type") != nullptr;
    if (!usable) {
      *error = m_name + ":" + std::to_string(fileLine) +
               ": not an item of pelorin-host --json output (one JSON object with \"type\")";
    } else if (Keep(item.members, run)) {
      item.text = std::string(line);
      m_items.push_back(std::move(item));
    }
  }
  if (usable && std::ferror(file)) {
    *error = "--expect " + m_name + ": " + std::strerror(errno);
    usable = false;
  }
  std::free(buffer);
  std::fclose(file);
  return usable;
}

bool ExpectedItems::Keep(const JsonMembers& members, const RunShape& run) {
  const std::string& type = *members.Find("type");
  const bool plays = type == "\"tmc\""           ? run.tmc
                     : type == "\"serviceList\"" ? run.serviceList
                                                 : run.onlineTraffic;
  if (type != "\"tmc\"" && type != "\"serviceList\"" && type != "\"onlineTraffic\"") return false;
  m_seenKinds.insert(type);
  if (!plays) {
    m_skippedKinds.insert(type);
    return false;
  }
  if (!run.loops && CountOf(members, "pass") > 1) {
    ++m_laterPasses;
    return false;
  }
  return true;
}

ExpectedItems::Difference ExpectedItems::Compare(const JsonMembers& expected,
                                                 const JsonMembers& received) {
  // Keys that only one side has are told for items of the same type only.
  const bool sameType = *expected.Find("type") == *received.Find("type");
  bool differs = !sameType;
  for (const JsonMembers::Member& member : expected.Members()) {
    if (member.first == "t") continue;
    const std::string* value = received.Find(member.first);
    if (value == nullptr) {
      if (sameType) m_keysOnlyInFile.insert(member.first);
    } else if (Compared(expected, member.first, member.second) !=
               Compared(received, member.first, *value)) {
      differs = true;
    }
  }
  for (const JsonMembers::Member& member : received.Members()) {
    if (sameType && member.first != "t" && expected.Find(member.first) == nullptr) {
      m_keysOnlyInRun.insert(member.first);
    }
  }
  if (!differs) return Difference::kNone;
  if (Before(expected, received)) return Difference::kMissing;
  if (Before(received, expected)) return Difference::kExtra;
  return Difference::kDiffers;
}

bool ExpectedItems::Check(std::string_view item) {
  if (Differs() || m_ended || !m_received.Parse(item)) return true;
  const std::string* type = m_received.Find("type");
  if (type == nullptr) return true;
  if (m_seenKinds.count(*type) == 0) {
    m_uncompared.insert(*type);
    return true;
  }
  if (m_next >= m_items.size()) {
    Record(Difference::kExtra, nullptr, item, &m_received);
    return false;
  }
  const Difference difference = Compare(m_items[m_next].members, m_received);
  if (difference == Difference::kNone) {
    ++m_next;
    return true;
  }
  Record(difference, &m_items[m_next], item, &m_received);
  return false;
}

void ExpectedItems::Record(Difference difference, const Item* expected, std::string_view received,
                           const JsonMembers* receivedMembers) {
  const std::string where =
      expected != nullptr ? m_name + ":" + std::to_string(expected->fileLine) : m_name;
  const bool missing = difference == Difference::kMissing;
  m_recordingLine = CountOf(missing ? expected->members : *receivedMembers, "line");
  if (difference == Difference::kDiffers) {
    m_difference.push_back("the item differs from " + where);
  } else if (missing) {
    m_difference.push_back("the item of " + where + " was not received");
  } else {
    m_difference.push_back("an item that " + m_name + " does not hold was received" +
                           (expected != nullptr
                                ? " before line " + std::to_string(expected->fileLine)
                                : std::string()));
  }
  m_difference.push_back(
      "  expected: " + (expected != nullptr ? Shown(expected->text) : std::string("nothing more")));
  m_difference.push_back("  received: " + (receivedMembers != nullptr
                                               ? Shown(received)
                                               : std::string("nothing (playback ended)")));
  m_endSignal.Raise(EndSignal::kMismatch);
}

void ExpectedItems::End(bool finished) {
  m_ended = true;
  m_finished = finished;
  if (!Differs() && finished && m_next < m_items.size()) {
    Record(Difference::kMissing, &m_items[m_next], {}, nullptr);
  }
}

std::vector<std::string> ExpectedItems::Verdict(const std::string& recording) const {
  std::vector<std::string> lines;
  if (Differs()) {
    const std::string where =
        m_recordingLine > 0 ? recording + ":" + std::to_string(m_recordingLine) : recording;
    lines.push_back(where + ": " + m_difference[0]);
    lines.insert(lines.end(), m_difference.begin() + 1, m_difference.end());
  } else if (m_finished) {
    lines.push_back("the items match " + m_name + " (" + std::to_string(m_next) + " compared)");
  } else {
    lines.push_back(std::to_string(m_next) + " items matched " + m_name +
                    " before the run ended; " + std::to_string(m_items.size() - m_next) +
                    " were not reached");
  }
  for (const std::string& kind : m_uncompared) {
    lines.push_back(m_name + " holds no " + kind + " items: this run's were not compared");
  }
  for (const std::string& kind : m_skippedKinds) {
    lines.push_back(m_name + "'s " + kind +
                    " items were not compared: this run does not play them");
  }
  for (const std::string& key : m_keysOnlyInFile) {
    lines.push_back("compared without \"" + key + "\", which only " + m_name + " has");
  }
  for (const std::string& key : m_keysOnlyInRun) {
    lines.push_back("compared without \"" + key + "\", which only this run has");
  }
  if (m_laterPasses > 0) {
    lines.push_back(std::to_string(m_laterPasses) + " items of later passes in " + m_name +
                    " were not compared: this run plays one pass");
  }
  return lines;
}

}  // namespace PelorinHost
