// pelorin-host's JSON Lines match their documentation: docs/json-host.md
// lists the keys of every item type and their JSON types; real output of
// the bundled example and of a recording that makes every item type is
// checked against it, so a key added or renamed without the documentation
// fails here.

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ToolProcess.h"

namespace pelorin_tool_test {
namespace {

struct KeySchema {
  std::set<JsonValue::Type> types;
  bool optional = false;
};
using Section = std::map<std::string, KeySchema>;

std::string Between(const std::string& text, char mark) {
  const size_t begin = text.find(mark);
  const size_t end = text.find(mark, begin + 1);
  return begin == std::string::npos || end == std::string::npos
             ? std::string()
             : text.substr(begin + 1, end - begin - 1);
}

KeySchema ReadTypes(const std::string& cell) {
  static const std::map<std::string, JsonValue::Type> kTypes = {
      {"number", JsonValue::Type::kNumber}, {"string", JsonValue::Type::kString},
      {"boolean", JsonValue::Type::kBool},  {"array", JsonValue::Type::kArray},
      {"object", JsonValue::Type::kObject}, {"null", JsonValue::Type::kNull}};
  KeySchema schema;
  std::string words = cell;
  const size_t comma = words.find(", optional");
  schema.optional = comma != std::string::npos;
  if (schema.optional) words.resize(comma);
  std::istringstream split(words);
  for (std::string word; split >> word;) {
    if (word == "or") continue;
    const auto type = kTypes.find(word);
    EXPECT_NE(type, kTypes.end()) << "unknown type '" << word << "' in " << cell;
    if (type != kTypes.end()) schema.types.insert(type->second);
  }
  return schema;
}

// Sections by item type ("*" for every item, "serviceList.entries").
std::map<std::string, Section> ReadSchema() {
  std::ifstream doc(PELORIN_SOURCE_DIR "/docs/json-host.md");
  EXPECT_TRUE(doc.good());
  std::map<std::string, Section> schema;
  std::string section;
  for (std::string line; std::getline(doc, line);) {
    if (line == "## Every item") {
      section = "*";
    } else if (line.rfind("## `", 0) == 0) {
      section = Between(line, '`');
    } else if (line.rfind("### `", 0) == 0 && line.find(" entries") != std::string::npos) {
      section = Between(line, '`') + ".entries";
    } else if (line.rfind("| `", 0) == 0 && !section.empty()) {
      const size_t typeCell = line.find('|', 2);
      const std::string type = line.substr(typeCell + 2, line.find('|', typeCell + 1) - typeCell - 3);
      schema[section][Between(line, '`')] = ReadTypes(type);
    }
  }
  return schema;
}

void ExpectMatches(const JsonValue& object, const Section& section, const Section& common,
                   const std::string& line) {
  for (const auto& member : object.members) {
    const auto found = section.count(member.first) ? section.find(member.first)
                                                   : common.find(member.first);
    ASSERT_TRUE(found != common.end()) << "undocumented key " << member.first << " in " << line;
    EXPECT_EQ(found->second.types.count(member.second.type), 1u) << member.first << " in " << line;
  }
  for (const Section* keys : {&section, &common}) {
    for (const auto& key : *keys) {
      if (key.second.optional) continue;
      bool present = false;
      for (const auto& member : object.members) present |= member.first == key.first;
      EXPECT_TRUE(present) << "missing key " << key.first << " in " << line;
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
