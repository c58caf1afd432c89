#pragma once
// SimulatedDataPool: the head unit's HMI data pool (interface id 101).
// - Change reports of the module's providers become "dataPool" items, one
//   per id, with the value read back inside the provider's read section
//   (provider 77, found through DataPoolDirectory; the speed table, client
//   76, for its own id).
// - As the HMI's side of the speed table it writes value 0x4c000001 (percent)
//   inside the table's write section and then tells the subscribed listeners.
// Reports arrive on the module's work-loop thread and on the thread that
// writes the speed; SetSpeedPercent runs on a host thread. No lock of this
// class is held while the module is called.

#include <cstdint>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "DataPoolInterface.h"

class DataListener;

namespace PelorinHost {

class Reporter;

class SimulatedDataPool : public DataPoolInterface {
 public:
  static constexpr uint32_t kPlaybackProviderId = 77;
  static constexpr uint32_t kSpeedTableClientId = 76;
  static constexpr uint32_t kSpeedValueId = 0x4c000001;

  explicit SimulatedDataPool(Reporter& reporter) : m_reporter(reporter) {}
  SimulatedDataPool(const SimulatedDataPool&) = delete;
  SimulatedDataPool& operator=(const SimulatedDataPool&) = delete;

  int RegisterProvider(DataPoolReadInterface* provider, uint32_t id) override;
  int Subscribe(DataListener* listener, uint32_t valueId) override;
  int UnregisterProvider(uint32_t id) override;
  int ReportChangedValues(const uint32_t* ids, uint32_t count) override;

  // Writes the playback speed (percent) into the module's speed table and
  // notifies the listeners subscribed to it. False when the module has no
  // speed table (yet) or the table refused the value.
  bool SetSpeedPercent(int32_t percent);
  // Forgets the subscribers (the module is going away).
  void Clear();

 private:
  bool ReadBack(uint32_t id, int32_t* value);
  std::vector<DataListener*> SubscribersOf(uint32_t valueId);

  Reporter& m_reporter;
  std::mutex m_lock;
  std::vector<std::pair<uint32_t, DataListener*>> m_subscribers;
  std::map<uint32_t, DataPoolReadInterface*> m_registered;
};

}  // namespace PelorinHost
