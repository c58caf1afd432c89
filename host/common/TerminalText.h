#pragma once
// TerminalText: makes bytes from a recording (tags, keys, payloads, file
// names) safe to print on a terminal. Well-formed UTF-8 characters stay;
// control bytes, C1 control characters, DEL and bytes that are not part of
// a well-formed UTF-8 character are escaped, so that an ESC sequence in a
// recording cannot retitle or recolour the terminal. Stateless; any thread.

#include <cstddef>
#include <string>

namespace PelorinTools {

class TerminalText {
 public:
  // Appends `size` bytes escaped, without quotes: \t, \r, \n, \\ and \xNN
  // for every byte that is not printable text.
  static void AppendEscaped(std::string& out, const char* data, size_t size);
  static std::string Escaped(const std::string& bytes);

  // `bytes` in double quotes, escaped as above and a quote as \". Longer than
  // `maxBytes` input bytes: cut there and ended with "...".
  static std::string Quoted(const std::string& bytes, size_t maxBytes = 80);
};

}  // namespace PelorinTools
