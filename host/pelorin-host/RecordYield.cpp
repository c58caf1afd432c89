#include "RecordYield.h"

#include <algorithm>


namespace PelorinHost {
namespace {

constexpr std::string_view kTmcKeys[] = {"timeStamp", "LTN", "SID", "PID", "tmcData"};
constexpr std::string_view kServiceListKeys[] = {
    "serviceType", "sd_SID", "sd_MGS", "sd_LTCC",       "sd_LTN", "sd_PID", "sd_ST",       "sd_SPN",
    "sd_sendername", "sd_Q", "SID_A", "SID_B", "SID_C", "SS_ID",  "monitorState"};

struct Call {
  std::string_view method;
  size_t arguments;
};
const Call kCalls[] = {{"setOnlineTrafficDataStatus", 1}, {"getInventory", 0},
                       {"getNewData", 0},
                       {"setNewData", 1},
                       {"setNewSession", 0},
                       {"setTimeoutForFallback", 1},
                       {"dsiConnectionStateChanged", 1}};

template <size_t N>
bool IsKey(const std::string_view (&keys)[N], std::string_view key) {
  for (std::string_view known : keys) {
    // Length and first byte tell most keys apart without a compare call.
    if (key.size() == known.size() && key[0] == known[0] && key == known) return true;
  }
  return false;
}

// Whether the key=value payload makes a message: every key known, a quoted
// value runs to the next quote, a plain one to the next blank or ";", one
// byte separates pairs, and the last value is not empty. Keys and values are
// short: plain loops find their ends sooner than memchr.
template <size_t N>
bool PairsYield(const std::string_view (&keys)[N], std::string_view payload) {
  const char* text = payload.data();
  const size_t size = payload.size();
  size_t pos = 0;
  while (pos < size) {
    size_t equals = pos;
    while (equals < size && text[equals] != '=') ++equals;
    if (equals == size || !IsKey(keys, payload.substr(pos, equals - pos))) return false;
    pos = equals + 1;
    size_t valueBegin = pos;
    size_t valueEnd = pos;
    if (pos < size && text[pos] == '"') {
      valueBegin = ++pos;
      if (pos == size) return false;
      valueEnd = pos;
      while (valueEnd < size && text[valueEnd] != '"') ++valueEnd;
      pos = valueEnd == size ? size : valueEnd + 1;
    } else {
      while (valueEnd < size && text[valueEnd] != ' ' && text[valueEnd] != ';') ++valueEnd;
      pos = valueEnd;
    }
    if (pos == size) return valueEnd > valueBegin;
    ++pos;
  }
  return true;
}

}  // namespace

size_t RecordYield::CallArguments(std::string_view payload, std::string_view* method) {
  const size_t colon = payload.find(':');
  *method = payload.substr(0, colon);
  if (colon == std::string_view::npos) return 0;
  size_t count = 0;
  size_t pos = colon + 1;
  while (pos < payload.size()) {
    if (payload[pos] == ' ') {
      ++pos;
      continue;
    }
    size_t begin = pos;
    size_t end;
    if (payload[pos] == '"') {
      begin = pos + 1;
      const size_t closing = payload.find('"', begin);
      end = closing == std::string_view::npos ? payload.size() : closing;
      pos = closing == std::string_view::npos ? end : closing + 1;
    } else {
      end = payload.find(' ', pos);
      if (end == std::string_view::npos) end = payload.size();
      pos = end;
    }
    if (end > begin) ++count;
  }
  return count;
}

RecordYield RecordYield::Of(std::string_view tag, std::string_view payload) {
  RecordYield yield;
  if (tag == "$TMC") {
    yield.kind = ItemKind::kTmc;
    yield.yields = PairsYield(kTmcKeys, payload);
  } else if (tag == "$TSL") {
    yield.kind = ItemKind::kServiceList;
    yield.yields = PairsYield(kServiceListKeys, payload);
  } else if (tag == "$TOT") {
    yield.kind = ItemKind::kOnlineTraffic;
    std::string_view method;
    const size_t arguments = CallArguments(payload, &method);
    for (const Call& call : kCalls) {
      if (method == call.method) yield.yields = arguments == call.arguments;
    }
  }
  return yield;
}

}  // namespace PelorinHost
