#include "PlaybackSummary.h"

#include <cstdio>

#include "host/common/JsonWriter.h"
#include "host/common/TimeText.h"

namespace PelorinHost {
namespace {

using PelorinTools::JsonWriter;
using PelorinTools::TimeText;

std::string Decimal(double value, int decimals) {
  char text[48];
  std::snprintf(text, sizeof(text), "%.*f", decimals, value);
  return text;
}

}  // namespace

void RecordTally::Count(const std::string& tag, bool known, bool yields) {
  if (!known) {
    // No producer takes it: dropped, not dispatched.
    ++unknownTag;
    return;
  }
  if (!yields) ++badPayload;
  for (auto& entry : byTag) {
    if (entry.first == tag) {
      ++entry.second;
      return;
    }
  }
  byTag.emplace_back(tag, 1);
}

void PlaybackSummary::AppendJson(JsonWriter& json) const {
  if (tallyKnown) {
    json.Key("recordsByTag");
    json.BeginObject();
    for (const auto& entry : tally.byTag) {
      json.TextKey(entry.first);
      json.Uint(entry.second);
    }
    json.EndObject();
    json.Key("dropped");
    json.Uint(tally.unknownTag + tally.badPayload);
    json.Key("droppedUnknownTag");
    json.Uint(tally.unknownTag);
    json.Key("droppedBadPayload");
    json.Uint(tally.badPayload);
    json.Key("meanSpeed");
    json.Number(Decimal(MeanSpeed(), 3));
    if (tally.capsGaps) {
      json.Key("skippedSeconds");
      json.Number(Decimal(tally.skippedSeconds, 3));
    }
    if (lag.paced) {
      json.Key("lagSeconds");
      json.Number(Decimal(static_cast<double>(lag.lagMicros) / 1e6, 3));
    }
  }
  if (lag.longestWaitMicros > 0) {
    json.Key("longestOnlineWaitSeconds");
    json.Number(Decimal(static_cast<double>(lag.longestWaitMicros) / 1e6, 3));
    if (lag.longestWaitLine > 0) {
      json.Key("longestOnlineWaitLine");
      json.Uint(lag.longestWaitLine);
    }
  }
  json.Key("wallSeconds");
  json.Number(Decimal(wallSeconds, 3));
}

void PlaybackSummary::AppendFields(std::string& line) const {
  if (tallyKnown) {
    line += " dropped=" + std::to_string(tally.unknownTag + tally.badPayload);
    line += " meanSpeed=" + Decimal(MeanSpeed(), 3);
    if (tally.capsGaps) line += " skippedSeconds=" + Decimal(tally.skippedSeconds, 3);
    if (lag.paced) line += " lagSeconds=" + Decimal(static_cast<double>(lag.lagMicros) / 1e6, 3);
  }
  line += " wallSeconds=" + Decimal(wallSeconds, 3);
}

std::vector<std::string> PlaybackSummary::Lines() const {
  std::vector<std::string> lines;
  if (tallyKnown) {
    std::string byTag = "records dispatched:";
    for (const auto& entry : tally.byTag) {
      byTag += ' ' + entry.first + ' ' + std::to_string(entry.second);
    }
    if (tally.byTag.empty()) byTag += " none";
    lines.push_back(byTag);
    lines.push_back("records dropped: " + std::to_string(tally.unknownTag + tally.badPayload) +
                    " (" + std::to_string(tally.unknownTag) + " unknown tag, " +
                    std::to_string(tally.badPayload) + " unusable payload)");
  }
  std::string time = "wall time " + TimeText::Duration(static_cast<int64_t>(wallSeconds * 1000.0));
  if (tallyKnown) {
    time += ", recorded time played " +
            TimeText::Duration(TimeText::RoundedMs(tally.spanSeconds)) + ", mean speed " +
            Decimal(MeanSpeed(), 2) + "x";
    if (tally.capsGaps) {
      time += ", skipped in long gaps " +
              TimeText::Duration(TimeText::RoundedMs(tally.skippedSeconds));
    }
  }
  lines.push_back(time);
  if (tallyKnown && lag.paced) {
    lines.push_back("behind the recording's schedule at the end: " +
                    TimeText::Duration(static_cast<int64_t>(lag.lagMicros / 1000u)));
  }
  if (lag.longestWaitMicros > 0) {
    std::string wait = "longest wait on the online traffic service: " +
                       TimeText::Duration(static_cast<int64_t>(lag.longestWaitMicros / 1000u));
    if (lag.longestWaitLine > 0) wait += " (line " + std::to_string(lag.longestWaitLine) + ")";
    lines.push_back(wait);
  }
  return lines;
}

}  // namespace PelorinHost
