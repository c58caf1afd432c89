#pragma once
// TotCall: one recorded online traffic service call, as read from the
// payload of a "$TOT" record: a method name and its arguments, and whether
// the producer replays it. Plain data; the statics are constant and callable
// from any thread, so that tools following a recording need no producer.
//
// Payload format: the method name is every byte before the first ":" (the
// whole payload when there is none, and then no arguments). After the ":"
// come arguments separated by spaces; a run of spaces yields no empty
// argument. An argument that begins with a double quote runs to the next
// double quote (or the end of the payload), spaces included and quotes
// excluded, and the next argument begins right after the closing quote.
// Empty arguments are dropped. Only the space byte separates; a double quote
// inside an argument that did not begin with one is an ordinary byte.

#include <cstddef>
#include <string>
#include <vector>

namespace Quillan {

// One replayable method: its name in the payload and how many arguments it
// takes.
struct TotMethod {
  const char* name;
  size_t argumentCount;
};

struct TotCall {
  // What OnlineTrafficProducer::OnRecord does with a call when a service is
  // attached; the values are its statuses.
  enum Verdict { kReplayed = 0, kEmptyMethod = 2, kUnknownMethod = 3, kWrongArgumentCount = 4 };
  // The tag of the records that hold calls.
  static const char kTag[];
  // The replayable methods, in lookup order.
  static constexpr size_t kMethodCount = 7;
  static const TotMethod kMethods[kMethodCount];

  std::string method;
  std::vector<std::string> arguments;

  static TotCall Parse(const std::string& payload);
  // The index in kMethods of the method of this exact name (NUL bytes
  // included), or kMethodCount.
  static size_t FindMethod(const std::string& name);
  // The verdict on this call.
  Verdict Check() const;
};

}  // namespace Quillan
