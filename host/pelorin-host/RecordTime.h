#pragma once
// RecordTime: the time field of an events-file record written as a JSON
// number that keeps the recorded digits where it can; the value is the one
// the module reads (Quillan::ParseDecimal). Stateless.

#include <string>

namespace PelorinHost {

class RecordTime {
 public:
  // Rewrites the time as a JSON number: "1416131460.50" stays as written,
  // "1,5" becomes 1.5, a text that is not a number 0.
  static void MakeJsonNumber(std::string* text);
};

}  // namespace PelorinHost
