#pragma once
// PlayerService: the player as the host sees it once the module has
// published it. Run starts playback (0 started, 1 failed, 2 already
// running); the accessors hand out the objects through which the host
// attaches its traffic services. Owned by the module; the objects returned
// live as long as the player. Called on the host's threads.

class OnlineTrafficReply;

namespace comm {
class Lifecycle;
}

namespace Quillan {

class RecordDispatcher;
class TimeAdjuster;

class PlayerService {
 public:
  virtual ~PlayerService() = default;
  virtual int Run() = 0;
  // Where the host attaches the online traffic service and delivers its
  // answers; null when there is no online traffic producer.
  virtual OnlineTrafficReply* GetOnlineTrafficReply() = 0;
  // Where the host registers its traffic-data listeners.
  virtual RecordDispatcher* GetRecordDispatcher() = 0;
  virtual comm::Lifecycle* GetLifecycle() = 0;
  virtual TimeAdjuster* GetTimeAdjuster() = 0;
};

}  // namespace Quillan
