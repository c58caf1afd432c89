// The text library both tools share: escaping untrusted bytes for
// terminals and JSON, and time texts.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/common/JsonWriter.h"
#include "host/common/TerminalText.h"
#include "host/common/TimeText.h"

namespace PelorinTools {
namespace {

TEST(ToolTextTest, JsonEscapesAsRfc8259RequiresAndKeepsOnlyValidUtf8) {
  const struct {
    std::string bytes, escaped;
  } cases[] = {
      {"plain text", "plain text"},
      {"a\"b\\c", "a\\\"b\\\\c"},
      {"\n\r\t\b\f", "\\n\\r\\t\\b\\f"},
      {std::string("\x01\x1b\x1f\x00", 4), "\\u0001\\u001b\\u001f\\u0000"},
      {"\x7f \xc2\x9b", "\\u007f \\u009b"},                  // DEL, C1 CSI
      {"Stra\xc3\x9f" "e \xe2\x82\xac \xf0\x9f\x9a\x97", "Stra\xc3\x9f" "e \xe2\x82\xac \xf0\x9f\x9a\x97"},
      {"\xff", "\\u00ff"},
      {"a\xc3", "a\\u00c3"},                                 // cut sequence
      {"\xc0\xaf", "\\u00c0\\u00af"},                        // overlong
      {"\xed\xa0\x80", "\\u00ed\\u00a0\\u0080"},             // surrogate
      {"\xf4\x90\x80\x80", "\\u00f4\\u0090\\u0080\\u0080"},  // beyond U+10FFFF
      {"\xe2\x82x", "\\u00e2\\u0082x"},
  };
  for (const auto& c : cases) {
    std::string out;
    JsonWriter::AppendEscaped(out, c.bytes.data(), c.bytes.size());
    EXPECT_EQ(out, c.escaped) << c.escaped;
  }
  std::string millis;
  JsonWriter::AppendMilliseconds(millis, 7000);
  JsonWriter::AppendMilliseconds(millis += ' ', 1003125);
  JsonWriter::AppendMilliseconds(millis += ' ', 1);
  EXPECT_EQ(millis, "7 1003.125 0.001");
  // Either side of every change in the number of digits, and the ends.
  std::vector<uint64_t> values = {UINT64_MAX, UINT32_MAX, uint64_t{UINT32_MAX} + 1};
  uint64_t power = 1;
  for (int digits = 1; digits <= 20; ++digits, power *= 10) {
    values.insert(values.end(), {power - 1, power, power + 1});
  }
  for (uint64_t value : values) {
    std::string text;
    JsonWriter::AppendUnsigned(text, value);
    EXPECT_EQ(text, std::to_string(value));
  }
}

TEST(ToolTextTest, TerminalTextLeavesNoControlByteRaw) {
  const struct {
    std::string bytes, quoted;
  } cases[] = {
      {"a\"b\\c", "\"a\\\"b\\\\c\""},
      {std::string("\t\r\n\x01\x7f", 5), "\"\\t\\r\\n\\x01\\x7F\""},
      {"\x1b]0;owned\x07\x1b[31m", "\"\\x1B]0;owned\\x07\\x1B[31m\""},  // retitle, recolour
      {"\xc2\x9b" "31m", "\"\\xC2\\x9B31m\""},                           // C1 CSI
      {"Stra\xC3\x9F" "e", "\"Stra\xC3\x9F" "e\""},                      // UTF-8 stays
      {"Stra\xDF" "e", "\"Stra\\xDFe\""},                                // Latin-1 does not
      {"\xE0\x80\x80", "\"\\xE0\\x80\\x80\""},                           // overlong
  };
  for (const auto& c : cases) EXPECT_EQ(TerminalText::Quoted(c.bytes), c.quoted);
  EXPECT_EQ(TerminalText::Quoted("abcdef", 3), "\"abc\"...");
  EXPECT_EQ(TerminalText::Escaped("tag\x1b[2J\"x\""), "tag\\x1B[2J\"x\"");
}

TEST(ToolTextTest, DateTimesDurationsAndNumbers) {
  const struct {
    double seconds;
    const char* iso;
  } dates[] = {
      {1416131460.25, "2014-11-16T09:51:00.25Z"},
      {1577836800.0, "2020-01-01T00:00:00Z"},
      {86400.9996, "1970-01-02T00:00:01Z"},
      {951782400.0, "2000-02-29T00:00:00Z"},   // a leap day of a 400th year
      {4107542400.0, "2100-03-01T00:00:00Z"},  // 2100 has no 29 February
      {2147483648.0, "2038-01-19T03:14:08Z"},  // past 32-bit time_t
      {4294967295.0, "2106-02-07T06:28:15Z"},
      {0.0, ""}, {0.5, ""}, {-5.0, ""}, {5.0e9, ""},
  };
  for (const auto& d : dates) EXPECT_EQ(TimeText::DateTime(d.seconds, TimeText::Style::kIso), d.iso);
  EXPECT_EQ(TimeText::DateTime(1416131460.25, TimeText::Style::kText), "2014-11-16 09:51:00.25 UTC");
  EXPECT_EQ(TimeText::Duration(0), "0s");
  EXPECT_EQ(TimeText::Duration(250), "0.25s");
  EXPECT_EQ(TimeText::Duration(187000), "3m07s");
  EXPECT_EQ(TimeText::Duration(3723250), "1h02m03.25s");
  EXPECT_EQ(TimeText::Duration(-2000), "-2s");
  EXPECT_EQ(TimeText::Duration(100LL * 3600 * 1000), "100h00m00s");
  EXPECT_EQ(TimeText::Number(1416131460.25), "1416131460.25");
  EXPECT_EQ(TimeText::Number(0.1), "0.1");
  EXPECT_EQ(TimeText::Number(-5.0), "-5");
}

}  // namespace
}  // namespace PelorinTools
