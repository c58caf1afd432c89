#include "producers/PayloadProducer.h"

namespace Quillan {

// One key=value pair as read from the payload.
struct PayloadProducer::Pair {
  size_t keyOffset = 0;
  std::string key;
  std::string value;
  bool startsItem = false;  // its separator was ";"
};

namespace {

bool Fail(ParseError* error, ParseFailure kind, size_t offset, const std::string& key) {
  if (error != nullptr) {
    error->kind = kind;
    error->offset = offset;
    error->key = key;
  }
  return false;
}

}  // namespace

std::unique_ptr<ProducedMessage> PayloadProducer::Parse(const std::string& payload,
                                                        ParseError* error) {
  if (error != nullptr) *error = ParseError();
  if (m_keys.empty()) InitKeys(m_keys);
  Begin();
  if (payload.empty()) return CreateMessage();
  size_t pos = 0;
  bool newItem = true;
  for (;;) {
    if (newItem) NextItem();
    Pair pair;
    if (!ReadPair(payload, pos, pair, error) || !StorePair(pair, error)) return nullptr;
    if (pos == payload.size()) return CreateMessage();
    newItem = pair.startsItem;
  }
}

// Reads the pair that begins at `pos` and its separator; leaves `pos` after
// them.
bool PayloadProducer::ReadPair(const std::string& payload, size_t& pos, Pair& pair,
                               ParseError* error) const {
  const size_t equals = payload.find('=', pos);
  if (equals == std::string::npos) return Fail(error, ParseFailure::kMissingEquals, pos, "");
  if (equals == pos) return Fail(error, ParseFailure::kEmptyKey, pos, "");
  pair.keyOffset = pos;
  pair.key.assign(payload, pos, equals - pos);
  pos = equals + 1;

  size_t valueOffset = pos;
  if (pos < payload.size() && payload[pos] == '"') {
    const size_t quote = pos++;
    if (pos == payload.size()) return Fail(error, ParseFailure::kQuoteAtEnd, quote, pair.key);
    valueOffset = pos;
    const size_t closing = payload.find('"', pos);
    const size_t end = closing == std::string::npos ? payload.size() : closing;
    pair.value.assign(payload, pos, end - pos);
    pos = closing == std::string::npos ? end : closing + 1;
  } else {
    size_t end = payload.find_first_of(" ;", pos);
    if (end == std::string::npos) end = payload.size();
    pair.value.assign(payload, pos, end - pos);
    pos = end;
  }

  if (pos == payload.size()) {
    if (pair.value.empty()) {
      return Fail(error, ParseFailure::kEmptyValueAtEnd, valueOffset, pair.key);
    }
    pair.startsItem = false;
  } else {
    pair.startsItem = payload[pos] == ';';
    ++pos;
  }
  return true;
}

bool PayloadProducer::StorePair(const Pair& pair, ParseError* error) {
  const auto found = m_keys.find(pair.key);
  if (found == m_keys.end()) {
    return Fail(error, ParseFailure::kUnknownKey, pair.keyOffset, pair.key);
  }
  if (SetField(found->second, pair.value) != 0) {
    return Fail(error, ParseFailure::kFieldRejected, pair.keyOffset, pair.key);
  }
  return true;
}

const char* PayloadProducer::FailureText(ParseFailure kind) {
  switch (kind) {
    case ParseFailure::kNone:
      return "no failure";
    case ParseFailure::kMissingEquals:
      return "no '=' after this point";
    case ParseFailure::kEmptyKey:
      return "empty key before '='";
    case ParseFailure::kQuoteAtEnd:
      return "payload ends right after an opening quote";
    case ParseFailure::kEmptyValueAtEnd:
      return "empty value at the end of the payload";
    case ParseFailure::kUnknownKey:
      return "unknown key";
    case ParseFailure::kFieldRejected:
      return "value refused by the producer";
  }
  return "unknown failure";
}

}  // namespace Quillan
