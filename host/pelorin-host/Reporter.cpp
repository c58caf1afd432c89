#include "Reporter.h"

#include <cstring>
#include <vector>

#include "BackgroundScan.h"
#include "ExpectedItems.h"
#include "HostClock.h"
#include "Output.h"
#include "host/common/JsonWriter.h"
#include "host/common/TerminalText.h"
#include "host/common/TimeText.h"

namespace PelorinHost {
namespace {

using PelorinTools::JsonWriter;
using PelorinTools::TerminalText;
using PelorinTools::TimeText;

constexpr uint32_t kSpeedValueId = 0x4c000001;
constexpr uint32_t kTickValueId = 0x4d000000;
constexpr uint32_t kNextEventValueId = 0x4d000001;

// One formatting buffer per thread: no allocation per item once warm.
JsonWriter& ThreadWriter() {
  thread_local JsonWriter writer;
  writer.Clear();
  return writer;
}

std::string& ThreadLine() {
  thread_local std::string line;
  line.clear();
  return line;
}

void BeginItem(JsonWriter& json, const char* type) {
  json.BeginObject();
  json.Key("t");
  json.Milliseconds(HostClock::Micros());
  json.Key("type");
  json.String(type, std::char_traits<char>::length(type));
}

// The JSON tmc item is formatted straight into a char buffer: one is
// written per record, and keys placed one by one cost more than the record.
char* Put(char* out, const char* text, size_t size) {
  std::memcpy(out, text, size);
  return out + size;
}

template <size_t N>
char* Put(char* out, const char (&text)[N]) {
  return Put(out, text, N - 1);
}

// As JsonWriter::Milliseconds: up to three decimals, trailing zeros dropped.
char* PutMilliseconds(char* out, uint64_t micros) {
  out = JsonWriter::PutUnsigned(out, micros / 1000);
  const uint32_t fraction = static_cast<uint32_t>(micros % 1000);
  if (fraction == 0) return out;
  *out++ = '.';
  *out++ = static_cast<char>('0' + fraction / 100);
  if (fraction % 100 == 0) return out;
  *out++ = static_cast<char>('0' + fraction / 10 % 10);
  if (fraction % 10 == 0) return out;
  *out++ = static_cast<char>('0' + fraction % 10);
  return out;
}

char* PutHex(char* out, const uint8_t* bytes, size_t size) {
  static const char kDigits[] = "0123456789abcdef";
  for (size_t i = 0; i < size; ++i) {
    *out++ = kDigits[bytes[i] >> 4];
    *out++ = kDigits[bytes[i] & 0x0f];
  }
  return out;
}

// The buffer of this thread's JSON tmc items, at least `size` bytes.
char* TmcBuffer(size_t size) {
  thread_local std::vector<char> buffer(256);
  if (buffer.size() < size) buffer.resize(size);
  return buffer.data();
}

// Readable lines start with the time in seconds and the item type.
void BeginReadable(std::string& line, const char* type) {
  const uint64_t micros = HostClock::Micros();
  std::string seconds;
  JsonWriter::AppendUnsigned(seconds, micros / 1000000u);
  if (seconds.size() < 6) line.append(6 - seconds.size(), ' ');
  line += seconds;
  line += '.';
  const uint32_t millis = static_cast<uint32_t>(micros / 1000u % 1000u);
  line += static_cast<char>('0' + millis / 100);
  line += static_cast<char>('0' + millis / 10 % 10);
  line += static_cast<char>('0' + millis % 10);
  line += "  ";
  line += type;
}

void AppendField(std::string& line, const char* name, uint64_t value) {
  line += ' ';
  line += name;
  line += '=';
  JsonWriter::AppendUnsigned(line, value);
}

// Bytes from a recording never reach a terminal raw.
void AppendQuoted(std::string& line, const std::string& text) {
  line += TerminalText::Quoted(text, text.size());
}

void AppendTextField(std::string& line, const char* name, const std::shared_ptr<CIString>& text) {
  line += ' ';
  line += name;
  line += '=';
  if (text) {
    AppendQuoted(line, text->utf8());
  } else {
    line += '-';
  }
}

void JsonText(JsonWriter& json, const char* key, const std::shared_ptr<CIString>& text) {
  json.Key(key);
  if (text) {
    json.String(text->utf8());
  } else {
    json.Null();
  }
}

void JsonEntry(JsonWriter& json, const asi::navigation::trafficinfo::sTIServiceListEntry& entry) {
  static const asi::navigation::trafficinfo::sTIServiceDescription kNoDescription;
  static const asi::navigation::trafficinfo::sTIServiceIdentifiers kNoIdentifiers;
  const auto& d = entry.serviceDescription ? *entry.serviceDescription : kNoDescription;
  const auto& i = entry.serviceIdentifiers ? *entry.serviceIdentifiers : kNoIdentifiers;
  json.BeginObject();
  json.Key("serviceType");
  json.Uint(entry.serviceType);
  json.Key("sid");
  json.Uint(d.sd_SID);
  json.Key("mgs");
  json.Uint(d.sd_MGS);
  json.Key("ltcc");
  json.Uint(d.sd_LTCC);
  json.Key("ltn");
  json.Uint(d.sd_LTN);
  json.Key("pid");
  json.Uint(d.sd_PID);
  json.Key("st");
  json.Uint(d.sd_ST);
  JsonText(json, "spn", d.sd_SPN);
  JsonText(json, "senderName", d.sd_sendername);
  json.Key("q");
  json.Uint(d.sd_Q);
  json.Key("sidA");
  json.Uint(i.SID_A);
  json.Key("sidB");
  json.Uint(i.SID_B);
  json.Key("sidC");
  json.Uint(i.SID_C);
  json.Key("ssId");
  json.Int(i.SS_ID);
  json.Key("monitorState");
  json.Uint(entry.monitorState);
  json.EndObject();
}

void ReadableEntry(std::string& line,
                   const asi::navigation::trafficinfo::sTIServiceListEntry& entry) {
  static const asi::navigation::trafficinfo::sTIServiceDescription kNoDescription;
  static const asi::navigation::trafficinfo::sTIServiceIdentifiers kNoIdentifiers;
  const auto& d = entry.serviceDescription ? *entry.serviceDescription : kNoDescription;
  const auto& i = entry.serviceIdentifiers ? *entry.serviceIdentifiers : kNoIdentifiers;
  line += " {serviceType=";
  JsonWriter::AppendUnsigned(line, entry.serviceType);
  AppendField(line, "sid", d.sd_SID);
  AppendField(line, "mgs", d.sd_MGS);
  AppendField(line, "ltcc", d.sd_LTCC);
  AppendField(line, "ltn", d.sd_LTN);
  AppendField(line, "pid", d.sd_PID);
  AppendField(line, "st", d.sd_ST);
  AppendTextField(line, "spn", d.sd_SPN);
  AppendTextField(line, "senderName", d.sd_sendername);
  AppendField(line, "q", d.sd_Q);
  AppendField(line, "sidA", i.SID_A);
  AppendField(line, "sidB", i.SID_B);
  AppendField(line, "sidC", i.SID_C);
  line += " ssId=";
  JsonWriter::AppendSigned(line, i.SS_ID);
  AppendField(line, "monitorState", entry.monitorState);
  line += '}';
}

// Seconds since 1970 beside their UTC date-time: "1416131458 (2014-11-16T09:50:58Z)".
void AppendSeconds(std::string& line, int64_t seconds) {
  JsonWriter::AppendSigned(line, seconds);
  const std::string iso = TimeText::DateTime(static_cast<double>(seconds), TimeText::Style::kIso);
  if (iso.empty()) return;
  line += " (";
  line += iso;
  line += ')';
}

// What a data-pool value means, for a person: "speed 200 %", "clock ...".
void AppendValue(std::string& line, uint32_t id, int32_t value) {
  if (id == kSpeedValueId) {
    line += " speed ";
    JsonWriter::AppendSigned(line, value);
    line += " %";
  } else if (id == kTickValueId || id == kNextEventValueId) {
    line += id == kTickValueId ? " clock " : " next event ";
    AppendSeconds(line, value);
  } else {
    line += " = ";
    JsonWriter::AppendSigned(line, value);
  }
}

void AppendHex(std::string& line, uint32_t id) {
  static const char kDigits[] = "0123456789abcdef";
  line += "0x";
  for (int shift = 28; shift >= 0; shift -= 4) line += kDigits[(id >> shift) & 0x0f];
}

}  // namespace

void Reporter::Emit(const std::string& line) { m_output.WriteLine(line); }

bool Reporter::Locate(const Output::Line& out, ItemKind kind, ItemOrigin* origin) {
  // `out` holds the output's lock: one writer at a time.
  if (out.Refused()) return false;
  m_records.store(m_records.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  if (m_origins == nullptr || !m_origins->Find(kind, origin)) return false;
  origin->micros = HostClock::Micros();
  m_lag.Item(origin->pass, origin->seconds, origin->micros);
  if (m_pauses != nullptr) {
    const PausePoint* pause = m_pauses->After(origin->line);
    if (pause != nullptr) m_duePause.store(pause);
  }
  return true;
}

void Reporter::OriginFields(JsonWriter& json, const ItemOrigin& origin) const {
  json.Key("line");
  json.Uint(origin.line);
  json.Key("recordTime");
  json.Number(origin.recordTime);
  if (origin.state) {
    json.Key("state");
    json.Bool(true);
  }
  if (m_showPass) {
    json.Key("pass");
    json.Uint(origin.pass);
  }
}

void Reporter::OriginFields(std::string& line, const ItemOrigin& origin) const {
  AppendField(line, "line", origin.line);
  if (origin.state) line += " state";
  if (m_showPass) AppendField(line, "pass", origin.pass);
}

// The first item that differs is not shown, nor anything after it.
void Reporter::Expect(Output::Line& out, std::string_view json) {
  if (m_expected == nullptr || out.Refused() || m_expected->Check(json)) return;
  out.Drop();
  m_output.RefuseLines();
}

int64_t Reporter::RecordTime() const {
  const int32_t tick = m_tickTime.load(std::memory_order_relaxed);
  return tick > 0 ? tick : 0;
}

Reporter::DuePause::~DuePause() {
  const PausePoint* pause = reporter.m_duePause.exchange(nullptr);
  if (pause != nullptr && reporter.m_pause) reporter.m_pause(*pause);
}

void Reporter::Tmc(const Quillan::TmcMessageData& message) {
  DuePause due{*this};
  Output::Line out(m_output);
  ItemOrigin origin;
  const bool known = Locate(out, ItemKind::kTmc, &origin);
  const CIUInt8Array* data = message.tmcData.get();
  if (m_json) {
    const size_t begin = out.Text().size();
    TmcJson(out.Text(), message, known ? &origin : nullptr);
    Expect(out, std::string_view(out.Text()).substr(begin));
    return;
  }
  if (m_expected != nullptr) {
    std::string& json = ThreadLine();
    TmcJson(json, message, known ? &origin : nullptr);
    Expect(out, json);
  }
  std::string& line = out.Text();
  BeginReadable(line, "tmc");
  if (known) OriginFields(line, origin);
  line += " timeStamp=";
  AppendSeconds(line, message.timeStamp);
  AppendField(line, "ltn", message.ltn);
  AppendField(line, "sid", message.sid);
  AppendField(line, "pid", message.pid);
  line += " tmcData=";
  if (data == nullptr) {
    line += '-';
  } else {
    // The same hex digits as the JSON item's string.
    JsonWriter hex;
    hex.HexString(data->data(), data->size());
    line.append(hex.Text(), 1, hex.Text().size() - 2);
  }
}

void Reporter::TmcJson(std::string& text, const Quillan::TmcMessageData& message,
                       const ItemOrigin* origin) {
  const CIUInt8Array* data = message.tmcData.get();
  const size_t dataSize = data != nullptr ? data->size() : 0;
  const size_t timeSize = origin != nullptr ? origin->recordTime.size() : 0;
  // Every field but the record time and the data is at most 20 digits.
  char* const begin = TmcBuffer(256 + timeSize + 2 * dataSize);
  char* out = Put(begin, "{\"t\":");
  // One clock read per item: the one taken when it was located.
  out = PutMilliseconds(out, origin != nullptr ? origin->micros : HostClock::Micros());
  out = Put(out, ",\"type\":\"tmc\"");
  if (origin != nullptr) {
    out = Put(out, ",\"line\":");
    out = JsonWriter::PutUnsigned(out, origin->line);
    out = Put(out, ",\"recordTime\":");
    out = Put(out, origin->recordTime.data(), timeSize);
    if (m_showPass) {
      out = Put(out, ",\"pass\":");
      out = JsonWriter::PutUnsigned(out, origin->pass);
    }
  }
  out = Put(out, ",\"timeStamp\":");
  out = JsonWriter::PutUnsigned(out, message.timeStamp);
  out = Put(out, ",\"ltn\":");
  out = JsonWriter::PutUnsigned(out, message.ltn);
  out = Put(out, ",\"sid\":");
  out = JsonWriter::PutUnsigned(out, message.sid);
  out = Put(out, ",\"pid\":");
  out = JsonWriter::PutUnsigned(out, message.pid);
  if (data != nullptr) {
    out = Put(out, ",\"tmcData\":\"");
    out = PutHex(out, data->data(), dataSize);
    out = Put(out, "\"}");
  } else {
    out = Put(out, ",\"tmcData\":null}");
  }
  text.append(begin, static_cast<size_t>(out - begin));
}

void Reporter::ServiceList(const Quillan::ServiceListEntries* entries) {
  DuePause due{*this};
  Output::Line out(m_output);
  ItemOrigin origin;
  const bool known = Locate(out, ItemKind::kServiceList, &origin);
  static const Quillan::ServiceListEntries kEmpty;
  const Quillan::ServiceListEntries& list = entries ? *entries : kEmpty;
  if (m_json || m_expected != nullptr) {
    JsonWriter& json = ThreadWriter();
    BeginItem(json, "serviceList");
    if (known) OriginFields(json, origin);
    json.Key("entries");
    json.BeginArray();
    for (const auto& entry : list) {
      if (entry) {
        JsonEntry(json, *entry);
      } else {
        json.Null();
      }
    }
    json.EndArray();
    json.EndObject();
    Expect(out, json.Text());
    if (m_json) {
      out.Text() += json.Text();
      return;
    }
  }
  std::string& line = out.Text();
  BeginReadable(line, "serviceList");
  if (known) OriginFields(line, origin);
  line += ' ';
  JsonWriter::AppendUnsigned(line, list.size());
  line += list.size() == 1 ? " entry" : " entries";
  for (const auto& entry : list) {
    if (entry) ReadableEntry(line, *entry);
  }
}

uint64_t Reporter::OnlineTrafficCall(const char* call, const std::vector<CallArgument>& args) {
  DuePause due{*this};
  Output::Line out(m_output);
  ItemOrigin origin;
  const bool known = Locate(out, ItemKind::kOnlineTraffic, &origin);
  const uint64_t line = known ? origin.line : 0;
  if (m_json || m_expected != nullptr) {
    JsonWriter& json = ThreadWriter();
    BeginItem(json, "onlineTraffic");
    if (known) OriginFields(json, origin);
    json.Key("call");
    json.String(call, std::char_traits<char>::length(call));
    json.Key("args");
    json.BeginArray();
    for (const CallArgument& arg : args) {
      if (arg.isText) {
        json.String(arg.text);
      } else {
        json.Int(arg.number);
      }
    }
    json.EndArray();
    json.EndObject();
    Expect(out, json.Text());
    if (m_json) {
      out.Text() += json.Text();
      return line;
    }
  }
  std::string& text = out.Text();
  BeginReadable(text, "onlineTraffic");
  if (known) OriginFields(text, origin);
  text += ' ';
  text += call;
  text += '(';
  for (size_t i = 0; i < args.size(); ++i) {
    if (i > 0) text += ", ";
    if (args[i].isText) {
      AppendQuoted(text, args[i].text);
    } else {
      JsonWriter::AppendSigned(text, args[i].number);
    }
  }
  text += ')';
  return line;
}

void Reporter::DataPoolValue(uint32_t id, bool known, int32_t value) {
  if (known && id == kTickValueId) m_tickTime.store(value, std::memory_order_relaxed);
  if (known && id == kSpeedValueId) m_lag.SetSpeed(value / 100.0);
  if (m_json) {
    JsonWriter& json = ThreadWriter();
    BeginItem(json, "dataPool");
    json.Key("id");
    json.IdString(id);
    json.Key("value");
    if (known) {
      json.Int(value);
    } else {
      json.Null();
    }
    json.EndObject();
    Emit(json.Text());
    return;
  }
  std::string& line = ThreadLine();
  BeginReadable(line, "dataPool");
  line += ' ';
  AppendHex(line, id);
  if (known) {
    AppendValue(line, id, value);
  } else {
    line += " = ?";
  }
  Emit(line);
}

void Reporter::Event(uint32_t id) {
  if (m_json) {
    JsonWriter& json = ThreadWriter();
    BeginItem(json, "event");
    json.Key("id");
    json.IdString(id);
    json.EndObject();
    Emit(json.Text());
    return;
  }
  std::string& line = ThreadLine();
  BeginReadable(line, "event");
  line += ' ';
  AppendHex(line, id);
  Emit(line);
}

void Reporter::Paused(const PausePoint& point) {
  if (m_json) {
    JsonWriter& json = ThreadWriter();
    BeginItem(json, "paused");
    json.Key("line");
    json.Uint(point.line);
    json.Key("recordTime");
    json.Number(point.recordTime);
    json.Key("pauseAt");
    json.String(point.bound);
    json.EndObject();
    Emit(json.Text());
    return;
  }
  std::string& line = ThreadLine();
  BeginReadable(line, "paused");
  AppendField(line, "line", point.line);
  line += " pauseAt=";
  AppendQuoted(line, point.bound);
  Emit(line);
}

void Reporter::Trace(const char* channel, int level, const char* text) {
  const size_t textSize = std::char_traits<char>::length(text);
  if (m_json) {
    JsonWriter& json = ThreadWriter();
    BeginItem(json, "trace");
    json.Key("channel");
    json.String(channel, std::char_traits<char>::length(channel));
    json.Key("level");
    json.Int(level);
    json.Key("text");
    json.String(text, textSize);
    json.EndObject();
    m_output.WriteTrace(json.Text());
    return;
  }
  std::string& line = ThreadLine();
  BeginReadable(line, "trace");
  line += ' ';
  TerminalText::AppendEscaped(line, channel, std::char_traits<char>::length(channel));
  line += '/';
  JsonWriter::AppendSigned(line, level);
  line += ' ';
  TerminalText::AppendEscaped(line, text, textSize);
  m_output.WriteTrace(line);
}

PlaybackSummary Reporter::SummaryNow() const {
  PlaybackSummary summary;
  summary.tallyKnown = m_origins != nullptr;
  if (m_origins != nullptr) {
    Output::Line none(m_output);
    summary.tally = m_origins->Tally();
  }
  summary.wallSeconds = static_cast<double>(HostClock::Micros()) / 1e6;
  summary.lag = m_lag.Now();
  return summary;
}

PlaybackSummary Reporter::Summary(bool now) {
  {
    std::lock_guard<std::mutex> guard(m_summaryLock);
    if (m_finishedKnown && !now) return m_finished;
  }
  return SummaryNow();
}

void Reporter::Finished() {
  {
    // After the stop nothing more is told or counted: the rest of the pass
    // was never shown.
    Output::Line none(m_output);
    if (none.Refused()) return;
    if (m_origins != nullptr) m_origins->EndOfPass();
  }
  const PlaybackSummary summary = SummaryNow();
  {
    std::lock_guard<std::mutex> guard(m_summaryLock);
    m_finished = summary;
    m_finishedKnown = true;
  }
  const ScanResult* scan = m_pendingScan != nullptr ? &m_pendingScan->Result() : nullptr;
  if (m_json) {
    JsonWriter& json = ThreadWriter();
    BeginItem(json, "finished");
    if (scan != nullptr) {
      json.Key("complete");
      json.Bool(scan->complete);
      json.Key("records");
      json.Uint(scan->records);
      if (!scan->complete) {
        json.Key("stopLine");
        json.Uint(scan->stopLine);
        json.Key("reason");
        json.String(scan->reason);
      }
      summary.AppendJson(json);
    }
    json.EndObject();
    Emit(json.Text());
    return;
  }
  std::string& line = ThreadLine();
  BeginReadable(line, "finished");
  if (scan != nullptr) {
    line += scan->complete ? " complete=true" : " complete=false";
    AppendField(line, "records", scan->records);
    if (!scan->complete) {
      AppendField(line, "stopLine", scan->stopLine);
      line += " reason=";
      AppendQuoted(line, scan->reason);
    }
    summary.AppendFields(line);
  }
  Emit(line);
}

}  // namespace PelorinHost
