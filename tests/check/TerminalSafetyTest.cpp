// Bytes of a recording never reach a terminal raw: escape sequences, C1
// controls and bytes that are not UTF-8 are escaped wherever the report
// shows recording bytes or file names, in text and in JSON, and wherever
// either tool's messages echo its arguments.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/common/Utf8.h"
#include "tests/host/ToolProcess.h"

namespace {

using pelorin_tool_test::TestFolder;

// The first byte that a terminal would obey or that is not UTF-8, or npos.
size_t FirstUnsafeByte(const std::string& text) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  for (size_t i = 0; i < text.size();) {
    const size_t length = PelorinTools::Utf8::SequenceLength(bytes + i, text.size() - i);
    const bool control = length == 1 && ((bytes[i] < 0x20 && bytes[i] != '\n') || bytes[i] == 0x7f);
    if (length == 0 || control || PelorinTools::Utf8::IsC1Control(bytes + i, length)) return i;
    i += length;
  }
  return std::string::npos;
}

TEST(TerminalSafetyTest, NoRawControlByteReachesTheReport) {
  const std::string hostile[] = {"\x1b]0;retitled\x07", "\xc2\x9b" "2J", "\xff\xfe", "\r", "\x7f"};
  // Where the bytes go, "@" standing for them: tag, key, values, method,
  // arguments, time, file name.
  const char* const lines[] = {"1 $T@ x\n1 $TMC @=1\n1 $TMC LTN=@ tmcData=0A:@\n1 $TOT @\n",
                               "1 $TOT setNewData:@\n1 $TOT setTimeoutForFallback:@\n@ $TMC\n"};
  for (const std::string& bytes : hostile) {
    for (const char* line : lines) {
      std::string events = line;
      for (size_t at = events.find('@'); at != std::string::npos; at = events.find('@', at)) {
        events.replace(at, 1, bytes);
      }
      TestFolder dir;
      const std::string path = dir.Write("ev" + bytes + "nts", events);
      for (const char* form : {"--strict", "--json"}) {
        SCOPED_TRACE(::testing::PrintToString(bytes) + line + form);
        pelorin_tool_test::ToolProcess check;
        EXPECT_EQ(pelorin_tool_test::RunTool(PELORIN_CHECK_PROGRAM,
                                             {"--max-errors", "0", "--strict", form, path}, &check),
                  1);
        EXPECT_EQ(FirstUnsafeByte(check.Output()), std::string::npos) << check.Output();
      }
    }
  }
}

TEST(TerminalSafetyTest, MessagesEchoArgumentsEscaped) {
  TestFolder dir;
  const std::string events = dir.Write("events", "1 $TMC\n");
  const std::string bytes = "\x1b]0;retitled\x07\xc2\x9b";
  const std::vector<std::vector<std::string>> both = {
      {"--a" + bytes}, {"--speed", bytes, events}, {"--root", "/no" + bytes}, {"/no" + bytes}};
  const std::vector<std::vector<std::string>> host = {{"--tpegs-dir", "/no" + bytes, events},
                                                      {"--module", "/no" + bytes, events}};
  const std::vector<std::vector<std::string>> check = {{"--config", "/no" + bytes, events}};
  for (const char* program : {PELORIN_HOST_PROGRAM, PELORIN_CHECK_PROGRAM}) {
    const bool isHost = std::string(program) == PELORIN_HOST_PROGRAM;
    std::vector<std::vector<std::string>> cases = both;
    cases.insert(cases.end(), (isHost ? host : check).begin(), (isHost ? host : check).end());
    for (const std::vector<std::string>& args : cases) {
      SCOPED_TRACE(::testing::PrintToString(args));
      pelorin_tool_test::ToolProcess tool;
      EXPECT_EQ(pelorin_tool_test::RunTool(program, args, &tool), 2);
      EXPECT_NE(tool.Stderr(), "");
      EXPECT_EQ(FirstUnsafeByte(tool.Stderr()), std::string::npos) << tool.Stderr();
    }
  }
}

}  // namespace
