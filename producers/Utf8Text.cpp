#include "producers/Utf8Text.h"

#include <cstdint>

namespace Quillan {
namespace {

bool IsContinuation(uint8_t byte) { return (byte & 0xC0u) == 0x80u; }

// Length of the well-formed UTF-8 character at `pos` (2 to 4), or 0 when the
// bytes there are not one. Rejects overlong forms, surrogates and code points
// above U+10FFFF.
size_t Utf8SequenceLength(const std::string& bytes, size_t pos) {
  const uint8_t lead = static_cast<uint8_t>(bytes[pos]);
  size_t length = 0;
  uint8_t secondMin = 0x80;
  uint8_t secondMax = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) secondMin = 0xA0;
    if (lead == 0xED) secondMax = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) secondMin = 0x90;
    if (lead == 0xF4) secondMax = 0x8F;
  } else {
    return 0;
  }
  if (bytes.size() - pos < length) return 0;
  const uint8_t second = static_cast<uint8_t>(bytes[pos + 1]);
  if (second < secondMin || second > secondMax) return 0;
  for (size_t i = 2; i < length; ++i) {
    if (!IsContinuation(static_cast<uint8_t>(bytes[pos + i]))) return 0;
  }
  return length;
}

void AppendLatin1(std::string& out, uint8_t byte) {
  out += static_cast<char>(0xC0u | (byte >> 6));
  out += static_cast<char>(0x80u | (byte & 0x3Fu));
}

}  // namespace

std::string Utf8Text::FromBytes(const std::string& bytes) {
  std::string out;
  out.reserve(bytes.size());
  size_t pos = 0;
  while (pos < bytes.size()) {
    const uint8_t byte = static_cast<uint8_t>(bytes[pos]);
    if (byte < 0x80u) {
      out += bytes[pos++];
      continue;
    }
    const size_t length = Utf8SequenceLength(bytes, pos);
    if (length > 0) {
      out.append(bytes, pos, length);
      pos += length;
    } else {
      AppendLatin1(out, byte);
      ++pos;
    }
  }
  return out;
}

}  // namespace Quillan
