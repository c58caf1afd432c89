#include "host/pelorin-check/CheckedProducer.h"

#include <utility>

#include "host/common/TerminalText.h"
#include "producers/IntegerText.h"

namespace PelorinCheck {
namespace {

// An optional sign and one digit or more, nothing else.
bool IsSignedDigitRun(const std::string& text) {
  const size_t first = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
  if (first == text.size()) return false;
  for (size_t i = first; i < text.size(); ++i) {
    if (text[i] < '0' || text[i] > '9') return false;
  }
  return true;
}

using PelorinTools::TerminalText;
using Field = CheckedProducer::Field;

struct Range {
  int64_t low;
  int64_t high;
  const char* text;
};

Range RangeOf(Field field) {
  switch (field) {
    case Field::kUnsigned8:
    case Field::kHexBytes:
      return {0, 255, "0 to 255"};
    case Field::kUnsigned32:
      return {0, 4294967295LL, "0 to 4294967295"};
    default:
      return {-2147483648LL, 2147483647LL, "-2147483648 to 2147483647"};
  }
}

// What the real producer stores for `value`.
int64_t Stored(Field field, int64_t value) {
  switch (field) {
    case Field::kUnsigned8:
    case Field::kHexBytes:
      return static_cast<uint8_t>(value);
    case Field::kUnsigned32:
      return static_cast<uint32_t>(value);
    default:
      return static_cast<int32_t>(static_cast<uint32_t>(value));
  }
}

}  // namespace

CheckedProducer::CheckedProducer(Quillan::PayloadProducer& inner, std::vector<Field> fields)
    : m_inner(inner), m_fields(std::move(fields)), m_keys(m_fields.size()) {}

void CheckedProducer::Begin() {
  m_findings.clear();
  m_inner.Begin();
}

void CheckedProducer::InitKeys(KeyTable& keys) {
  m_inner.InitKeys(keys);
  for (const auto& entry : keys) {
    const size_t index = static_cast<size_t>(entry.second - 1);
    if (entry.second >= 1 && index < m_keys.size()) m_keys[index] = entry.first;
  }
}

int CheckedProducer::SetField(int field, const std::string& value) {
  const size_t index = static_cast<size_t>(field - 1);
  if (field < 1 || index >= m_fields.size() || m_fields[index] == Field::kText) {
    return m_inner.SetField(field, value);
  }
  // The real producer stores every number of a field it knows, converted or
  // not, and its message is thrown away here: the one conversion below gives
  // both the verdict and the value it would store.
  if (m_fields[index] == Field::kHexBytes) {
    CheckBytes(m_keys[index], value);
  } else {
    CheckNumber(m_keys[index], value, m_fields[index]);
  }
  return 0;
}

void CheckedProducer::CheckNumber(const std::string& key, const std::string& value, Field field) {
  int64_t number = 0;
  const Range range = RangeOf(field);
  if (!Quillan::IntegerText::Convert(value.data(), value.size(), 10, &number)) {
    // Digits beyond 64 bits do not fit any field; anything else is no number.
    const bool digits = IsSignedDigitRun(value);
    Add(digits ? DiagnosticKind::kValueOutOfRange : DiagnosticKind::kValueNotNumber, key,
        "value " + TerminalText::Quoted(value, 40) + " of " + TerminalText::Quoted(key) +
            (digits ? std::string(" does not fit its field (") + range.text + ")"
                    : std::string(" is not a decimal number")) +
            "; it is delivered as 0");
    return;
  }
  if (number >= range.low && number <= range.high) return;
  Add(DiagnosticKind::kValueOutOfRange, key,
      "value " + TerminalText::Quoted(value, 40) + " of " + TerminalText::Quoted(key) +
          " does not fit its field (" + range.text + "); it is delivered as " +
          std::to_string(Stored(field, number)));
}

// The bytes of "tmcData": one per ":"-ended token and one for a non-empty
// last token, as the producer splits them. Tokens are looked at where they
// stand; only a finding copies one.
void CheckedProducer::CheckBytes(const std::string& key, const std::string& value) {
  const char* text = value.data();
  const size_t size = value.size();
  size_t start = 0;
  uint64_t byte = 0;
  while (start < size) {
    size_t end = start;
    while (end < size && text[end] != ':') ++end;
    ++byte;
    int64_t number = 0;
    const bool converts = Quillan::IntegerText::Convert(text + start, end - start, 16, &number);
    if (!converts || number < 0 || number > 255) {
      ReportByte(key, byte, std::string(text + start, end - start), converts, number);
    }
    start = end + 1;
  }
}

void CheckedProducer::ReportByte(const std::string& key, uint64_t byte, const std::string& token,
                                 bool converts, int64_t number) {
  const std::string where = "byte " + std::to_string(byte) + " " + TerminalText::Quoted(token, 40) +
                            " of " + TerminalText::Quoted(key);
  if (!converts) {
    Add(DiagnosticKind::kValueNotNumber, key,
        where + " is not a hexadecimal number; it is delivered as 0");
  } else {
    Add(DiagnosticKind::kValueOutOfRange, key,
        where + " does not fit a byte (00 to FF); it is delivered as " +
            std::to_string(Stored(Field::kHexBytes, number)));
  }
}

void CheckedProducer::Add(DiagnosticKind kind, const std::string& key, std::string message) {
  m_findings.push_back(Finding{kind, key, std::move(message)});
}

}  // namespace PelorinCheck
