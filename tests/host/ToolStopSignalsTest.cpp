// The signal installer and write loop both tools share. The stop is
// process-wide and cannot be undone, so this file is a test program of its
// own and its one test walks the order: before the stop, after it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <thread>

#include "host/common/DescriptorWriter.h"
#include "host/common/StopSignals.h"
#include "tests/support/TestTime.h"

namespace PelorinTools {
namespace {

std::atomic<int> g_stops{0};
void CountStop(int /*number*/) { ++g_stops; }

// A pipe whose buffer is full, so that the next write blocks.
struct FullPipe {
  int fds[2] = {-1, -1};
  FullPipe() {
    EXPECT_EQ(pipe(fds), 0);
    fcntl(fds[1], F_SETFL, O_NONBLOCK);
    const std::string chunk(4096, 'x');
    while (write(fds[1], chunk.data(), chunk.size()) > 0) {
    }
    fcntl(fds[1], F_SETFL, 0);
  }
  ~FullPipe() {
    close(fds[0]);
    close(fds[1]);
  }
};

// wallclock: after a stop signal the alarm ends a write blocked on a full
// pipe within about a second; a loop that retried would wait for the reader.
TEST(ToolStopSignalsTest, TheFirstStopSignalCountsAndEndsABlockedWrite) {
  StopSignals::Install(&CountStop);
  const std::string line = "a line\n";
  int pair[2];
  ASSERT_EQ(pipe(pair), 0);
  EXPECT_EQ(DescriptorWriter::WriteAll(pair[1], line.data(), line.size()), 0);
  close(pair[0]);
  EXPECT_EQ(DescriptorWriter::WriteAll(pair[1], line.data(), line.size()), EPIPE);  // not killed
  close(pair[1]);
  EXPECT_EQ(StopSignals::Caught(), 0);

  raise(SIGINT);
  raise(SIGTERM);
  EXPECT_EQ(StopSignals::Caught(), SIGINT);
  EXPECT_EQ(g_stops.load(), 1);

  FullPipe full;
  int done[2];
  ASSERT_EQ(pipe(done), 0);
  std::thread reader([&full, &done] {
    // Drains the pipe late, as a reader that comes back would; the alarm
    // is for the writer.
    sigset_t alarmOnly;
    sigemptyset(&alarmOnly);
    sigaddset(&alarmOnly, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &alarmOnly, nullptr);
    pollfd writerDone{done[0], POLLIN, 0};
    poll(&writerDone, 1, static_cast<int>(pelorin_test::ScaledMs(10000)));
    char sink[4096];
    EXPECT_GT(read(full.fds[0], sink, sizeof sink), 0);
  });
  const int error = DescriptorWriter::WriteAll(full.fds[1], line.data(), line.size());
  close(done[1]);
  reader.join();
  close(done[0]);
  EXPECT_EQ(error, EINTR);
  alarm(0);
}

}  // namespace
}  // namespace PelorinTools
