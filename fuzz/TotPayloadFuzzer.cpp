// Feeds arbitrary "$TOT" payloads to the call parser and to the online
// traffic producer, with a service that answers every call at once so that no
// wait ever has to poll.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "CIString.h"
#include "OnlineTrafficService.h"
#include "producers/OnlineTrafficProducer.h"
#include "producers/TotCall.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

// Answers inside each call, as a service on another thread would a little
// later.
class PromptService : public OnlineTrafficService {
 public:
  explicit PromptService(OnlineTrafficReply& reply) : m_reply(reply) {}
  int setOnlineTrafficDataStatus(int32_t) override { return 0; }
  int getInventory() override { return m_reply.OnInventoryAnswer(); }
  int getNewData() override { return m_reply.OnNewDataAnswer(); }
  int setNewData(std::shared_ptr<CIString> path) override {
    Check(path != nullptr);
    return m_reply.OnSetNewDataDone();
  }
  int setNewSession() override { return 0; }
  int setTimeoutForFallback(int64_t timeout) override {
    Check(timeout >= INT32_MIN && timeout <= INT32_MAX);
    return 0;
  }
  int dsiConnectionStateChanged(int32_t) override { return 0; }

 private:
  OnlineTrafficReply& m_reply;
};

Quillan::OnlineTrafficProducer& Producer() {
  static Quillan::OnlineTrafficTiming timing = [] {
    Quillan::OnlineTrafficTiming t;
    t.sleep = [](uint32_t) { std::abort(); };  // the service never keeps us waiting
    return t;
  }();
  static Quillan::OnlineTrafficProducer producer(timing);
  static PromptService service(producer);
  static const bool ready = [] {
    producer.SetService(&service);
    producer.OnServiceStatus(0);
    producer.OnServiceValue(1);
    producer.OnConnected();
    producer.SetTpegsDir("/fs/sda0/quillan/");
    return true;
  }();
  Check(ready);
  return producer;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string payload(reinterpret_cast<const char*>(data), size);

  const Quillan::TotCall call = Quillan::TotCall::Parse(payload);
  Check(call.method.find(':') == std::string::npos);
  Check(call.method.size() <= payload.size());
  for (const std::string& argument : call.arguments) {
    Check(!argument.empty());
    Check(argument.size() < payload.size());
  }

  const int expected = call.Check();
  const int status = Producer().OnRecord(7, "$TOT", payload);
  Check(status == expected);
  return 0;
}
