#include "host/recording/CutState.h"

#include <algorithm>
#include <cstring>
#include <tuple>

#include "producers/TotCall.h"

namespace PelorinRecording {
namespace {

bool IsQuery(const std::string& method) {
  return method == "getInventory" || method == "getNewData";
}

bool Before(const StateRecord& a, const StateRecord& b) {
  return std::tie(a.time, a.input, a.line) < std::tie(b.time, b.input, b.line);
}

}  // namespace

std::string DataFile(const Quillan::Record& record) {
  if (record.tag != Quillan::TotCall::kTag) return "";
  const Quillan::TotCall call = Quillan::TotCall::Parse(record.payload);
  if (call.method != "setNewData" || call.Check() != Quillan::TotCall::kReplayed) return "";
  return call.arguments.front();
}

size_t CutState::SlotOf(const Quillan::Record& record) {
  if (record.tag == "$TSL") return 0;
  if (record.tag != Quillan::TotCall::kTag) return kSlots;
  const Quillan::TotCall call = Quillan::TotCall::Parse(record.payload);
  if (call.Check() != Quillan::TotCall::kReplayed || IsQuery(call.method)) return kSlots;
  return 1 + Quillan::TotCall::FindMethod(call.method);
}

void CutState::Offer(RecordingReader& reader, double time, size_t input) {
  const size_t slot = SlotOf(reader.Record());
  if (slot >= kSlots) return;
  const RecordYield yield = reader.Yield();
  if (!yield.Yields()) return;
  StateRecord record;
  record.time = time;
  record.input = input;
  record.line = reader.Number();
  // One input offers its records in file order, which is the order they
  // play in even where its times go back.
  const StateRecord& held = m_records[slot];
  if (m_set[slot] && held.input != input && Before(record, held)) return;
  record.text = reader.Shape().head;
  record.tag = reader.Record().tag;
  record.yield = yield;
  record.timeTextLength = reader.TimeText().size();
  record.dataFile = DataFile(reader.Record());
  m_records[slot] = std::move(record);
  m_set[slot] = true;
}

std::vector<StateRecord> CutState::Records() const {
  std::vector<StateRecord> records;
  for (size_t slot = 0; slot < kSlots; ++slot) {
    if (m_set[slot]) records.push_back(m_records[slot]);
  }
  std::sort(records.begin(), records.end(), Before);
  return records;
}

}  // namespace PelorinRecording
