#pragma once
// PlaybackDataProvider: the data-pool provider 77 through which the module
// publishes its playback clock: 0x4d000000, the record time of the runner's
// last tick, and 0x4d000001, the time stamp of the next record, both whole
// seconds (32-bit signed, starting at 0).
//
// The application writes on the player's work-loop thread through one
// transaction: BeginWrite, SetValue for each value, EndWrite; the outermost
// EndWrite reports the ids that changed (SDDataProvider). The data pool reads
// on its own threads inside LockRead/UnlockRead. The value mutex keeps each
// read and write whole; it is always taken after the provider's write lock
// and released before it.

#include <cstdint>
#include <string>

#include "runtime/Mutex.h"
#include "runtime/SDDataProvider.h"

namespace Quillan {

class PlaybackDataProvider : public SDDataProvider {
 public:
  static constexpr uint32_t kProviderId = 77;
  static constexpr uint32_t kTickId = 0x4d000000u;
  static constexpr uint32_t kNextEventId = 0x4d000001u;
  // Type code answered for ids this provider does not serve.
  static constexpr uint32_t kNotServed = 10;

  explicit PlaybackDataProvider(DataPoolInterface* dataPool);
  ~PlaybackDataProvider() override = default;

  bool GetValue(uint32_t id, int32_t* value) override;
  bool GetIntAt(uint32_t id, uint32_t index, int32_t* value) override;
  bool GetText(uint32_t id, std::string* text) override;
  bool GetTextAt(uint32_t id, uint32_t index, std::string* text) override;
  uint32_t GetValueType(uint32_t id) override;
  uint32_t GetCount(uint32_t id) override;
  bool GetRange(uint32_t id, uint32_t* first, uint32_t* count) override;

  // Opens a write transaction: the provider's write section, then the value
  // mutex.
  void BeginWrite();
  // Stores `value` under `id` (one of the two ids) and marks the id changed;
  // false, and nothing marked, when the id is not served or the value is the
  // one already held.
  bool SetValue(uint32_t id, int32_t value);
  // Closes the transaction in reverse order; the outermost one reports.
  void EndWrite();

 private:
  // The stored value of `id`, or null for an id not served.
  int32_t* Slot(uint32_t id);

  Mutex m_valueLock;
  int32_t m_tick = 0;
  int32_t m_nextEvent = 0;
};

}  // namespace Quillan
