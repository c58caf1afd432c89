// The command line: what is accepted (what is refused, with a one-line
// reason, is in the recorded example "exit").

#include "host/pelorin-check/Options.h"

#include <gtest/gtest.h>

namespace {

using PelorinCheck::Options;

Options Parsed(const std::vector<std::string>& arguments) {
  Options options;
  std::string error;
  EXPECT_TRUE(Options::Parse(arguments, &options, &error)) << error;
  return options;
}

TEST(OptionsTest, FlagsValuesAndFilesInAnyOrderAndTheirDefaults) {
  const Options options = Parsed({"a", "--strict", "--speed", "2.5", "--json", "--root=/media/usb",
                                  "b", "--config", "my.cfg", "--max-errors", "0"});
  EXPECT_EQ(options.files, (std::vector<std::string>{"a", "b"}));
  EXPECT_TRUE(options.strict && options.json && options.hasSpeed);
  EXPECT_EQ(options.speed, 2.5);
  EXPECT_EQ(options.root, "/media/usb");
  EXPECT_EQ(options.configFile, "my.cfg");
  EXPECT_EQ(options.maxErrors, 0u);
  EXPECT_EQ(Parsed({"--timeline=t.svg", "e"}).timeline, "t.svg");
  const Options plain = Parsed({"events"});
  EXPECT_EQ(plain.maxErrors, 20u);
  EXPECT_FALSE(plain.strict || plain.json || plain.hasSpeed);
  // The last of a repeated option wins; "1,5" reads as the module reads numbers.
  EXPECT_EQ(Parsed({"--speed=3", "--speed=1,5", "e"}).speed, 1.5);
  // "--" ends the options; "-" is standard input.
  EXPECT_EQ(Parsed({"--", "--strict", "-"}).files, (std::vector<std::string>{"--strict", "-"}));
  EXPECT_TRUE(Parsed({"-h", "--timeline=t.svg"}).help);
  EXPECT_TRUE(Parsed({"--version"}).version);
}

}  // namespace
