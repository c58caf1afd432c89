#pragma once
// CheckedProducer: stands in front of one of the dispatcher's payload
// producers ("$TMC" or "$TSL"), so that the very payload reading that
// playback runs also shows the checker every value it stores. Numbers that
// do not convert (delivered as 0) and numbers that do not fit their field
// (delivered cut or wrapped) become findings. The checker wants no message,
// so numbers are converted once, here, and not handed on; texts and unknown
// field numbers still go to the real producer.
// Owned by RecordChecks, one per tag; one thread.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/pelorin-check/Diagnostic.h"
#include "producers/PayloadProducer.h"

namespace PelorinCheck {

class CheckedProducer : public Quillan::PayloadProducer {
 public:
  // What a field holds, as the real producer stores it.
  enum class Field { kText, kUnsigned8, kUnsigned32, kSigned32, kHexBytes };

  struct Finding {
    DiagnosticKind kind;
    std::string key;
    std::string message;
  };

  // `fields[i]` describes field number i + 1 of `inner`, which must outlive
  // this object.
  CheckedProducer(Quillan::PayloadProducer& inner, std::vector<Field> fields);

  // The findings of the last Parse; meaningful when it succeeded.
  const std::vector<Finding>& Findings() const { return m_findings; }

  void Begin() override;
  void InitKeys(KeyTable& keys) override;
  int SetField(int field, const std::string& value) override;
  void NextItem() override { m_inner.NextItem(); }
  std::unique_ptr<Quillan::ProducedMessage> CreateMessage() override {
    return m_inner.CreateMessage();
  }

 private:
  void CheckNumber(const std::string& key, const std::string& value, Field field);
  void CheckBytes(const std::string& key, const std::string& value);
  void ReportByte(const std::string& key, uint64_t byte, const std::string& token, bool converts,
                  int64_t number);
  void Add(DiagnosticKind kind, const std::string& key, std::string message);

  Quillan::PayloadProducer& m_inner;
  std::vector<Field> m_fields;
  std::vector<std::string> m_keys;  // by field number - 1
  std::vector<Finding> m_findings;
};

}  // namespace PelorinCheck
