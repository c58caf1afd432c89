// Bytes of a recording never reach a terminal raw: escape sequences, C1
// controls and bytes that are not UTF-8 are escaped wherever the report
// shows recording bytes or file names, in text and in JSON.

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "host/common/Utf8.h"
#include "host/pelorin-check/Checker.h"
#include "host/pelorin-check/JsonReportWriter.h"
#include "host/pelorin-check/TextReportWriter.h"
#include "tests/check/CheckTestSupport.h"

namespace {

using pelorin_check_test::TestFolder;

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
  const char* const hostile[] = {"\x1b]0;retitled\x07", "\x1b[31m", ("\xc2\x9b" "2J"), "\x9b",
                                 "\xff\xfe", "\r", "\x7f", "\x1b\\"};
  // Where the bytes go; "@" stands for them.
  const struct {
    const char* position;
    const char* fileName;
    const char* line;
  } cases[] = {
      {"tag", "events", "1 $T@ x\n"},
      {"key", "events", "1 $TMC @=1\n"},
      {"value", "events", "1 $TMC LTN=@ tmcData=0A:@\n"},
      {"method", "events", "1 $TOT @\n"},
      {"argument", "events", "1 $TOT setNewData:@\n1 $TOT setTimeoutForFallback:@\n"},
      {"time", "events", "@ $TMC\n"},
      {"file name", "ev@nts", "1 $FOO\n"},
  };
  for (const auto& c : cases) {
    for (const char* bytes : hostile) {
      SCOPED_TRACE(std::string(c.position) + " " + ::testing::PrintToString(std::string(bytes)));
      const auto fill = [bytes](std::string text) {
        for (size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at)) {
          text.replace(at, 1, bytes);
          at += std::string(bytes).size();
        }
        return text;
      };
      TestFolder dir;
      const std::string path = dir.Write(fill(c.fileName), fill(c.line));
      PelorinCheck::Options options;
      options.maxErrors = 0;
      const PelorinCheck::TpegDirectory tpegs;
      std::ostringstream text;
      PelorinCheck::TextReportWriter textWriter(text);
      const PelorinCheck::FileSummary summary =
          PelorinCheck::Checker(options, tpegs, textWriter).CheckFile(path);
      textWriter.WriteTotal(PelorinCheck::RunTotal{});
      // (A backslash in a file name reads as a slash: that file does not open.)
      EXPECT_TRUE(summary.Errors() + summary.Warnings() > 0 || !summary.Unusable().empty());
      EXPECT_EQ(FirstUnsafeByte(text.str()), std::string::npos) << text.str();
      std::ostringstream json;
      PelorinCheck::JsonReportWriter jsonWriter(json);
      PelorinCheck::Checker(options, tpegs, jsonWriter).CheckFile(path);
      EXPECT_EQ(FirstUnsafeByte(json.str()), std::string::npos) << json.str();
    }
  }
}

}  // namespace
