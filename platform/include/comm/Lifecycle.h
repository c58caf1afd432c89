#pragma once
// comm::Lifecycle: a component that a peer can ask to start and stop, and
// that reports each transition to that peer. Owned by whoever made it.

namespace comm {

struct LifecycleRequest {};

class Lifecycle;

// The peer a Lifecycle reports its transitions to.
class LifecyclePeer {
 public:
  virtual ~LifecyclePeer() = default;
  virtual void OnStarted(Lifecycle* component, const LifecycleRequest& request) = 0;
  virtual void OnStopped(Lifecycle* component, const LifecycleRequest& request) = 0;
};

class Lifecycle {
 public:
  virtual ~Lifecycle() = default;
  virtual void SetPeer(LifecyclePeer* peer) = 0;
  virtual void Start() = 0;
  virtual void Stop() = 0;
  virtual bool IsStarted() const = 0;
  virtual bool IsStopped() const = 0;
};

}  // namespace comm
