#pragma once
// SimulatedEvents: the head unit's event service (interface id 100). It keeps
// the listeners that the module registers, raises HMI events on them (start
// 0x4c000000, stop 0x4c000001), and reports each value-changed notification
// of the module as an "event" item. NotifyValueChanged comes on the module's
// work-loop thread; Raise runs the listeners on the caller's thread.

#include <cstdint>
#include <mutex>
#include <vector>

#include "EventInterface.h"

namespace PelorinHost {

class Reporter;

class SimulatedEvents : public EventInterface {
 public:
  static constexpr uint32_t kStartEvent = 0x4c000000;
  static constexpr uint32_t kStopEvent = 0x4c000001;

  explicit SimulatedEvents(Reporter& reporter) : m_reporter(reporter) {}
  SimulatedEvents(const SimulatedEvents&) = delete;
  SimulatedEvents& operator=(const SimulatedEvents&) = delete;

  int AddEventListener(EventListener* listener, int flags) override;
  int NotifyValueChanged(uint32_t id, int argument) override;

  // Delivers the event to every registered listener, in registration order.
  void Raise(uint32_t id, uint32_t argument = 0);
  // Forgets the listeners (the module is going away).
  void Clear();

 private:
  Reporter& m_reporter;
  std::mutex m_lock;
  std::vector<EventListener*> m_listeners;
};

}  // namespace PelorinHost
