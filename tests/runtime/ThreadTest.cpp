// Thread: name, stack, identity, the priority table behind its cell, and a
// restart once the thread has ended.

#include "runtime/Thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>

#include "FerrixCfgFileReader.h"
#include "runtime/ThreadClient.h"
#include "runtime/ThreadPriorityTable.h"
#include "runtime/TimeBase.h"
#include "tests/support/TestTime.h"

namespace Quillan {
namespace {

uint32_t LongMs() { return pelorin_test::ScaledMs(10000); }

// Run runs `body`, which decides what follows; OnStopped tells the test.
class RecordingClient : public ThreadClient {
 public:
  void Run(Thread& thread) override {
    runs += 1;
    body(thread);
  }
  void OnStopped() override { stopped.Set(); }

  std::function<void(Thread&)> body = [](Thread& thread) { thread.RequestStop(); };
  std::atomic<int> runs{0};
  Event stopped;
};

TEST(ThreadTest, NameStackAndRestartOnceEnded) {
  RecordingClient client;
  Thread thread(&client);
  EXPECT_EQ(thread.GetName(), "nameless_thread");
  thread.SetName(std::string(70, 'n').c_str());
  EXPECT_EQ(thread.GetName(), std::string(59, 'n'));
  thread.SetName("Quillan::DataPlayer");
  thread.Stop();  // before Start: changes nothing
  EXPECT_EQ(thread.GetState(), Thread::kCreated);
  char systemName[64] = {};
  size_t stackSize = 0;
  std::atomic<bool> knowsItself{false};
  client.body = [&](Thread& self) {
    knowsItself = self.IsCurrentThread() && !self.IsOtherThread();
    pthread_getname_np(pthread_self(), systemName, sizeof(systemName));
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &stackSize);
    pthread_attr_destroy(&attributes);
    self.RequestStop();
  };
  thread.Start();
  ASSERT_TRUE(client.stopped.TimedWait(LongMs()));
  client.stopped.Reset();
  thread.Start();  // that thread has ended (a work loop stopped on it): a new one starts
  ASSERT_TRUE(client.stopped.TimedWait(LongMs()));
  EXPECT_TRUE(thread.IsOtherThread());  // until joined, the ended thread is the one
  thread.Stop();
  EXPECT_TRUE(knowsItself);
  EXPECT_FALSE(thread.IsOtherThread() || thread.IsCurrentThread());  // joined: no thread
  EXPECT_EQ(client.runs, 2);
  EXPECT_STREQ(systemName, "Quillan::DataPl");  // the system keeps 15 characters
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
  ThreadPriorityTable::Load();
  uint32_t priority = 0;
  EXPECT_TRUE(thread.GetTablePriority(&priority) && priority == 10u);  // the default cell
  uint32_t configured[32];
  for (uint32_t index = 0; index < 32; ++index) configured[index] = 100 + index;
  // level, class, built-in, configured (level + class * 8, kept as supplied); 0: none
  const int cases[][4] = {{0, 3, 13, 124}, {7, 3, 6, 131}, {7, 2, 13, 123}, {2, 1, 13, 110},
                          {0, 4, 0, 0},    {8, 0, 0, 0},   {0, -1, 0, 0},   {-1, 0, 0, 0}};
  for (const uint32_t* table : {configured, static_cast<uint32_t*>(nullptr)}) {
    FerrixCfgFileReader_SetPriorityTableForTesting(table);
    ThreadPriorityTable::Load();
    for (const auto& c : cases) {
      priority = 77;
      thread.SetPriority(c[0], c[1]);
      const uint32_t found = thread.GetTablePriority(&priority) ? priority : 0u;
      EXPECT_EQ(found, static_cast<uint32_t>(table ? c[3] : c[2])) << c[0] << "," << c[1];
    }
  }
}

}  // namespace
}  // namespace Quillan
