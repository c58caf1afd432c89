#include "SimulatedEvents.h"

#include <algorithm>

#include "EventListener.h"
#include "Reporter.h"

namespace PelorinHost {

int SimulatedEvents::AddEventListener(EventListener* listener, int /*flags*/) {
  if (listener == nullptr) return 1;
  std::lock_guard<std::mutex> guard(m_lock);
  if (std::find(m_listeners.begin(), m_listeners.end(), listener) == m_listeners.end()) {
    m_listeners.push_back(listener);
  }
  return 0;
}

int SimulatedEvents::NotifyValueChanged(uint32_t id, int /*argument*/) {
  m_reporter.Event(id);
  return 0;
}

void SimulatedEvents::Raise(uint32_t id, uint32_t argument) {
  std::vector<EventListener*> listeners;
  {
    std::lock_guard<std::mutex> guard(m_lock);
    listeners = m_listeners;
  }
  for (EventListener* listener : listeners) listener->OnEvent(id, argument);
}

void SimulatedEvents::Clear() {
  std::lock_guard<std::mutex> guard(m_lock);
  m_listeners.clear();
}

}  // namespace PelorinHost
