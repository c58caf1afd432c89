#include "producers/TmcMessageProducer.h"

#include <algorithm>
#include <cstdint>

#include "CITypesFactory.h"
#include "producers/IntegerText.h"
#include "producers/TmcMessage.h"

namespace Quillan {

// Always new data: a listener may still read the previous one, on any
// thread, or watch it through a weak pointer until it expires.
void TmcMessageProducer::Begin() { m_data = std::make_shared<TmcMessageData>(); }

void TmcMessageProducer::InitKeys(KeyTable& keys) {
  keys["timeStamp"] = kTimeStamp;
  keys["LTN"] = kLtn;
  keys["SID"] = kSid;
  keys["PID"] = kPid;
  keys["tmcData"] = kTmcData;
}

int TmcMessageProducer::SetField(int field, const std::string& value) {
  switch (field) {
    case kTimeStamp:
      m_data->timeStamp = static_cast<uint32_t>(IntegerText::DecimalOrZero(value));
      return 0;
    case kLtn:
      m_data->ltn = static_cast<uint8_t>(IntegerText::DecimalOrZero(value));
      return 0;
    case kSid:
      m_data->sid = static_cast<uint8_t>(IntegerText::DecimalOrZero(value));
      return 0;
    case kPid:
      m_data->pid = static_cast<uint32_t>(IntegerText::DecimalOrZero(value));
      return 0;
    case kTmcData:
      m_data->tmcData = ParseTmcBytes(value);
      return 0;
    default:
      return 3;
  }
}

std::unique_ptr<ProducedMessage> TmcMessageProducer::CreateMessage() {
  return std::make_unique<TmcMessage>(m_data);
}

// One byte per ":"-ended token, plus one for a non-empty last token: "0A::1"
// gives 0A 00 01, a trailing ":" adds nothing. The array is made with room
// for all of them, so that appending does not allocate again.
std::shared_ptr<CIUInt8Array> TmcMessageProducer::ParseTmcBytes(const std::string& value) {
  const char* text = value.data();
  uint32_t count = static_cast<uint32_t>(std::count(value.begin(), value.end(), ':'));
  if (!value.empty() && value.back() != ':') ++count;
  std::shared_ptr<CIUInt8Array> bytes = CITypesFactory::createUInt8Array(count);
  bytes->clear();
  size_t tokenStart = 0;
  for (size_t pos = 0; pos < value.size(); ++pos) {
    if (text[pos] != ':') continue;
    bytes->append(
        static_cast<uint8_t>(IntegerText::HexOrZero(text + tokenStart, pos - tokenStart)));
    tokenStart = pos + 1;
  }
  if (tokenStart < value.size()) {
    bytes->append(
        static_cast<uint8_t>(IntegerText::HexOrZero(text + tokenStart, value.size() - tokenStart)));
  }
  return bytes;
}

}  // namespace Quillan
