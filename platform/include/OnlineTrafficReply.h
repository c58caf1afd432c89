#pragma once
// OnlineTrafficReply: how the online traffic service answers its client and
// how the host attaches the service to the client. Notifications come on the
// service's threads and return 0. Operations in the service's slot order
// (the destructor sits among them); Ignored* are notifications a client may
// ignore.

#include <cstdint>

class OnlineTrafficService;

class OnlineTrafficReply {
 public:
  virtual int OnServiceStatus(uint32_t status) = 0;
  virtual int OnServiceValue(uint32_t value) = 0;
  virtual int OnNewDataAnswer() = 0;
  virtual int OnSetNewDataDone() = 0;
  virtual int Ignored4() { return 0; }
  virtual int Ignored5() { return 0; }
  virtual int Ignored6() { return 0; }
  virtual int OnInventoryAnswer() = 0;
  virtual int Ignored8() { return 0; }
  virtual int Ignored9() { return 0; }
  virtual ~OnlineTrafficReply() = default;
  virtual void SetService(OnlineTrafficService* service) = 0;
  virtual int OnConnected() = 0;
  virtual int Ignored13() { return 0; }
};
