// pelorin-edit on the recorded examples in examples/: whole runs, the
// records written and what standard error says.

#include <gtest/gtest.h>

#include "tests/host/Examples.h"

namespace {

TEST(EditExamples, RunsMatchTheRecordedExamples) {
  pelorin_tool_test::RunExamples(PELORIN_EDIT_PROGRAM, PELORIN_SOURCE_DIR "/tests/edit/examples");
}

}  // namespace
