#pragma once
// ByteText: shows the bytes of an events file (tags, keys, payload pieces,
// file names) in reports. Quoted() gives a double-quoted, escaped form for
// text reports; AppendJson() writes a JSON string literal. Both keep
// well-formed UTF-8 characters and escape everything that would garble a
// terminal or break JSON. Stateless.

#include <cstddef>
#include <string>

namespace PelorinCheck {

class ByteText {
 public:
  // `bytes` in double quotes: control bytes as \t, \r, \n or \xNN, a quote
  // and a backslash with a backslash, bytes that are not part of a
  // well-formed UTF-8 character as \xNN. Longer than `maxBytes` input bytes:
  // cut there and ended with "...".
  static std::string Quoted(const std::string& bytes, size_t maxBytes = 80);

  // A JSON string literal for `bytes`, quotes included. Bytes that are not
  // part of a well-formed UTF-8 character are read as Latin-1, as the module
  // does when it hands texts to the platform.
  static void AppendJson(std::string& out, const std::string& bytes);

  // Length of the well-formed UTF-8 character at `bytes[pos]`, or 0 when the
  // byte there does not start one (ASCII bytes count as length 1).
  static size_t Utf8CharLength(const std::string& bytes, size_t pos);
};

}  // namespace PelorinCheck
