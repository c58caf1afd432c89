#pragma once
// TmcServiceListProducer: turns the payload of a "$TSL" record into a whole
// new TMC service list; ";" starts the next entry. Numbers are decimal (see
// IntegerText; one that does not convert is stored as 0): 8-bit members keep
// their low 8 bits, 32-bit members their low 32 bits, and SS_ID the low 32
// bits read as a signed number and widened with its sign. The texts sd_SPN
// and sd_sendername become platform strings in UTF-8 (see Utf8Text).
// Created and owned by the RecordDispatcher; used on the work loop's thread.

#include <memory>
#include <string>

#include "asi/navigation/trafficinfo/sTIServiceListEntry.h"
#include "producers/PayloadProducer.h"
#include "producers/ServiceList.h"

namespace Quillan {

class TmcServiceListProducer : public PayloadProducer {
 public:
  enum Field {
    kServiceType = 1,
    kSdSid,
    kSdMgs,
    kSdLtcc,
    kSdLtn,
    kSdPid,
    kSdSt,
    kSdSpn,
    kSdSenderName,
    kSdQ,
    kSidA,
    kSidB,
    kSidC,
    kSsId,
    kMonitorState,
  };

  TmcServiceListProducer() = default;

  // Starts a new, empty list.
  void Begin() override;
  void InitKeys(KeyTable& keys) override;
  // Stores into the current entry; 3 for a field number outside 1 to 15,
  // else 0.
  int SetField(int field, const std::string& value) override;
  // Appends a new entry and makes it the current one.
  void NextItem() override;
  std::unique_ptr<ProducedMessage> CreateMessage() override;

 private:
  using Entry = asi::navigation::trafficinfo::sTIServiceListEntry;

  void SetDescriptionField(int field, const std::string& value);
  void SetIdentifierField(int field, const std::string& value);

  ServiceList m_list = std::make_shared<ServiceListEntries>();
  std::shared_ptr<Entry> m_entry;
};

}  // namespace Quillan
