#pragma once
// SimulatedHost: the head unit's module interface (HostInterface, handed to
// the module with id 500, version 2) and its module registration. It keeps
// the module that attaches itself and the player service it publishes.
// The module calls it on the host's own threads (inside hmi_createModule,
// OnRunLevel and hmi_destroyModule); the accessors are for the same thread.

#include <mutex>

#include "HostInterface.h"
#include "ModuleRegistration.h"

class HmiModule;

namespace Quillan {
class PlayerService;
}

namespace PelorinHost {

class SimulatedHost : public HostInterface, public ModuleRegistration {
 public:
  // The publication numbers under which the module offers its player.
  static constexpr int kPlayerServiceKind = 54;

  SimulatedHost() = default;
  SimulatedHost(const SimulatedHost&) = delete;
  SimulatedHost& operator=(const SimulatedHost&) = delete;

  ModuleRegistration* GetRegistration(int version, void* reserved) override;
  int AttachModule(HmiModule* module) override;
  int DetachModule(HmiModule* module) override;
  int PublishService(int kind, int version, int runLevel, void* service) override;

  // The attached module, null before AttachModule and after DetachModule.
  HmiModule* Module();
  // The published player service, null until published.
  Quillan::PlayerService* PlayerService();
  void ForgetPlayerService();

 private:
  std::mutex m_lock;
  HmiModule* m_module = nullptr;
  Quillan::PlayerService* m_playerService = nullptr;
};

}  // namespace PelorinHost
