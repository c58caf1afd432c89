#pragma once
// PlayerLifecycle: the lifecycle component the data player hands to the host
// through its service. It keeps a started flag and reports each start and
// stop to its peer (not owned), if one is set. The module itself does not use
// it. Owned by the data player; called on host threads.

#include <atomic>
#include <cstdint>

#include "comm/Lifecycle.h"

namespace Quillan {

class PlayerLifecycle : public comm::Lifecycle {
 public:
  PlayerLifecycle() = default;
  ~PlayerLifecycle() override;

  void SetPeer(comm::LifecyclePeer* peer) override;
  void Start() override;
  void Stop() override;
  bool IsStarted() const override;
  bool IsStopped() const override;

 private:
  std::atomic<comm::LifecyclePeer*> m_peer{nullptr};
  std::atomic<uint8_t> m_started{0};
};

}  // namespace Quillan
