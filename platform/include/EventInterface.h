#pragma once
// EventInterface: the HMI host's event service (interface id 100). Modules
// register listeners for HMI events and tell the HMI that a value changed.
// Owned by the host; may be called from any thread.

#include <cstdint>

class EventListener;

class EventInterface {
 public:
  virtual ~EventInterface() = default;
  virtual int AddEventListener(EventListener* listener, int flags) = 0;
  virtual int NotifyValueChanged(uint32_t id, int argument) = 0;
};
