// The option parser both tools share: how arguments split into options,
// values and operands, and the one shape of every option error.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/common/OptionParser.h"

namespace PelorinTools {
namespace {

bool LooksLikeCount(const std::string& text) {
  return !text.empty() && text[0] >= '0' && text[0] <= '9';
}

const OptionParser::Definition kDefinitions[] = {
    {"--flag", 'f', OptionParser::Kind::kFlag},
    {"--value", 0, OptionParser::Kind::kValue},
    {"--help", 'h', OptionParser::Kind::kFlag},
    {"--loop", 0, OptionParser::Kind::kOptionalValue, &LooksLikeCount},
};

// Each item as "NAME=VALUE", "NAME" (no value) or "<OPERAND>"; then "!ERROR".
std::string Walk(const std::vector<std::string>& arguments) {
  OptionParser parser(kDefinitions, sizeof kDefinitions / sizeof kDefinitions[0], arguments);
  OptionParser::Item item;
  std::string walked;
  while (parser.Next(&item)) {
    if (!walked.empty()) walked += ' ';
    if (item.option == nullptr) {
      walked += "<" + item.value + ">";
    } else {
      walked += std::string(item.option->name) + (item.hasValue ? "=" + item.value : "");
    }
  }
  if (!parser.Error().empty()) walked += " !" + parser.Error();
  return walked;
}

TEST(ToolOptionParserTest, SplitsArgumentsIntoOptionsValuesAndOperands) {
  const struct {
    std::vector<std::string> arguments;
    std::string walked;
  } cases[] = {
      {{"--value", "v", "--value=w=x", "a"}, "--value=v --value=w=x <a>"},
      {{"--value="}, "--value="},                 // an empty value is the tool's to judge
      {{"--value", "--flag"}, "--value=--flag"},  // the next argument, whatever it is
      {{"-f", "-h", "--flag", "--flag"}, "--flag --help --flag --flag"},
      {{"-", "", "--", "--flag", "-"}, "<-> <> <--flag> <->"},
      {{"--loop", "3", "--loop", "x", "--loop=y"}, "--loop=3 --loop <x> --loop=y"},
      {{"--loop"}, "--loop"},
      {{"a", "--", "--"}, "<a> <-->"},
  };
  for (const auto& c : cases) EXPECT_EQ(Walk(c.arguments), c.walked) << c.walked;
}

TEST(ToolOptionParserTest, StopsAtTheFirstProblemNamingTheOption) {
  const struct {
    std::vector<std::string> arguments;
    std::string walked;
  } cases[] = {
      {{"--bogus", "--flag"}, " !unknown option '--bogus'"},
      {{"--bogus=1"}, " !unknown option '--bogus'"},
      {{"-fh"}, " !unknown option '-fh'"},  // no clustering
      {{"-x"}, " !unknown option '-x'"},
      {{"--fl"}, " !unknown option '--fl'"},  // no abbreviations
      {{"a", "--value"}, "<a> !option '--value' needs a value"},
      {{"--flag=1"}, " !option '--flag' takes no value"},
      {{"-f=1"}, " !unknown option '-f=1'"},
  };
  for (const auto& c : cases) EXPECT_EQ(Walk(c.arguments), c.walked) << c.walked;
}

TEST(ToolOptionParserTest, UsageIsOneEscapedLineWithAPointerToHelp) {
  EXPECT_EQ(OptionParser::Usage("tool", "unknown option '--\x1b[31m'"),
            "tool: unknown option '--\\x1B[31m' (see 'tool --help')");
  EXPECT_EQ(OptionParser::Usage("tool", "bad\nline"), "tool: bad\\nline (see 'tool --help')");
}

}  // namespace
}  // namespace PelorinTools
