// Feeds arbitrary "$TMC" and "$TSL" payloads through the record dispatcher
// and checks that the dispatcher, the diagnostic parse and the delivered data
// agree. The first byte picks the tag; the rest is the payload.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "producers/PayloadProducer.h"
#include "producers/RecordDispatcher.h"
#include "producers/TrafficDataListener.h"
#include "producers/Utf8Text.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

// Valid UTF-8 comes back unchanged, so a delivered text must be a fixed point.
void CheckText(const std::shared_ptr<CIString>& text) {
  if (text) Check(Quillan::Utf8Text::FromBytes(text->utf8()) == text->utf8());
}

class InspectingListener : public Quillan::TrafficDataListener {
 public:
  void OnServiceList(Quillan::ServiceList list) override {
    ++deliveries;
    Check(list != nullptr);
    for (const auto& entry : *list) {
      Check(entry && entry->serviceDescription && entry->serviceIdentifiers);
      const int64_t ssId = entry->serviceIdentifiers->SS_ID;
      Check(ssId >= INT32_MIN && ssId <= INT32_MAX);
      CheckText(entry->serviceDescription->sd_SPN);
      CheckText(entry->serviceDescription->sd_sendername);
    }
  }
  void OnTmcMessage(std::shared_ptr<Quillan::TmcMessageData> message) override {
    ++deliveries;
    Check(message != nullptr);
    if (message->tmcData) tmcBytes = message->tmcData->size();
  }

  int deliveries = 0;
  uint32_t tmcBytes = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  static Quillan::RecordDispatcher dispatcher;
  static InspectingListener listener;
  static const bool registered = dispatcher.AddListener(&listener);
  Check(registered);

  const std::string tag = (data[0] & 1) ? "$TSL" : "$TMC";
  const std::string payload(reinterpret_cast<const char*>(data) + 1, size - 1);

  Quillan::ParseError error;
  const bool parsed = dispatcher.FindProducer(tag)->Parse(payload, &error) != nullptr;
  Check(parsed == (error.kind == Quillan::ParseFailure::kNone));
  Check(error.offset <= payload.size());
  Check(error.key.size() <= payload.size());

  listener.deliveries = 0;
  listener.tmcBytes = 0;
  const int status = dispatcher.OnRecord(1, tag, payload);
  Check(status == (parsed ? 0 : 1));
  Check(listener.deliveries == (parsed ? 1 : 0));
  // At most one byte per ":"-ended token plus the last one.
  Check(listener.tmcBytes <= payload.size());
  return 0;
}
