#include "producers/TotCall.h"

namespace Quillan {
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
