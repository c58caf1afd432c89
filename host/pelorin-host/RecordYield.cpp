#include "RecordYield.h"

#include <cstring>

namespace PelorinHost {
namespace {

const char* const kTmcKeys[] = {"timeStamp", "LTN", "SID", "PID", "tmcData"};
const char* const kServiceListKeys[] = {
    "serviceType", "sd_SID", "sd_MGS", "sd_LTCC",       "sd_LTN", "sd_PID", "sd_ST",       "sd_SPN",
    "sd_sendername", "sd_Q", "SID_A", "SID_B", "SID_C", "SS_ID",  "monitorState"};

struct Call {
  const char* method;
  size_t arguments;
};
const Call kCalls[] = {{"setOnlineTrafficDataStatus", 1}, {"getInventory", 0},
                       {"getNewData", 0},
                       {"setNewData", 1},
                       {"setNewSession", 0},
                       {"setTimeoutForFallback", 1},
                       {"dsiConnectionStateChanged", 1}};

template <size_t N>
bool IsKey(const char* const (&keys)[N], const char* begin, size_t size) {
  for (const char* key : keys) {
    if (std::strlen(key) == size && std::memcmp(key, begin, size) == 0) return true;
  }
  return false;
}

// One message for a payload of known keys with plain values, each pair
// ended by one blank or ";"; anything else (quotes, unknown keys, doubled
// separators) may fail to parse.
template <size_t N>
RecordYield::Count PairsYield(const char* const (&keys)[N], const std::string& payload) {
  if (payload.empty()) return RecordYield::kOne;
  if (payload.find('"') != std::string::npos) return RecordYield::kMaybe;
  size_t pos = 0;
  while (pos < payload.size()) {
    const size_t equals = payload.find('=', pos);
    if (equals == std::string::npos || !IsKey(keys, &payload[pos], equals - pos)) {
      return RecordYield::kMaybe;
    }
    size_t end = payload.find_first_of(" ;", equals + 1);
    if (end == std::string::npos) {
      // The last value may not be empty.
      return payload.size() > equals + 1 ? RecordYield::kOne : RecordYield::kMaybe;
    }
    pos = end + 1;
  }
  return RecordYield::kOne;
}

}  // namespace

size_t RecordYield::CallArguments(const std::string& payload, std::string* method) {
  const size_t colon = payload.find(':');
  method->assign(payload, 0, colon == std::string::npos ? payload.size() : colon);
  if (colon == std::string::npos) return 0;
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
      end = closing == std::string::npos ? payload.size() : closing;
      pos = closing == std::string::npos ? end : closing + 1;
    } else {
      end = payload.find(' ', pos);
      if (end == std::string::npos) end = payload.size();
      pos = end;
    }
    if (end > begin) ++count;
  }
  return count;
}

RecordYield RecordYield::Of(const std::string& tag, const std::string& payload) {
  RecordYield yield;
  if (tag == "$TMC") {
    yield.kind = ItemKind::kTmc;
    yield.count = PairsYield(kTmcKeys, payload);
  } else if (tag == "$TSL") {
    yield.kind = ItemKind::kServiceList;
    yield.count = PairsYield(kServiceListKeys, payload);
  } else if (tag == "$TOT") {
    yield.kind = ItemKind::kOnlineTraffic;
    std::string method;
    const size_t arguments = CallArguments(payload, &method);
    for (const Call& call : kCalls) {
      if (method == call.method) yield.count = arguments == call.arguments ? kOne : kNone;
    }
  }
  return yield;
}

}  // namespace PelorinHost
