// SplitPath: directory and file name at the last unescaped slash.

#include "runtime/SplitPath.h"

#include <gtest/gtest.h>

#include <string>

namespace Quillan {
namespace {

TEST(SplitPath, DirectoryAndName) {
  // path, directory, name
  const char* const cases[][3] = {
      {"/data/rec/a.txt", "/data/rec/", "a.txt"},
      {"a.txt", "", "a.txt"},
      {"/a.txt", "", "/a.txt"},
      {"/data/rec/", "/data/rec/", ""},
      {"d\\/x/y", "d\\/x/", "y"},  // an escaped slash does not count
      {"d/x\\/y", "d/", "x\\/y"},
      {"d\\\\/y", "d\\\\/", "y"},  // an escaped backslash does not escape the slash
      {"d/y\\", "d/", "y\\"},      // a backslash at the end escapes nothing
  };
  for (const auto& c : cases) {
    std::string directory = "stale", name = "stale";
    SplitPath(c[0], &directory, &name);
    EXPECT_EQ(directory, c[1]) << c[0];
    EXPECT_EQ(name, c[2]) << c[0];
  }
}

}  // namespace
}  // namespace Quillan
