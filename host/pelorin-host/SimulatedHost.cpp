#include "SimulatedHost.h"

#include "player/PlayerService.h"

namespace PelorinHost {

ModuleRegistration* SimulatedHost::GetRegistration(int /*version*/, void* /*reserved*/) {
  return this;
}

int SimulatedHost::AttachModule(HmiModule* module) {
  std::lock_guard<std::mutex> guard(m_lock);
  m_module = module;
  return 0;
}

int SimulatedHost::DetachModule(HmiModule* module) {
  std::lock_guard<std::mutex> guard(m_lock);
  if (m_module == module) m_module = nullptr;
  return 0;
}

int SimulatedHost::PublishService(int kind, int /*version*/, int /*runLevel*/, void* service) {
  if (kind != kPlayerServiceKind) return 1;
  std::lock_guard<std::mutex> guard(m_lock);
  // The module publishes its player as a PlayerService pointer.
  m_playerService = static_cast<Quillan::PlayerService*>(service);
  return 0;
}

HmiModule* SimulatedHost::Module() {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_module;
}

Quillan::PlayerService* SimulatedHost::PlayerService() {
  std::lock_guard<std::mutex> guard(m_lock);
  return m_playerService;
}

void SimulatedHost::ForgetPlayerService() {
  std::lock_guard<std::mutex> guard(m_lock);
  m_playerService = nullptr;
}

}  // namespace PelorinHost
