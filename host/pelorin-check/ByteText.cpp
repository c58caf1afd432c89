#include "host/pelorin-check/ByteText.h"

#include <cstdio>

#include "producers/Utf8Text.h"

namespace PelorinCheck {
namespace {

void AppendHexByte(std::string& out, const char* prefix, unsigned char byte) {
  char text[12];
  std::snprintf(text, sizeof(text), "%s%02X", prefix, static_cast<unsigned>(byte));
  out += text;
}

bool IsContinuation(unsigned char byte) { return (byte & 0xC0u) == 0x80u; }

}  // namespace

size_t ByteText::Utf8CharLength(const std::string& bytes, size_t pos) {
  const unsigned char lead = static_cast<unsigned char>(bytes[pos]);
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
  if (pos + length > bytes.size()) return 0;
  const unsigned char second = static_cast<unsigned char>(bytes[pos + 1]);
  if (second < low || second > high) return 0;
  for (size_t i = 2; i < length; ++i) {
    if (!IsContinuation(static_cast<unsigned char>(bytes[pos + i]))) return 0;
  }
  return length;
}

std::string ByteText::Quoted(const std::string& bytes, size_t maxBytes) {
  std::string out = "\"";
  const size_t end = bytes.size() < maxBytes ? bytes.size() : maxBytes;
  size_t pos = 0;
  while (pos < end) {
    const unsigned char byte = static_cast<unsigned char>(bytes[pos]);
    const size_t length = Utf8CharLength(bytes, pos);
    if (byte == '"' || byte == '\\') {
      out += '\\';
      out += static_cast<char>(byte);
    } else if (byte == '\t') {
      out += "\\t";
    } else if (byte == '\r') {
      out += "\\r";
    } else if (byte == '\n') {
      out += "\\n";
    } else if (byte < 0x20u || byte == 0x7Fu || length == 0) {
      AppendHexByte(out, "\\x", byte);
    } else {
      out.append(bytes, pos, length);
      pos += length;
      continue;
    }
    ++pos;
  }
  out += '"';
  if (end < bytes.size()) out += "...";
  return out;
}

void ByteText::AppendJson(std::string& out, const std::string& bytes) {
  const std::string text = Quillan::Utf8Text::FromBytes(bytes);
  out += '"';
  for (char c : text) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\t') {
      out += "\\t";
    } else if (byte < 0x20u) {
      AppendHexByte(out, "\\u00", byte);
    } else {
      out += c;
    }
  }
  out += '"';
}

}  // namespace PelorinCheck
