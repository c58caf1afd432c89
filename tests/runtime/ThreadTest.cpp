// Thread: names, stack, priority cell, the client's hooks, and the state
// machine through stop, suspend and restart.

#include "runtime/Thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "runtime/ThreadClient.h"
#include "runtime/TimeBase.h"
#include "tests/support/TestTime.h"

namespace Quillan {
namespace {

uint32_t LongMs() { return pelorin_test::ScaledMs(10000); }

// Records the hooks in order. Run does what the test puts in `body`, then
// by default asks the thread to stop.
class RecordingClient : public ThreadClient {
 public:
  void Run(Thread& thread) override {
    Note("Run");
    runs += 1;
    if (body) body(thread);
    if (stopAfterRun) thread.RequestStop();
  }
  void OnStop() override { Note("OnStop"); }
  void OnSuspend() override { Note("OnSuspend"); }
  void OnStart() override { Note("OnStart"); }
  void OnSuspended() override {
    Note("OnSuspended");
    suspended.Set();
  }
  void OnStopped() override {
    Note("OnStopped");
    stopped.Set();
  }
  std::vector<std::string> Calls() {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_calls;
  }

  std::function<void(Thread&)> body;
  bool stopAfterRun = true;
  std::atomic<int> runs{0};
  Event suspended, stopped;

 private:
  void Note(const char* call) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_calls.push_back(call);
  }
  std::mutex m_lock;
  std::vector<std::string> m_calls;
};

using Calls = std::vector<std::string>;

TEST(ThreadTest, NamesKeepFiftyNineCharactersAndTheSystemGetsWhatItAccepts) {
  RecordingClient client;
  Thread thread(&client);
  EXPECT_EQ(thread.GetName(), "nameless_thread");
  const std::string seventy(70, 'n');
  thread.SetName(seventy.c_str());
  EXPECT_EQ(thread.GetName(), seventy.substr(0, 59));
  thread.SetName(nullptr);
  EXPECT_EQ(thread.GetName(), "");

  thread.SetName("Quillan::DataPlayer");
  std::string systemName;
  size_t stackSize = 0;
  client.body = [&](Thread&) {
    char name[64] = {};
    pthread_getname_np(pthread_self(), name, sizeof(name));
    systemName = name;
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &stackSize);
    pthread_attr_destroy(&attributes);
  };
  thread.Start();
  ASSERT_TRUE(client.stopped.TimedWait(LongMs()));
  thread.Stop();
  EXPECT_EQ(systemName, "Quillan::DataPl");
  EXPECT_EQ(thread.GetName(), "Quillan::DataPlayer");
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
  EXPECT_GE(stackSize, Thread::kStackSize);  // the sanitizers enlarge small stacks
#else
  EXPECT_EQ(stackSize, Thread::kStackSize);
#endif
}

TEST(ThreadTest, PriorityCellDefaultsToTenWithTheBuiltInTable) {
  RecordingClient client;
  Thread thread(&client);
  uint32_t priority = 0;
  ASSERT_TRUE(thread.GetTablePriority(&priority));
  EXPECT_EQ(priority, 10u);
  thread.SetPriority(0, 3);
  ASSERT_TRUE(thread.GetTablePriority(&priority));
  EXPECT_EQ(priority, 13u);
  thread.SetPriority(9, 3);
  EXPECT_FALSE(thread.GetTablePriority(&priority));
}

TEST(ThreadTest, AClientThatRequestsStopEndsTheThreadThroughItsHooks) {
  RecordingClient client;
  Thread thread(&client);
  bool onItsThread = false, otherThread = true;
  client.body = [&](Thread& self) {
    onItsThread = self.IsCurrentThread();
    otherThread = self.IsOtherThread();
  };
  EXPECT_FALSE(thread.IsOtherThread());  // nothing recorded before Start
  thread.Start();
  ASSERT_TRUE(client.stopped.TimedWait(LongMs()));
  EXPECT_TRUE(thread.IsOtherThread());
  thread.Stop();
  EXPECT_EQ(client.Calls(), (Calls{"OnStart", "Run", "OnStop", "OnStopped"}));
  EXPECT_TRUE(onItsThread);
  EXPECT_FALSE(otherThread);
  EXPECT_EQ(thread.GetState(), Thread::kStopped);
  EXPECT_FALSE(thread.IsOtherThread());  // the id is cleared once joined
}

TEST(ThreadTest, StopOfAThreadNeverStartedChangesNothing) {
  RecordingClient client;
  Thread thread(&client);
  thread.Stop();
  EXPECT_EQ(thread.GetState(), Thread::kCreated);
  EXPECT_TRUE(client.Calls().empty());
}

TEST(ThreadTest, StopWaitsForARunningClient) {
  RecordingClient client;
  Event entered;
  client.stopAfterRun = false;
  client.body = [&](Thread& self) {
    entered.Set();
    while (self.GetState() == Thread::kRunning) SleepMs(1);
  };
  Thread thread(&client);
  thread.Start();
  ASSERT_TRUE(entered.TimedWait(LongMs()));
  thread.Stop();
  EXPECT_EQ(client.Calls(), (Calls{"OnStart", "Run", "OnStop", "OnStopped"}));
}

TEST(ThreadTest, ASuspendedThreadRunsItsClientAgainOnStart) {
  RecordingClient client;
  client.stopAfterRun = false;
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
  thread.Start();  // wakes the same POSIX thread
  ASSERT_TRUE(client.stopped.TimedWait(LongMs()));
  thread.Stop();
  EXPECT_EQ(client.Calls(),
            (Calls{"OnStart", "Run", "OnSuspend", "OnSuspended", "Run", "OnStop", "OnStopped"}));
}

TEST(ThreadTest, StartAfterTheThreadEndedOnItsOwnStartsItAgain) {
  RecordingClient client;
  Thread thread(&client);
  thread.Start();
  ASSERT_TRUE(client.stopped.TimedWait(LongMs()));
  client.stopped.Reset();
  thread.Start();
  ASSERT_TRUE(client.stopped.TimedWait(LongMs()));
  thread.Stop();
  EXPECT_EQ(client.runs, 2);
}

}  // namespace
}  // namespace Quillan
