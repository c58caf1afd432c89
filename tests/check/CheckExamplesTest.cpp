// pelorin-check on the recorded examples in examples/: the diagnostics, the
// summaries and the exit status of whole events files, in text and JSON.

#include <gtest/gtest.h>

#include "tests/host/Examples.h"

namespace {

TEST(CheckExamples, ReportsMatchTheRecordedExamples) {
  pelorin_tool_test::RunExamples(PELORIN_CHECK_PROGRAM, PELORIN_SOURCE_DIR "/tests/check/examples");
}

}  // namespace
