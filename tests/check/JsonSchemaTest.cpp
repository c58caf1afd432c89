// The JSON report and its documented schema, docs/json-check.md, must agree:
// every key that real output holds is documented for its object, and every
// documented key appears in real output.

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <string>

#include "tests/host/ToolProcess.h"

namespace {

using Keys = std::map<std::string, std::set<std::string>>;  // object kind -> keys

// The keys of each table, under the heading that names the object.
Keys DocumentedKeys() {
  std::ifstream doc(std::string(PELORIN_SOURCE_DIR) + "/docs/json-check.md");
  EXPECT_TRUE(doc.good());
  Keys keys;
  std::string kind;
  for (std::string line; std::getline(doc, line);) {
    if (line.rfind("## ", 0) == 0 || line.rfind("### ", 0) == 0) {
      kind = line.substr(line.find(' ') + 1);
    } else if (line.rfind("| `", 0) == 0) {
      keys[kind].insert(line.substr(3, line.find('`', 3) - 3));
    }
  }
  return keys;
}

void AddKeys(const std::string& kind, const pelorin_tool_test::JsonValue& object, Keys& keys) {
  for (const auto& member : object.members) {
    keys[kind].insert(member.first);
    if (member.first == "tags") {
      for (const auto& entry : member.second.array) AddKeys("tags entry", entry, keys);
    }
  }
}

TEST(JsonSchemaTest, RealOutputHasExactlyTheDocumentedKeys) {
  pelorin_tool_test::TestFolder dir;
  const std::string refused = dir.Write("refused", "1 $TMC ltn=1\n2 $TMC\n");
  const std::string missing = dir.Path() + "/missing";
  pelorin_tool_test::ToolProcess process;
  pelorin_tool_test::RunTool(PELORIN_CHECK_PROGRAM, {"--json", refused, missing}, &process);
  Keys output;
  for (const auto& item : process.Items()) AddKeys(item.type, item.json, output);
  EXPECT_TRUE(process.BadLines().empty());
  const Keys documented = DocumentedKeys();
  for (const char* kind : {"diagnostic", "summary", "tags entry", "total"}) {
    SCOPED_TRACE(kind);
    ASSERT_EQ(output.count(kind), 1u);
    EXPECT_EQ(output.at(kind), documented.at(kind));
  }
}

}  // namespace
