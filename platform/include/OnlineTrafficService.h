#pragma once
// OnlineTrafficService: the head unit's online traffic (TPEG) service as a
// client calls it. Answers come back later, on the service's own threads,
// through OnlineTrafficReply. Operations in the service's slot order;
// Reserved* are placeholders no caller here uses.

#include <cstdint>
#include <memory>

class CIString;

class OnlineTrafficService {
 public:
  virtual int Reserved0() { return 0; }
  virtual int Reserved1() { return 0; }
  virtual int setOnlineTrafficDataStatus(int32_t status) = 0;
  virtual int getInventory() = 0;
  virtual int getNewData() = 0;
  virtual int Reserved5() { return 0; }
  virtual int setNewData(std::shared_ptr<CIString> path) = 0;
  virtual int setNewSession() = 0;
  virtual int setTimeoutForFallback(int64_t timeout) = 0;
  virtual int dsiConnectionStateChanged(int32_t state) = 0;

 protected:
  virtual ~OnlineTrafficService() = default;
};
