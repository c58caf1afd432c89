#pragma once
// Utf8: tells well-formed UTF-8 characters from other bytes, for the
// escaping of terminal and JSON text. Stateless; any thread.

#include <cstddef>

namespace PelorinTools {

class Utf8 {
 public:
  // Length of the well-formed UTF-8 character at `data[0]` (1 for ASCII), or
  // 0 when the bytes there do not start one (overlong forms, surrogates and
  // code points above U+10FFFF included). `size` > 0 bytes are readable.
  static size_t SequenceLength(const unsigned char* data, size_t size);

  // True for a well-formed character that a terminal would obey rather than
  // show: the C1 controls U+0080 to U+009F.
  static bool IsC1Control(const unsigned char* data, size_t length) {
    return length == 2 && data[0] == 0xC2u && data[1] <= 0x9Fu;
  }
};

}  // namespace PelorinTools
