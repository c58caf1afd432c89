// SplitPath: directory and file name at the last unescaped slash.

#include "runtime/SplitPath.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Quillan {
namespace {

TEST(SplitPath, DirectoryAndName) {
  struct Case {
    std::string path;
    std::string directory;
    std::string name;
  };
  const std::vector<Case> cases = {
      {"/data/rec/a.txt", "/data/rec/", "a.txt"},
      {"/fs/sda0/quillan/events", "/fs/sda0/quillan/", "events"},
      {"a.txt", "", "a.txt"},
      {"/a.txt", "", "/a.txt"},
      {"/data/rec/", "/data/rec/", ""},
      {"", "", ""},
      {"d\\/x/y", "d\\/x/", "y"},  // an escaped slash does not count
      {"d/x\\/y", "d/", "x\\/y"},
      {"d\\\\/y", "d\\\\/", "y"},  // an escaped backslash does not escape the slash
      {"d/y\\", "d/", "y\\"},      // a backslash at the end escapes nothing
      {"\\/a", "", "\\/a"},
  };
  for (const Case& c : cases) {
    std::string directory = "stale";
    std::string name = "stale";
    SplitPath(c.path, &directory, &name);
    EXPECT_EQ(directory, c.directory) << c.path;
    EXPECT_EQ(name, c.name) << c.path;
  }
  std::string directory;
  SplitPath("/x/y", &directory, nullptr);  // either output may be left out
  EXPECT_EQ(directory, "/x/");
}

}  // namespace
}  // namespace Quillan
