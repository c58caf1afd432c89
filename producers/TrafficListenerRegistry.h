#pragma once
// TrafficListenerRegistry: where traffic-data listeners are registered.
// Listeners are not owned; delivery follows registration order. Not to be
// called while a record is being delivered.

namespace Quillan {

class TrafficDataListener;

class TrafficListenerRegistry {
 public:
  virtual ~TrafficListenerRegistry() = default;
  // False when the listener is already registered.
  virtual bool AddListener(TrafficDataListener* listener) = 0;
  // False when the listener is not registered.
  virtual bool RemoveListener(TrafficDataListener* listener) = 0;
};

}  // namespace Quillan
