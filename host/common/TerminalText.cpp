#include "host/common/TerminalText.h"

#include "host/common/Utf8.h"

namespace PelorinTools {
namespace {

const char kHexDigits[] = "0123456789ABCDEF";

void AppendHexByte(std::string& out, unsigned char byte) {
  const char text[4] = {'\\', 'x', kHexDigits[byte >> 4], kHexDigits[byte & 0x0f]};
  out.append(text, sizeof(text));
}

// Appends one character of at most `size` bytes; returns the bytes it took.
size_t AppendOne(std::string& out, const unsigned char* data, size_t size, bool quoteToo) {
  const unsigned char byte = data[0];
  const size_t length = Utf8::SequenceLength(data, size);
  if (byte == '\\' || (quoteToo && byte == '"')) {
    out += '\\';
    out += static_cast<char>(byte);
  } else if (byte == '\t') {
    out += "\\t";
  } else if (byte == '\r') {
    out += "\\r";
  } else if (byte == '\n') {
    out += "\\n";
  } else if (byte < 0x20u || byte == 0x7Fu || length == 0 || Utf8::IsC1Control(data, length)) {
    AppendHexByte(out, byte);
  } else {
    out.append(reinterpret_cast<const char*>(data), length);
    return length;
  }
  return 1;
}

}  // namespace

void TerminalText::AppendEscaped(std::string& out, const char* data, size_t size) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(data);
  size_t pos = 0;
  while (pos < size) pos += AppendOne(out, bytes + pos, size - pos, false);
}

std::string TerminalText::Escaped(const std::string& bytes) {
  std::string out;
  AppendEscaped(out, bytes.data(), bytes.size());
  return out;
}

std::string TerminalText::Quoted(const std::string& bytes, size_t maxBytes) {
  std::string out = "\"";
  const size_t end = bytes.size() < maxBytes ? bytes.size() : maxBytes;
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  size_t pos = 0;
  while (pos < end) pos += AppendOne(out, data + pos, end - pos, true);
  out += '"';
  if (end < bytes.size()) out += "...";
  return out;
}

}  // namespace PelorinTools
