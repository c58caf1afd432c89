#pragma once
// Handlers and a settable clock for the work-loop tests. A TestHandler logs
// its name when it runs and counts Execute and Release; a Blocker holds the
// loop busy until Go(), so that tests can queue work deterministically.

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "runtime/Event.h"
#include "runtime/WorkHandler.h"
#include "tests/support/TestTime.h"

namespace pelorin_test {

// Bound for waits that only end early when the code works.
inline uint32_t LongMs() { return ScaledMs(10000); }

class ExecutionLog {
 public:
  void Add(const std::string& name) {
    std::lock_guard<std::mutex> guard(m_lock);
    m_names.push_back(name);
  }
  std::vector<std::string> Names() {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_names;
  }

 private:
  std::mutex m_lock;
  std::vector<std::string> m_names;
};

class TestHandler : public Quillan::WorkHandler {
 public:
  explicit TestHandler(ExecutionLog* log = nullptr, std::string name = "",
                       std::function<void()> action = {})
      : m_log(log), m_name(std::move(name)), m_action(std::move(action)) {}

  void Execute() override {
    executed += 1;
    if (m_log != nullptr) m_log->Add(m_name);
    if (m_action) m_action();
    executedEvent.Set();
  }
  void Release() override {
    released += 1;
    releasedEvent.Set();
  }

  std::atomic<int> executed{0};
  std::atomic<int> released{0};
  Quillan::Event executedEvent;
  Quillan::Event releasedEvent;

 private:
  ExecutionLog* m_log;
  std::string m_name;
  std::function<void()> m_action;
};

class Blocker : public TestHandler {
 public:
  Blocker()
      : TestHandler(nullptr, "", [this] {
          entered.Set();
          go.Wait();
        }) {}
  bool WaitEntered() { return entered.TimedWait(LongMs()); }
  void Go() { go.Set(); }

  Quillan::Event entered;
  Quillan::Event go;
};

// A clock the test sets by hand.
inline std::atomic<uint32_t> g_testTicks{0};
inline uint32_t TestTicks() { return g_testTicks.load(); }

}  // namespace pelorin_test
