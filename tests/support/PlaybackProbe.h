#pragma once
// PlaybackProbe: a record consumer and runner listener for tests. It writes
// everything a runner tells it into one ordered log ("next 10", "tick 12",
// "record 11 $TMC a=1", "finished"). Thread-safe: the runner calls it on
// the loop thread while the test reads it.

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "player/RunnerListener.h"
#include "producers/RecordConsumer.h"

namespace pelorin_test {

class PlaybackProbe : public Quillan::RecordConsumer, public Quillan::RunnerListener {
 public:
  int OnRecord(uint32_t time, const std::string& tag, const std::string& payload) override;
  void OnFinished(Quillan::Runner*) override { Append("finished"); }
  void OnTick(Quillan::Runner*, double time) override { Append("tick " + TimeText(time)); }
  void OnNextEvent(Quillan::Runner*, double time) override { Append("next " + TimeText(time)); }

  std::vector<std::string> Log() const;
  // Only the "record ..." entries' payloads, in order.
  std::vector<std::string> Payloads() const;
  size_t Finishes() const;
  void Clear();
  // Called on the loop thread after each record is logged (its number,
  // from 1), outside the probe's lock.
  void SetOnRecord(std::function<void(size_t)> hook) { m_hook = std::move(hook); }

 private:
  static std::string TimeText(double time);
  size_t Append(std::string entry);

  mutable std::mutex m_lock;
  std::vector<std::string> m_log;
  size_t m_records = 0;
  std::function<void(size_t)> m_hook;
};

}  // namespace pelorin_test
