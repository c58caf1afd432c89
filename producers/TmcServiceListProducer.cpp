#include "producers/TmcServiceListProducer.h"

#include <cstdint>

#include "CITypesFactory.h"
#include "producers/IntegerText.h"
#include "producers/TmcServiceListMessage.h"
#include "producers/Utf8Text.h"

namespace Quillan {
namespace {

using asi::navigation::trafficinfo::sTIServiceDescription;
using asi::navigation::trafficinfo::sTIServiceIdentifiers;

uint8_t Low8(const std::string& value) {
  return static_cast<uint8_t>(IntegerText::DecimalOrZero(value));
}

uint32_t Low32(const std::string& value) {
  return static_cast<uint32_t>(IntegerText::DecimalOrZero(value));
}

std::shared_ptr<CIString> MakeText(const std::string& value) {
  return CITypesFactory::createString(Utf8Text::FromBytes(value).c_str(),
                                      CITypesFactory::kEncodingUtf8);
}

}  // namespace

void TmcServiceListProducer::Begin() {
  m_list = std::make_shared<ServiceListEntries>();
  m_entry.reset();
}

void TmcServiceListProducer::InitKeys(KeyTable& keys) {
  keys["serviceType"] = kServiceType;
  keys["sd_SID"] = kSdSid;
  keys["sd_MGS"] = kSdMgs;
  keys["sd_LTCC"] = kSdLtcc;
  keys["sd_LTN"] = kSdLtn;
  keys["sd_PID"] = kSdPid;
  keys["sd_ST"] = kSdSt;
  keys["sd_SPN"] = kSdSpn;
  keys["sd_sendername"] = kSdSenderName;
  keys["sd_Q"] = kSdQ;
  keys["SID_A"] = kSidA;
  keys["SID_B"] = kSidB;
  keys["SID_C"] = kSidC;
  keys["SS_ID"] = kSsId;
  keys["monitorState"] = kMonitorState;
}

void TmcServiceListProducer::NextItem() {
  m_entry = std::make_shared<Entry>();
  m_entry->serviceDescription = std::make_shared<sTIServiceDescription>();
  m_entry->serviceIdentifiers = std::make_shared<sTIServiceIdentifiers>();
  m_list->push_back(m_entry);
}

int TmcServiceListProducer::SetField(int field, const std::string& value) {
  if (field < kServiceType || field > kMonitorState) return 3;
  // Parse has started an entry before the first field.
  switch (field) {
    case kServiceType:
      m_entry->serviceType = Low32(value);
      return 0;
    case kMonitorState:
      m_entry->monitorState = Low32(value);
      return 0;
    case kSidA:
    case kSidB:
    case kSidC:
    case kSsId:
      SetIdentifierField(field, value);
      return 0;
    default:
      SetDescriptionField(field, value);
      return 0;
  }
}

void TmcServiceListProducer::SetDescriptionField(int field, const std::string& value) {
  sTIServiceDescription& description = *m_entry->serviceDescription;
  switch (field) {
    case kSdSid:
      description.sd_SID = Low8(value);
      break;
    case kSdMgs:
      description.sd_MGS = Low8(value);
      break;
    case kSdLtcc:
      description.sd_LTCC = Low8(value);
      break;
    case kSdLtn:
      description.sd_LTN = Low8(value);
      break;
    case kSdPid:
      description.sd_PID = Low32(value);
      break;
    case kSdSt:
      description.sd_ST = Low32(value);
      break;
    case kSdSpn:
      description.sd_SPN = MakeText(value);
      break;
    case kSdSenderName:
      description.sd_sendername = MakeText(value);
      break;
    case kSdQ:
      description.sd_Q = Low8(value);
      break;
  }
}

void TmcServiceListProducer::SetIdentifierField(int field, const std::string& value) {
  sTIServiceIdentifiers& identifiers = *m_entry->serviceIdentifiers;
  switch (field) {
    case kSidA:
      identifiers.SID_A = Low8(value);
      break;
    case kSidB:
      identifiers.SID_B = Low8(value);
      break;
    case kSidC:
      identifiers.SID_C = Low8(value);
      break;
    case kSsId:
      // The usable range is that of a signed 32-bit number.
      identifiers.SS_ID = static_cast<int64_t>(static_cast<int32_t>(Low32(value)));
      break;
  }
}

std::unique_ptr<ProducedMessage> TmcServiceListProducer::CreateMessage() {
  return std::make_unique<TmcServiceListMessage>(m_list);
}

}  // namespace Quillan
