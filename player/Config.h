#pragma once
// Config: the player's settings, a table of case-insensitive text keys and
// text values read once from a key=value file. A value type: copy it freely.
// Read-only after FromFile, so the getters take no lock.
// File format: one key=value per line (LF or CR LF; lines are cut at 1023
// bytes); lines starting with "#" or "//" are comments; keys are lower-cased
// (ASCII letters) and the last occurrence of a key wins. Numbers convert as
// ParseDecimal and ParseInteger do (runtime/NumberText.h): the whole value
// must be the number; "1.5" and "1,5" both read as 1.5.

#include <cstdint>
#include <map>
#include <string>

#include "player/FileStatus.h"

namespace Quillan {

class ByteReader;

class Config {
 public:
  Config() = default;

  // Reads the file; never fails. A file that cannot be opened gives an empty
  // Config and one level-3 trace message.
  static Config FromFile(const std::string& path);
  // Reads key=value lines from `reader` until it reports anything but
  // success (what FromFile does once the file is open).
  static Config FromReader(ByteReader& reader);

  // The stored value (also when empty), else `defaultValue`.
  std::string GetString(const std::string& key, const std::string& defaultValue) const;
  // The value as a number (tried as written, then with "." replaced by ","),
  // else `defaultValue`. An empty value counts as absent.
  double GetDouble(const std::string& key, double defaultValue) const;
  // "true"/"on" and "false"/"off" in any letter case, or a decimal integer
  // (non-zero is true), else `defaultValue`. An empty value counts as absent.
  bool GetBool(const std::string& key, bool defaultValue) const;

  void Clear() { m_values.clear(); }
  bool IsEmpty() const { return m_values.empty(); }

 private:
  // Stores the key=value of one trimmed line; comments and lines without a
  // key are skipped.
  void ParseLine(const std::string& line);
  // Reads bytes up to and including a line feed, at most size - 1 of them,
  // and NUL-terminates them; returns the status of the last read (kSuccess
  // when the line feed or the size ended the line).
  static FileStatus ReadTextLine(ByteReader& reader, uint8_t* buffer, uint32_t size,
                                 uint32_t* count);

  std::map<std::string, std::string> m_values;  // keys lower-cased
};

}  // namespace Quillan
