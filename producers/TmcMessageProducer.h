#pragma once
// TmcMessageProducer: turns the payload of a "$TMC" record into one TMC
// message (TmcMessage over a fresh TmcMessageData). Keys: "timeStamp",
// "LTN", "SID", "PID" (decimal; LTN and SID keep their low 8 bits, the others
// their low 32 bits) and "tmcData" (hexadecimal bytes separated by ":").
// A number that does not convert (see IntegerText) is stored as 0; so is a
// tmcData byte whose token does not convert, an empty token included.
// Created and owned by the RecordDispatcher; used on the work loop's thread.
// Each record gets new data and a new byte array, which never change once
// delivered: listeners may keep them, or read them on their own threads.

#include <memory>
#include <string>

#include "producers/PayloadProducer.h"
#include "producers/TmcMessageData.h"

namespace Quillan {

class TmcMessageProducer : public PayloadProducer {
 public:
  enum Field { kTimeStamp = 1, kLtn = 2, kSid = 3, kPid = 4, kTmcData = 5 };

  TmcMessageProducer() = default;

  void Begin() override;
  void InitKeys(KeyTable& keys) override;
  // 3 for a field number outside 1 to 5, else 0.
  int SetField(int field, const std::string& value) override;
  std::unique_ptr<ProducedMessage> CreateMessage() override;

 private:
  std::shared_ptr<CIUInt8Array> ParseTmcBytes(const std::string& value);

  std::shared_ptr<TmcMessageData> m_data = std::make_shared<TmcMessageData>();
};

}  // namespace Quillan
