#pragma once
// PlayDuration: how long the records of a file take to play at one speed,
// adding up the delays that the real-time player waits between records
// (RealTimeRunner::DelayBetween, the player's own rule). Constant memory.

#include <cstdint>

namespace PelorinCheck {

class PlayDuration {
 public:
  // `speed` must be greater than 0; 1.0 is recorded speed.
  explicit PlayDuration(double speed) : m_speed(speed) {}

  // The next record played, in file order.
  void AddRecord(double time);

  double Speed() const { return m_speed; }
  uint64_t TotalMs() const { return m_totalMs; }

 private:
  double m_speed;
  bool m_hasPrevious = false;
  double m_previous = 0.0;
  uint64_t m_totalMs = 0;
};

}  // namespace PelorinCheck
