#pragma once
// JsonWriter: builds one JSON text (one line of JSON Lines) into a reusable
// string, without iostreams, so that a million records format quickly.
// Commas are placed automatically; the caller pairs Begin/End and gives a
// Key before every member value. Strings are escaped as RFC 8259 requires;
// bytes that are not part of valid UTF-8 are written as \u00XX (read as
// Latin-1), and so are DEL and the C1 controls.
// One writer per thread.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace PelorinTools {

class JsonWriter {
 public:
  JsonWriter() { m_text.reserve(512); }

  void Clear();
  const std::string& Text() const { return m_text; }

  void BeginObject();
  void EndObject();
  void BeginArray();
  void EndArray();
  void Key(const char* key);
  // A key from outside (a recording's tag): escaped as a string is.
  void TextKey(const std::string& key);

  void String(const char* data, size_t size);
  void String(const std::string& text) { String(text.data(), text.size()); }
  void Int(int64_t value);
  void Uint(uint64_t value);
  void Null();
  void Bool(bool value);
  // A number already written as JSON wants it (the caller checked it).
  void Number(std::string_view text);
  // Milliseconds given in microseconds, written as a number with up to three
  // decimals ("12.5", "7", "1003.125").
  void Milliseconds(uint64_t micros);
  // Lower-case hex digits, two per byte, as one string.
  void HexString(const uint8_t* bytes, size_t size);
  // "0x" and eight lower-case hex digits, as one string.
  void IdString(uint32_t id);

  // Appends `size` bytes as the inside of a JSON string (no quotes).
  static void AppendEscaped(std::string& out, const char* data, size_t size);
  static void AppendUnsigned(std::string& out, uint64_t value);
  // Writes the decimal digits of `value` (at most 20) at `out`; returns their end.
  static char* PutUnsigned(char* out, uint64_t value);
  static void AppendSigned(std::string& out, int64_t value);
  static void AppendMilliseconds(std::string& out, uint64_t micros);

 private:
  static constexpr int kMaxDepth = 16;

  void BeforeValue();

  std::string m_text;
  bool m_first[kMaxDepth] = {};
  int m_depth = 0;
  bool m_afterKey = false;
};

}  // namespace PelorinTools
