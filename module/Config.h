#pragma once
// Config: the player's settings, a table of case-insensitive text keys and
// text values read once from a key=value file. A value type: copy it freely.
// Read-only after FromFile, so the getters take no lock.

#include <map>
#include <string>

namespace Quillan {

class Config {
 public:
  Config() = default;

  // Reads the file; never fails. A file that cannot be opened gives an empty
  // Config and one level-3 trace message.
  static Config FromFile(const std::string& path);

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
  void ParseLine(const std::string& line);

  std::map<std::string, std::string> m_values;  // keys lower-cased
};

}  // namespace Quillan
