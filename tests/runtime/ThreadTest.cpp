// Thread: names, stack, the priority table behind its cell, the client's
// hooks, and the state machine through stop, suspend and restart.

#include "runtime/Thread.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "FerrixCfgFileReader.h"
#include "runtime/ThreadClient.h"
#include "runtime/ThreadPriorityTable.h"
#include "runtime/TimeBase.h"
#include "tests/support/TestTime.h"

namespace Quillan {
namespace {

using Calls = std::vector<std::string>;
uint32_t LongMs() { return pelorin_test::ScaledMs(10000); }

// Records the hooks in order (read once the thread is joined); Run runs
// `body`, which decides what follows.
class RecordingClient : public ThreadClient {
 public:
  void Run(Thread& thread) override {
    calls.push_back("Run");
    runs += 1;
    body(thread);
  }
  void OnStop() override { calls.push_back("OnStop"); }
  void OnSuspend() override { calls.push_back("OnSuspend"); }
  void OnStart() override { calls.push_back("OnStart"); }
  void OnSuspended() override {
    calls.push_back("OnSuspended");
    suspended.Set();
  }
  void OnStopped() override {
    calls.push_back("OnStopped");
    stopped.Set();
  }

  std::function<void(Thread&)> body = [](Thread& thread) { thread.RequestStop(); };
  int runs = 0;
  Calls calls;
  Event suspended, stopped;
};

TEST(ThreadTest, NameStackAndThreadIdentity) {
  RecordingClient client;
  Thread thread(&client);
  EXPECT_EQ(thread.GetName(), "nameless_thread");
  thread.SetName(std::string(70, 'n').c_str());
  EXPECT_EQ(thread.GetName(), std::string(59, 'n'));
  thread.SetName("Quillan::DataPlayer");
  thread.Stop();  // before Start: changes nothing
  EXPECT_EQ(thread.GetState(), Thread::kCreated);
  EXPECT_FALSE(thread.IsOtherThread());  // no id before Start
  char systemName[64] = {};
  size_t stackSize = 0;
  bool current = false, other = true;
  client.body = [&](Thread& self) {
    pthread_getname_np(pthread_self(), systemName, sizeof(systemName));
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &stackSize);
    pthread_attr_destroy(&attributes);
    current = self.IsCurrentThread();
    other = self.IsOtherThread();
    self.RequestStop();
  };
  thread.Start();
  ASSERT_TRUE(client.stopped.TimedWait(LongMs()));
  EXPECT_TRUE(thread.IsOtherThread());
  thread.Stop();
  EXPECT_FALSE(thread.IsOtherThread());         // cleared once joined
  EXPECT_STREQ(systemName, "Quillan::DataPl");  // the system keeps 15 characters
  EXPECT_TRUE(current && !other);
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
  EXPECT_GE(stackSize, Thread::kStackSize);  // the sanitizers enlarge small stacks
#else
  EXPECT_EQ(stackSize, Thread::kStackSize);
#endif
}

// A thread's priority cell (level, class) is looked up in the built-in table
// unless the configuration reader supplies one; cells outside have none.
TEST(ThreadTest, PriorityCellFromTheBuiltInOrTheConfiguredTable) {
  RecordingClient client;
  Thread thread(&client);
  const auto priorityOf = [&thread](int level, int priorityClass) {
    uint32_t priority = 77;
    thread.SetPriority(level, priorityClass);
    return thread.GetTablePriority(&priority) ? priority : 0u;
  };
  ThreadPriorityTable::Load();
  uint32_t priority = 0;
  EXPECT_TRUE(thread.GetTablePriority(&priority) && priority == 10u);  // the default cell
  EXPECT_EQ(priorityOf(0, 3), 13u);
  EXPECT_EQ(priorityOf(7, 3), 6u);
  EXPECT_EQ(priorityOf(7, 2), 13u);
  uint32_t configured[32];
  for (uint32_t index = 0; index < 32; ++index) configured[index] = 100 + index;
  FerrixCfgFileReader_SetPriorityTableForTesting(configured);
  ThreadPriorityTable::Load();
  EXPECT_EQ(priorityOf(2, 1), 110u);  // level + class * 8, kept as supplied
  EXPECT_EQ(priorityOf(7, 3), 131u);
  FerrixCfgFileReader_SetPriorityTableForTesting(nullptr);
  ThreadPriorityTable::Load();
  EXPECT_EQ(priorityOf(2, 1), 13u);
  for (uint32_t none : {priorityOf(0, 4), priorityOf(8, 0), priorityOf(0, -1), priorityOf(-1, 0)}) {
    EXPECT_EQ(none, 0u);
  }
}

TEST(ThreadTest, StartWakesASuspendedThreadAndRestartsOneThatEnded) {
  RecordingClient client;
  client.body = [&](Thread& self) {
    if (client.runs == 1) {
      self.RequestSuspend();
    } else {
      self.RequestStop();
    }
  };
  Thread thread(&client);
  thread.Start();
  ASSERT_TRUE(client.suspended.TimedWait(LongMs()));
  EXPECT_EQ(thread.GetState(), Thread::kSuspended);
  thread.Start();  // the same POSIX thread runs the client again
  ASSERT_TRUE(client.stopped.TimedWait(LongMs()));
  client.stopped.Reset();
  thread.Start();  // that thread has ended: a new one starts
  ASSERT_TRUE(client.stopped.TimedWait(LongMs()));
  thread.Stop();
  EXPECT_EQ(client.calls, (Calls{"OnStart", "Run", "OnSuspend", "OnSuspended", "Run", "OnStop",
                                 "OnStopped", "OnStart", "Run", "OnStop", "OnStopped"}));
}

}  // namespace
}  // namespace Quillan
