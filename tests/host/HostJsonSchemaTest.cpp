// pelorin-host's JSON Lines match their documentation: docs/json-host.md
// lists the keys of every item type and their JSON types; real output of
// the bundled example and of a recording that makes every item type is
// checked against it, so a key added or renamed without the documentation
// fails here.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ToolProcess.h"

namespace pelorin_tool_test {
namespace {

// A documented key: the JSON types it may take, and whether it may be absent.
struct KeySchema {
  std::set<JsonValue::Type> types;
  bool optional = false;
};
using Section = std::map<std::string, KeySchema>;

std::string InBackticks(const std::string& text) {
  const size_t begin = text.find('`') + 1;
  return text.substr(begin, text.find('`', begin) - begin);
}

// The type cell of a table row: "string or null", "number, optional".
KeySchema ReadTypes(const std::string& cell) {
  static const std::map<std::string, JsonValue::Type> kTypes = {
      {"number", JsonValue::Type::kNumber}, {"string", JsonValue::Type::kString},
      {"boolean", JsonValue::Type::kBool},  {"array", JsonValue::Type::kArray},
      {"null", JsonValue::Type::kNull},     {"object", JsonValue::Type::kObject}};
  KeySchema schema;
  std::istringstream words(cell);
  for (std::string word; words >> word;) {
    if (word.back() == ',') word.pop_back();
    schema.optional |= word == "optional";
    if (kTypes.count(word)) schema.types.insert(kTypes.at(word));
  }
  return schema;
}

// Sections by item type ("*" for every item, "serviceList.entries").
std::map<std::string, Section> ReadSchema() {
  std::ifstream doc(PELORIN_SOURCE_DIR "/docs/json-host.md");
  std::map<std::string, Section> schema;
  std::string section;
  for (std::string line; std::getline(doc, line);) {
    if (line == "## Every item") section = "*";
    if (line.rfind("## `", 0) == 0) section = InBackticks(line);
    if (line.rfind("### `", 0) == 0) section = InBackticks(line) + ".entries";
    if (line.rfind("| `", 0) == 0) {
      const size_t cell = line.find('|', 2) + 1;
      schema[section][InBackticks(line)] = ReadTypes(line.substr(cell, line.find('|', cell) - cell));
    }
  }
  return schema;
}

void ExpectMatches(const JsonValue& object, const Section& section, const Section& common,
                   const std::string& line) {
  for (const auto& member : object.members) {
    const Section& keys = section.count(member.first) ? section : common;
    ASSERT_TRUE(keys.count(member.first)) << "undocumented key " << member.first << " in " << line;
    EXPECT_EQ(keys.at(member.first).types.count(member.second.type), 1u) << member.first;
  }
  for (const Section* keys : {&section, &common}) {
    for (const auto& key : *keys) {
      EXPECT_TRUE(key.second.optional || object.members.end() !=
                  std::find_if(object.members.begin(), object.members.end(),
                               [&key](const auto& member) { return member.first == key.first; }))
          << "missing key " << key.first << " in " << line;
    }
  }
}

TEST(HostJsonSchema, RealOutputMatchesTheDocumentation) {
  const std::map<std::string, Section> schema = ReadSchema();
  ASSERT_TRUE(schema.count("*") && schema.count("serviceList.entries"));
  TestFolder folder;
  const std::string every = folder.Write(
      "every", "1416131460 $TSL serviceType=1 sd_SID=34 sd_SPN=\"R\";sd_SID=35\n"
               "1416131461 $TMC SID=1 tmcData=0a\n1416131462 $TOT getInventory\n"
               "1416131463 $TOT setNewData:a.bin\n");
  const std::string shortFile = folder.Write("short", "1 $TMC SID=1\n\n2 $TMC\n");
  const std::vector<std::vector<std::string>> runs = {
      {"--batched", "--json"},
      {"--json", "--trace", "2", "--speed", "100", every},
      {"--json", "--batched", shortFile},
      {"--json", "--batched", "--loop", "2", every},
      {"--json", "--control", "--pause-at", "@1", every},
  };
  std::set<std::string> seen;
  for (const auto& args : runs) {
    ToolProcess host;
    RunTool(PELORIN_HOST_PROGRAM, args, &host);
    EXPECT_TRUE(host.BadLines().empty());
    for (const Item& item : host.Items()) {
      const auto section = schema.find(item.type);
      ASSERT_NE(section, schema.end()) << "undocumented item type in " << item.line;
      seen.insert(item.type);
      ExpectMatches(item.json, section->second, schema.at("*"), item.line);
      for (const JsonValue& entry : item.json["entries"].array) {
        if (!entry.IsNull()) ExpectMatches(entry, schema.at("serviceList.entries"), {}, item.line);
      }
    }
  }
  // Every documented item type was checked against real output.
  EXPECT_EQ(seen.size() + 2, schema.size());
}

}  // namespace
}  // namespace pelorin_tool_test
