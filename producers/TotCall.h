#pragma once
// TotCall: one recorded online traffic service call, as read from the
// payload of a "$TOT" record: a method name and its arguments. Plain data;
// Parse is stateless and callable from any thread.
//
// Payload format: the method name is every byte before the first ":" (the
// whole payload when there is none, and then no arguments). After the ":"
// come arguments separated by spaces; a run of spaces yields no empty
// argument. An argument that begins with a double quote runs to the next
// double quote (or the end of the payload), spaces included and quotes
// excluded, and the next argument begins right after the closing quote.
// Empty arguments are dropped. Only the space byte separates; a double quote
// inside an argument that did not begin with one is an ordinary byte.

#include <string>
#include <vector>

namespace Quillan {

struct TotCall {
  std::string method;
  std::vector<std::string> arguments;

  static TotCall Parse(const std::string& payload);
};

}  // namespace Quillan
