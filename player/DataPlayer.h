#pragma once
// DataPlayer: the player the application creates. It adds the traffic-data
// side to Player: the record consumers (the record dispatcher first, then the
// online traffic producer), the service face through which the host runs
// playback and reaches those objects, the lifecycle component, and the time
// adjuster that moves replayed messages' date-times to the present. It owns
// dispatcher, producer and lifecycle component; neither the constructor nor
// anything before Run opens a file or starts a thread.
//
// Threads: the PlayerService and TimeAdjuster faces are called on host
// threads; the consumers run on the work loop's thread. The destructor ends
// playback (loop joined) before it deletes the consumers.
// It shuts the runner down before it releases a blocked wait, so nothing plays after.

#include <atomic>
#include <cstdint>
#include <vector>

#include "player/Player.h"
#include "player/PlayerService.h"
#include "player/TimeAdjuster.h"

namespace Quillan {

class DateTime;
class OnlineTrafficProducer;
class PlayerLifecycle;
class RecordDispatcher;

class DataPlayer : public Player, public PlayerService, public TimeAdjuster {
 public:
  // Fills a date-time with the present, in UTC.
  using DateTimeSource = void (*)(DateTime&);

  explicit DataPlayer(const Config& config);
  ~DataPlayer() override;

  std::vector<RecordConsumer*> GetConsumers() override;

  int Run() override;
  OnlineTrafficReply* GetOnlineTrafficReply() override;
  RecordDispatcher* GetRecordDispatcher() override;
  comm::Lifecycle* GetLifecycle() override;
  TimeAdjuster* GetTimeAdjuster() override;
  // Shifts the date-times at bytes 14 and 18 of a message of kind 0 (by the
  // last TMC record's time) or kind 1 or 2 (by the last online data time)
  // by the distance from that time to now. Other kinds are left alone.
  void AdjustMessageTimes(uint8_t* message) override;

  // Where "now" comes from; CurrentDateTime unless replaced.
  void SetDateTimeSource(DateTimeSource source) { m_dateTimeSource.store(source); }

 private:
  // Record time (whole seconds) that messages of this kind were recorded
  // against; 0 when there is none.
  uint32_t TimeBaseFor(uint8_t kind) const;

  RecordDispatcher* m_dispatcher = nullptr;
  OnlineTrafficProducer* m_onlineProducer = nullptr;
  PlayerLifecycle* m_lifecycle = nullptr;
  std::atomic<DateTimeSource> m_dateTimeSource;
};

}  // namespace Quillan
