#include "host/common/JsonWriter.h"

#include <cstring>

#include "host/common/Utf8.h"

namespace PelorinTools {
namespace {

const char kHexDigits[] = "0123456789abcdef";

void AppendByteEscape(std::string& out, unsigned char byte) {
  char escape[6] = {'\\', 'u', '0', '0', kHexDigits[byte >> 4], kHexDigits[byte & 0x0f]};
  out.append(escape, sizeof(escape));
}

// True for bytes that go into a JSON string unchanged.
inline bool IsPlain(unsigned char byte) {
  return byte >= 0x20 && byte < 0x7f && byte != '"' && byte != '\\';
}

// Decimal digits of `value`: a few comparisons for the values that records
// hold, which fit 32 bits; a loop only above.
size_t DigitCount(uint64_t value) {
  if (value > 0xffffffffu) {
    size_t size = 10;
    for (uint64_t power = 10000000000u; size < 20 && value >= power; power *= 10) ++size;
    return size;
  }
  const uint32_t small = static_cast<uint32_t>(value);
  if (small < 100000u) {
    return small < 100u ? (small < 10u ? 1 : 2) : small < 1000u ? 3 : small < 10000u ? 4 : 5;
  }
  if (small < 10000000u) return small < 1000000u ? 6 : 7;
  return small < 100000000u ? 8 : small < 1000000000u ? 9 : 10;
}

}  // namespace

void JsonWriter::AppendEscaped(std::string& out, const char* data, size_t size) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(data);
  size_t i = 0;
  while (i < size) {
    size_t run = i;
    while (run < size && IsPlain(bytes[run])) ++run;
    if (run > i) {
      out.append(data + i, run - i);
      i = run;
      if (i == size) break;
    }
    const unsigned char byte = bytes[i];
    if (byte >= 0x80) {
      const size_t length = Utf8::SequenceLength(bytes + i, size - i);
      if (length == 0 || Utf8::IsC1Control(bytes + i, length)) {
        // Invalid bytes read as Latin-1; C1 controls escaped as well.
        AppendByteEscape(out, length == 0 ? byte : bytes[i + 1]);
        i += length == 0 ? 1 : length;
      } else {
        out.append(data + i, length);
        i += length;
      }
      continue;
    }
    switch (byte) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      case '\b':
        out += "\\b";
        break;
      case '\f':
        out += "\\f";
        break;
      default:
        AppendByteEscape(out, byte);
        break;
    }
    ++i;
  }
}

void JsonWriter::AppendUnsigned(std::string& out, uint64_t value) {
  char digits[20];
  out.append(digits, static_cast<size_t>(PutUnsigned(digits, value) - digits));
}

char* JsonWriter::PutUnsigned(char* out, uint64_t value) {
  // Counts the digits first and writes them backwards in place, two at a
  // time where the value allows.
  static const char kPairs[] =
      "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
      "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
      "8081828384858687888990919293949596979899";
  const size_t size = DigitCount(value);
  char* digit = out + size;
  while (value > 0xffffffffu) {
    *--digit = static_cast<char>('0' + value % 10);
    value /= 10;
  }
  // 32-bit division is much cheaper on the 32-bit targets.
  uint32_t small = static_cast<uint32_t>(value);
  for (; small >= 100; small /= 100) {
    const char* pair = kPairs + 2 * (small % 100);
    *--digit = pair[1];
    *--digit = pair[0];
  }
  if (small >= 10) {
    *--digit = kPairs[2 * small + 1];
    *--digit = kPairs[2 * small];
  } else {
    *--digit = static_cast<char>('0' + small);
  }
  return out + size;
}

void JsonWriter::AppendSigned(std::string& out, int64_t value) {
  if (value < 0) {
    out += '-';
    AppendUnsigned(out, 0 - static_cast<uint64_t>(value));
  } else {
    AppendUnsigned(out, static_cast<uint64_t>(value));
  }
}

