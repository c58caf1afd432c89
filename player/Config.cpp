#include "player/Config.h"

#include <fcntl.h>

#include <cstring>

#include "player/ByteReader.h"
#include "player/InputFile.h"
#include "runtime/NumberText.h"
#include "runtime/Trace.h"

namespace Quillan {
namespace {

// One line handed to the parser holds at most kLineBufferSize - 1 bytes;
// longer lines are cut and their rest is read as the next line.
constexpr uint32_t kLineBufferSize = 1024;

// ASCII letters only; other bytes (UTF-8 included) keep their value.
std::string LowerCase(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

bool StartsWith(const std::string& text, const char* prefix) {
  return text.compare(0, std::strlen(prefix), prefix) == 0;
}

}  // namespace

Config Config::FromFile(const std::string& path) {
  InputFile file(path, O_RDONLY);
  const FileStatus status = file.Open();
  if (status != FileStatus::kSuccess) {
    // Not an error for the system: reading the unopened file fails at once
    // and every lookup yields its default.
    PELORIN_TRACE(3, "Config::FromFile: ", "failed to open ", path, ", error=", status);
  }
  return FromReader(file);
}

Config Config::FromReader(ByteReader& reader) {
  Config config;
  uint8_t line[kLineBufferSize];
  for (;;) {
    uint32_t count = 0;
    const FileStatus status = ReadTextLine(reader, line, kLineBufferSize, &count);
    if (count > 0) {
      // The text ends at the first NUL, the terminator or one inside the line.
      const char* text = reinterpret_cast<const char*>(line);
      config.ParseLine(TrimText(std::string(text, strnlen(text, count))));
    }
    if (status != FileStatus::kSuccess) break;
  }
  return config;
}

FileStatus Config::ReadTextLine(ByteReader& reader, uint8_t* buffer, uint32_t size,
                                uint32_t* count) {
  if (buffer == nullptr || count == nullptr || size == 0) return FileStatus::kIoError;
  *count = 0;
  FileStatus status = FileStatus::kSuccess;
  while (*count + 1 < size) {
    uint8_t byte = 0;
    uint32_t delivered = 0;
    status = reader.Read(&byte, &delivered);
    if (status != FileStatus::kSuccess || delivered == 0) break;
    buffer[(*count)++] = byte;
    if (byte == '\n') break;
  }
  buffer[*count] = 0;
  return status;
}

void Config::ParseLine(const std::string& line) {
  if (StartsWith(line, "//") || StartsWith(line, "#")) return;
  const size_t equals = line.find('=');
  std::string key = TrimText(line.substr(0, equals));
  if (key.empty()) return;
  std::string value =
      equals == std::string::npos ? std::string() : TrimText(line.substr(equals + 1));
  m_values[LowerCase(std::move(key))] = std::move(value);
}

std::string Config::GetString(const std::string& key, const std::string& defaultValue) const {
  const auto found = m_values.find(LowerCase(key));
  return found != m_values.end() ? found->second : defaultValue;
}

double Config::GetDouble(const std::string& key, double defaultValue) const {
  const std::string text = GetString(key, std::string());
  double value = 0.0;
  if (text.empty() || !ParseDecimal(text, &value)) return defaultValue;
  return value;
}

bool Config::GetBool(const std::string& key, bool defaultValue) const {
  const std::string text = LowerCase(GetString(key, std::string()));
  if (text.empty()) return defaultValue;
  if (text == "false" || text == "off") return false;
  if (text == "true" || text == "on") return true;
  int64_t number = 0;
  if (ParseInteger(text, &number)) return number != 0;
  return defaultValue;
}

}  // namespace Quillan
