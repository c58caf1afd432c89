#include "producers/TotCall.h"

namespace Quillan {

const char TotCall::kTag[] = "$TOT";

// Looked up in this order; OnlineTrafficProducer keeps a handler for each,
// in the same order.
const TotMethod TotCall::kMethods[kMethodCount] = {
    {"setOnlineTrafficDataStatus", 1}, {"getInventory", 0},          {"getNewData", 0},
    {"setNewData", 1},                 {"setNewSession", 0},         {"setTimeoutForFallback", 1},
    {"dsiConnectionStateChanged", 1}};

// Names compare byte for byte over their whole length, NUL bytes included.
size_t TotCall::FindMethod(const std::string& name) {
  for (size_t i = 0; i < kMethodCount; ++i) {
    if (name == kMethods[i].name) return i;
  }
  return kMethodCount;
}

TotCall::Verdict TotCall::Check() const {
  if (method.empty()) return kEmptyMethod;
  const size_t index = FindMethod(method);
  if (index == kMethodCount) return kUnknownMethod;
  return arguments.size() == kMethods[index].argumentCount ? kReplayed : kWrongArgumentCount;
}

namespace {

// Reads the argument that begins at `pos` (not a space) and leaves `pos`
// right after it.
std::string ReadArgument(const std::string& payload, size_t& pos) {
  if (payload[pos] == '"') {
    const size_t closing = payload.find('"', pos + 1);
    const size_t end = closing == std::string::npos ? payload.size() : closing;
    std::string argument(payload, pos + 1, end - pos - 1);
    pos = closing == std::string::npos ? end : closing + 1;
    return argument;
  }
  size_t end = payload.find(' ', pos);
  if (end == std::string::npos) end = payload.size();
  std::string argument(payload, pos, end - pos);
  pos = end;
  return argument;
}

}  // namespace

TotCall TotCall::Parse(const std::string& payload) {
  TotCall call;
  const size_t colon = payload.find(':');
  if (colon == std::string::npos) {
    call.method = payload;
    return call;
  }
  call.method.assign(payload, 0, colon);
  size_t pos = colon + 1;
  while (pos < payload.size()) {
    if (payload[pos] == ' ') {
      ++pos;
      continue;
    }
    std::string argument = ReadArgument(payload, pos);
    if (!argument.empty()) call.arguments.push_back(std::move(argument));
  }
  return call;
}

}  // namespace Quillan
