#pragma once
// Utf8Text: turns the bytes of an events-file value into the UTF-8 text that
// the platform's string factory takes. Stateless; callable from any thread.
//
// Bytes below 0x80 stay as they are. A run of bytes that already forms a
// well-formed UTF-8 character is kept, so recordings written in UTF-8 come
// through unchanged; every other byte of 0x80 or above is taken as Latin-1
// and written as its two-byte UTF-8 form. The result is always valid UTF-8.
// A NUL byte is kept here; the platform's C-string factory ends the text
// there.

#include <string>

namespace Quillan {

class Utf8Text {
 public:
  static std::string FromBytes(const std::string& bytes);
};

}  // namespace Quillan
