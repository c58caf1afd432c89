#include "player/PlayerLifecycle.h"

namespace Quillan {

PlayerLifecycle::~PlayerLifecycle() = default;

void PlayerLifecycle::SetPeer(comm::LifecyclePeer* peer) { m_peer.store(peer); }

void PlayerLifecycle::Start() {
  m_started.store(1);
  comm::LifecyclePeer* peer = m_peer.load();
  if (peer != nullptr) peer->OnStarted(this, comm::LifecycleRequest{});
}

void PlayerLifecycle::Stop() {
  m_started.store(0);
  comm::LifecyclePeer* peer = m_peer.load();
  if (peer != nullptr) peer->OnStopped(this, comm::LifecycleRequest{});
}

bool PlayerLifecycle::IsStarted() const { return m_started.load() != 0; }

bool PlayerLifecycle::IsStopped() const { return m_started.load() == 0; }

}  // namespace Quillan
