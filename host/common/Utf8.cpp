#include "host/common/Utf8.h"

namespace PelorinTools {

size_t Utf8::SequenceLength(const unsigned char* data, size_t size) {
  const unsigned char lead = data[0];
  if (lead < 0x80u) return 1;
  size_t length = 0;
  unsigned char low = 0x80u;  // allowed range of the second byte
  unsigned char high = 0xBFu;
  if (lead >= 0xC2u && lead <= 0xDFu) {
    length = 2;
  } else if (lead >= 0xE0u && lead <= 0xEFu) {
    length = 3;
    if (lead == 0xE0u) low = 0xA0u;   // no overlong forms
    if (lead == 0xEDu) high = 0x9Fu;  // no surrogates
  } else if (lead >= 0xF0u && lead <= 0xF4u) {
    length = 4;
    if (lead == 0xF0u) low = 0x90u;
    if (lead == 0xF4u) high = 0x8Fu;  // nothing above U+10FFFF
  } else {
    return 0;
  }
  if (size < length || data[1] < low || data[1] > high) return 0;
  for (size_t i = 2; i < length; ++i) {
    if ((data[i] & 0xC0u) != 0x80u) return 0;
  }
  return length;
}

}  // namespace PelorinTools
