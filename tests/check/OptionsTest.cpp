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
  // The last of a repeated option wins; speeds read as pelorin-host reads them.
  EXPECT_EQ(Parsed({"--speed=3", "--speed=150%", "e"}).speed, 1.5);
  EXPECT_EQ(Parsed({"--speed", "2x", "e"}).speed, 2.0);
  // "--" ends the options; "-" is standard input.
  EXPECT_EQ(Parsed({"--", "--strict", "-"}).files, (std::vector<std::string>{"--strict", "-"}));
  EXPECT_TRUE(Parsed({"-h", "--timeline=t.svg"}).help);
  EXPECT_TRUE(Parsed({"--version"}).version);
}

TEST(OptionsTest, SpeedsOutsideTheHostsGrammarAreRefused) {
  for (const char* speed : {"1e300", "0.001", "1,5", "-2", "nan", "21474836.48", "2xx"}) {
    Options options;
    std::string error;
    EXPECT_FALSE(Options::Parse({"--speed", speed, "e"}, &options, &error)) << speed;
    EXPECT_NE(error.find("0.01 to 21474836.47"), std::string::npos) << error;
  }
}

}  // namespace
