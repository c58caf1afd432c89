// EventsScan: where the host expects playback to stop, by the module's own
// line rules, and how many records come before.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include <string>

#include "EventsScan.h"

namespace PelorinHost {
namespace {

ScanResult Scan(const std::string& bytes) {
  char path[] = "/tmp/pelorin-scan.XXXXXX";
  const int fd = ::mkstemp(path);
  EXPECT_GE(fd, 0);
  EXPECT_EQ(::write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  ::close(fd);
  ScanResult result;
  std::string error;
  EXPECT_TRUE(EventsScan::ScanFile(path, &result, &error)) << error;
  ::unlink(path);
  return result;
}

TEST(HostEventsScan, StopLineReasonAndRecords) {
  using namespace std::string_literals;
  const struct {
    std::string bytes;
    uint64_t records, playable, stopLine;  // stopLine 0: complete
    const char* reason;
  } cases[] = {
      {"", 0, 0, 0, ""},
      {"1 $TMC a\n2 $TSL\r\n3 $TOT x\r4 $XYZ", 4, 3, 0, ""},
      {"1 $TMC\n2 $TMC \n", 2, 2, 0, ""},
      {"1 $TMC\n\n3 $TMC\n", 1, 1, 2, "empty line"},
      {"1 $TMC\r\n\r\n", 1, 1, 2, "empty line"},
      {"1 $TMC\nnoblank\n", 1, 1, 2, "no blank after the time stamp"},
      {" 1 $TMC\n", 0, 0, 1, "empty time stamp (the line starts with a blank)"},
      {"1  $TMC\n", 0, 0, 1, "empty tag (two blanks after the time stamp)"},
      {"1 \n", 0, 0, 1, "empty tag (nothing after the time stamp)"},
      // The byte after a lone CR starts the next line as data, even a CR.
      {"1 $TMC\r\r\n", 1, 1, 2, "no blank after the time stamp"},
      // ... and is lost when the file ends right after it.
      {"1 $TMC\rx", 1, 1, 0, ""},
      // A NUL ends the payload, not the line.
      {"1 $TMC a\0b\n2 $TMC\n"s, 2, 2, 0, ""},
      {"1 $TMC\n\x01\x02\0\x03\n"s, 1, 1, 2, "binary data at byte 7"},
      {"1\t$TMC\n", 0, 0, 1, "no blank after the time stamp"},
  };
  for (const auto& test : cases) {
    const ScanResult result = Scan(test.bytes);
    EXPECT_EQ(result.complete, test.stopLine == 0) << test.bytes;
    EXPECT_EQ(result.records, test.records) << test.bytes;
    EXPECT_EQ(result.playable, test.playable) << test.bytes;
    EXPECT_EQ(result.stopLine, test.stopLine) << test.bytes;
    EXPECT_EQ(result.reason, test.reason) << test.bytes;
  }
}

}  // namespace
}  // namespace PelorinHost
