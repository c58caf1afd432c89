// pelorin-host on the recorded examples in examples/: every item the module
// sends out, how the host names its record, and how playback ends.

#include <gtest/gtest.h>

#include "Examples.h"

namespace pelorin_tool_test {
namespace {

TEST(HostExamples, OutputMatchesTheRecordedExamples) {
  RunExamples(PELORIN_HOST_PROGRAM, PELORIN_SOURCE_DIR "/tests/host/examples");
}

}  // namespace
}  // namespace pelorin_tool_test
