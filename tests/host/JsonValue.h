#pragma once
// JsonValue: a strict little JSON parser for the end-to-end tests, which read
// pelorin-host's JSON Lines. Parse fails on anything RFC 8259 does not allow
// (so a badly escaped line fails the test), including trailing text.

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace pelorin_host_test {

class JsonValue {
 public:
  enum class Type { kNull, kBool, kNumber, kString, kArray, kObject };

  static bool Parse(const std::string& text, JsonValue* value, std::string* error);

  Type type() const { return m_type; }
  bool IsNull() const { return m_type == Type::kNull; }
  double Number() const { return m_number; }
  const std::string& String() const { return m_string; }
  const std::vector<JsonValue>& Array() const { return m_array; }
  // Member names in the order written.
  const std::vector<std::string>& Keys() const { return m_keys; }
  bool Has(const std::string& key) const { return m_members.count(key) != 0; }
  // The member, or a null value when there is none.
  const JsonValue& operator[](const std::string& key) const;

 private:
  friend class JsonParser;

  Type m_type = Type::kNull;
  bool m_bool = false;
  double m_number = 0.0;
  std::string m_string;
  std::vector<JsonValue> m_array;
  std::vector<std::string> m_keys;
  std::map<std::string, JsonValue> m_members;
};

}  // namespace pelorin_host_test