void JsonWriter::AppendMilliseconds(std::string& out, uint64_t micros) {
  AppendUnsigned(out, micros / 1000);
  uint32_t fraction = static_cast<uint32_t>(micros % 1000);
  if (fraction == 0) return;
  char digits[4] = {'.', static_cast<char>('0' + fraction / 100),
                    static_cast<char>('0' + fraction / 10 % 10),
                    static_cast<char>('0' + fraction % 10)};
  size_t length = 4;
  while (digits[length - 1] == '0') --length;
  out.append(digits, length);
}

void JsonWriter::Clear() {
  m_text.clear();
  m_depth = 0;
  m_afterKey = false;
  m_first[0] = true;
}

void JsonWriter::BeforeValue() {
  if (m_afterKey) {
    m_afterKey = false;
    return;
  }
  if (m_depth > 0) {
    if (!m_first[m_depth]) m_text += ',';
    m_first[m_depth] = false;
  }
}

void JsonWriter::BeginObject() {
  BeforeValue();
  m_text += '{';
  if (m_depth + 1 < kMaxDepth) ++m_depth;
  m_first[m_depth] = true;
}

void JsonWriter::EndObject() {
  m_text += '}';
  if (m_depth > 0) --m_depth;
}

void JsonWriter::BeginArray() {
  BeforeValue();
  m_text += '[';
  if (m_depth + 1 < kMaxDepth) ++m_depth;
  m_first[m_depth] = true;
}

void JsonWriter::EndArray() {
  m_text += ']';
  if (m_depth > 0) --m_depth;
}

void JsonWriter::Key(const char* key) {
  // One append per key: keys are the host's own short ASCII names.
  char text[64];
  size_t length = 0;
  if (!m_first[m_depth]) text[length++] = ',';
  m_first[m_depth] = false;
  text[length++] = '"';
  while (*key != '\0' && length < sizeof(text) - 2) text[length++] = *key++;
  text[length++] = '"';
  text[length++] = ':';
  m_text.append(text, length);
  m_afterKey = true;
}

void JsonWriter::TextKey(const std::string& key) {
  if (!m_first[m_depth]) m_text += ',';
  m_first[m_depth] = false;
  m_text += '"';
  AppendEscaped(m_text, key.data(), key.size());
  m_text += "\":";
  m_afterKey = true;
}

void JsonWriter::String(const char* data, size_t size) {
  BeforeValue();
  m_text += '"';
  AppendEscaped(m_text, data, size);
  m_text += '"';
}

void JsonWriter::Int(int64_t value) {
  BeforeValue();
  AppendSigned(m_text, value);
}

void JsonWriter::Uint(uint64_t value) {
  BeforeValue();
  AppendUnsigned(m_text, value);
}

void JsonWriter::Number(std::string_view text) {
  BeforeValue();
  m_text += text;
}

void JsonWriter::Null() {
  BeforeValue();
  m_text += "null";
}

void JsonWriter::Bool(bool value) {
  BeforeValue();
  m_text += value ? "true" : "false";
}

void JsonWriter::Milliseconds(uint64_t micros) {
  BeforeValue();
  AppendMilliseconds(m_text, micros);
}

void JsonWriter::HexString(const uint8_t* bytes, size_t size) {
  BeforeValue();
  const size_t start = m_text.size();
  m_text.resize(start + 2 * size + 2);
  char* out = &m_text[start];
  *out++ = '"';
  for (size_t i = 0; i < size; ++i) {
    *out++ = kHexDigits[bytes[i] >> 4];
    *out++ = kHexDigits[bytes[i] & 0x0f];
  }
  *out = '"';
}

void JsonWriter::IdString(uint32_t id) {
  BeforeValue();
  char text[12] = {'"', '0', 'x'};
  for (int i = 0; i < 8; ++i) text[3 + i] = kHexDigits[(id >> (28 - 4 * i)) & 0x0f];
  text[11] = '"';
  m_text.append(text, sizeof(text));
}

}  // namespace PelorinTools
