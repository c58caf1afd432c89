#pragma once
// Reporter: turns everything that leaves the module into output items, one
// line each: readable text by default, JSON Lines with --json. Every item
// starts with "t" (milliseconds since the host started) and "type".
// It also keeps the figures of the status line (records played, the latest
// record time known). Items that a record produced carry the recording's
// line and record time (and the pass, when looping) from ItemOrigins.
// Called from the module's work-loop thread, the online
// traffic service's thread, the trace sink and the host's threads. A record
// item is made under an Output::Line, which also serialises ItemOrigins and
// the count of records played; other items are formatted in a buffer of the
// calling thread and written as one line.

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "EventsScan.h"
#include "ItemOrigins.h"
#include "LagMeter.h"
#include "PausePoints.h"
#include "Output.h"
#include "PlaybackSummary.h"
#include "producers/ServiceList.h"
#include "producers/TmcMessageData.h"

namespace PelorinTools {
class JsonWriter;
}

namespace PelorinHost {

using PelorinRecording::ItemKind;

class BackgroundScan;
class ExpectedItems;

// One argument of an online traffic service call.
struct CallArgument {
  bool isText = false;
  int64_t number = 0;
  std::string text;

  static CallArgument Number(int64_t value) { return CallArgument{false, value, {}}; }
  static CallArgument Text(std::string value) { return CallArgument{true, 0, std::move(value)}; }
};

class Reporter {
 public:
  Reporter(Output& output, bool json) : m_output(output), m_json(json) {}
  Reporter(const Reporter&) = delete;
  Reporter& operator=(const Reporter&) = delete;

  void Tmc(const Quillan::TmcMessageData& message);
  void ServiceList(const Quillan::ServiceListEntries* entries);
  // Returns the line of the call's record, 0 when not known.
  uint64_t OnlineTrafficCall(const char* call, const std::vector<CallArgument>& args);
  // `known` false: the value could not be read back (written as null).
  void DataPoolValue(uint32_t id, bool known, int32_t value);
  void Event(uint32_t id);
  void Trace(const char* channel, int level, const char* text);
  // Tells, with every "finished" item, whether playback reached the end of
  // the file, from a scan that may still be under way: the item waits for
  // it. Called by the main thread before the module starts.
  void AwaitFileScan(BackgroundScan* scan) { m_pendingScan = scan; }
  // The module reported the end of playback: the "finished" item with the
  // run's figures so far; nothing once the output refuses items.
  void Finished();
  // The figures of the run: those of the last "finished" item, or of now
  // when `now` or none was written.
  PlaybackSummary Summary(bool now);

  // Where record items come from; set before the module plays, not owned.
  // `showPass`: items also carry the pass.
  void SetOrigins(ItemOrigins* origins, bool showPass) {
    m_origins = origins;
    m_showPass = showPass;
  }

  // --expect: each traffic item shown is also compared with `expected`
  // (as its JSON line, whether or not the output is JSON); from the first
  // that differs on, no item is shown. Set before the module plays, not owned.
  void SetExpected(ExpectedItems* expected) { m_expected = expected; }

  // --pause-at: once the item of a record that a pause follows is written,
  // `pause` is called on the thread that made it (the module's work loop),
  // outside the output's lock. Set before the module plays, not owned.
  void SetPauses(const PausePoints* points, std::function<void(const PausePoint&)> pause) {
    m_pauses = points;
    m_pause = std::move(pause);
  }
  // Playback stopped before the record of `point`: the "paused" item.
  void Paused(const PausePoint& point);

  // How far playback is behind the recording; fed by the record items and
  // the speed values seen here, and by the head unit and the online traffic
  // service.
  LagMeter& Lag() { return m_lag; }
  const LagMeter& Lag() const { return m_lag; }

  // Items that carried traffic data: TMC messages, service lists and online
  // traffic calls.
  uint32_t RecordsPlayed() const { return m_records.load(std::memory_order_relaxed); }
  // The playback clock (seconds since 1970): the record time of the
  // module's latest tick; 0 when the module publishes none (yet).
  int64_t RecordTime() const;

 private:
  void Emit(const std::string& line);
  // Appends the JSON tmc item; `origin` null when the item's record is not known.
  void TmcJson(std::string& text, const Quillan::TmcMessageData& message, const ItemOrigin* origin);
  // Counts a record item and finds its origin; false when the item's record
  // is not known. An item that `out` will drop (after a stop) is neither
  // counted nor located: the summary tells only of items shown.
  bool Locate(const Output::Line& out, ItemKind kind, ItemOrigin* origin);
  void OriginFields(PelorinTools::JsonWriter& json, const ItemOrigin& origin) const;
  void OriginFields(std::string& line, const ItemOrigin& origin) const;
  PlaybackSummary SummaryNow() const;
  // Declared before an item's Output::Line: calls the pause that the item
  // made due once the line is written and the lock released.
  struct DuePause {
    Reporter& reporter;
    ~DuePause();
  };
  // Hands a traffic item that `out` will show to the comparison.
  void Expect(Output::Line& out, std::string_view json);

  Output& m_output;
  const bool m_json;
  ItemOrigins* m_origins = nullptr;
  bool m_showPass = false;
  ExpectedItems* m_expected = nullptr;
  LagMeter m_lag;
  const PausePoints* m_pauses = nullptr;
  std::function<void(const PausePoint&)> m_pause;
  std::atomic<const PausePoint*> m_duePause{nullptr};  // set and taken by the item's thread
  // 32-bit atomics: lock-free on the 32-bit ARM head unit too. m_records
  // is written holding an Output::Line only.
  std::atomic<uint32_t> m_records{0};
  std::atomic<int32_t> m_tickTime{0};
  BackgroundScan* m_pendingScan = nullptr;  // null: "finished" tells no scan
  std::mutex m_summaryLock;
  PlaybackSummary m_finished;    // guarded by m_summaryLock
  bool m_finishedKnown = false;  // guarded by m_summaryLock
};

}  // namespace PelorinHost
