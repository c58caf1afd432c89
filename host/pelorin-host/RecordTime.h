#pragma once
// RecordTime: the time field of an events-file record, read as the module
// reads it (the text as written, then with a decimal comma; surrounding
// white space ignored; a time that is not a number counts as 0), and written
// back as a JSON number that keeps the recorded digits where it can.
// Stateless.

#include <string>
#include <string_view>

namespace PelorinHost {

class RecordTime {
 public:
  // False (and `seconds` 0) when the text is not a number.
  static bool Parse(std::string_view text, double* seconds);
  // Rewrites the time as a JSON number: "1416131460.50" stays as written,
  // "1,5" becomes 1.5, a text that is not a number 0.
  static void MakeJsonNumber(std::string* text);
};

}  // namespace PelorinHost
