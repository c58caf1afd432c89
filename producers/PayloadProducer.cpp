#include "producers/PayloadProducer.h"

#include <cstdint>
#include <cstring>

namespace Quillan {

namespace {

bool Fail(ParseError* error, ParseFailure kind, size_t offset, const std::string& key) {
  if (error != nullptr) {
    error->kind = kind;
    error->offset = offset;
    error->key = key;
  }
  return false;
}

// The first byte from `pos` on that is `a` or `b`, or `size`. Eight bytes
// are looked at at once: a zero byte in the word XOR the wanted byte marks a
// hit. The lowest marked byte is always a true hit (marks can be wrong only
// above one), so on a little-endian machine the hit's place is the mask's
// lowest set bit; elsewhere it is found byte by byte.
size_t FindEither(const char* text, size_t pos, size_t size, char a, char b) {
  constexpr uint64_t kOnes = 0x0101010101010101u;
  constexpr uint64_t kHighs = 0x8080808080808080u;
  const uint64_t wordA = kOnes * static_cast<unsigned char>(a);
  const uint64_t wordB = kOnes * static_cast<unsigned char>(b);
  for (; pos + sizeof(uint64_t) <= size; pos += sizeof(uint64_t)) {
    uint64_t word = 0;
    std::memcpy(&word, text + pos, sizeof word);
    const uint64_t xa = word ^ wordA;
    const uint64_t xb = word ^ wordB;
    const uint64_t hits = (((xa - kOnes) & ~xa) | ((xb - kOnes) & ~xb)) & kHighs;
    if (hits == 0) continue;
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return pos + static_cast<size_t>(__builtin_ctzll(hits) / 8);
#else
    break;
#endif
  }
  while (pos < size && text[pos] != a && text[pos] != b) ++pos;
  return pos;
}

// Replaces `value` by `length` bytes; an append into the kept capacity is the
// cheapest way the string offers.
void SetValue(std::string& value, const char* text, size_t length) {
  value.clear();
  value.append(text, length);
}

}  // namespace

std::unique_ptr<ProducedMessage> PayloadProducer::Parse(const std::string& payload,
                                                        ParseError* error) {
  return ParseFields(payload, error) ? CreateMessage() : nullptr;
}

bool PayloadProducer::ParseFields(const std::string& payload, ParseError* error) {
  if (error != nullptr) *error = ParseError();
  if (m_keys.empty()) {
    InitKeys(m_keys);
    IndexKeys();
  }
  Begin();
  if (payload.empty()) return true;
  size_t pos = 0;
  bool newItem = true;
  for (;;) {
    if (newItem) NextItem();
    if (!ReadPair(payload, pos, m_pair, error) || !StorePair(payload, m_pair, error)) return false;
    if (pos == payload.size()) return true;
    newItem = m_pair.startsItem;
  }
}

// Reads the pair that begins at `pos` and its separator; leaves `pos` after
// them. The key stays in the payload; the value is copied into the pair.
bool PayloadProducer::ReadPair(const std::string& payload, size_t& pos, Pair& pair,
                               ParseError* error) const {
  const char* text = payload.data();
  const size_t size = payload.size();
  const size_t equals = FindEither(text, pos, size, '=', '=');
  if (equals == size) return Fail(error, ParseFailure::kMissingEquals, pos, "");
  if (equals == pos) return Fail(error, ParseFailure::kEmptyKey, pos, "");
  pair.keyOffset = pos;
  pair.keyLength = equals - pos;
  pos = equals + 1;

  size_t valueOffset = pos;
  if (pos < size && text[pos] == '"') {
    const size_t quote = pos++;
    if (pos == size) return Fail(error, ParseFailure::kQuoteAtEnd, quote, KeyOf(payload, pair));
    valueOffset = pos;
    pair.valueOffset = pos;
    const void* closingAt = std::memchr(text + pos, '"', size - pos);
    const size_t end = closingAt != nullptr
                           ? static_cast<size_t>(static_cast<const char*>(closingAt) - text)
                           : size;
    SetValue(pair.value, text + pos, end - pos);
    pos = closingAt != nullptr ? end + 1 : end;
  } else {
    pair.valueOffset = pos;
    const size_t end = FindEither(text, pos, size, ' ', ';');
    SetValue(pair.value, text + pos, end - pos);
    pos = end;
  }

  if (pos == size) {
    if (pair.value.empty()) {
      return Fail(error, ParseFailure::kEmptyValueAtEnd, valueOffset, KeyOf(payload, pair));
    }
    pair.startsItem = false;
  } else {
    pair.startsItem = text[pos] == ';';
    ++pos;
  }
  return true;
}

bool PayloadProducer::StorePair(const std::string& payload, const Pair& pair, ParseError* error) {
  int field = 0;
  if (!FindField(payload.data() + pair.keyOffset, pair.keyLength, &field)) {
    return Fail(error, ParseFailure::kUnknownKey, pair.keyOffset, KeyOf(payload, pair));
  }
  if (SetField(field, pair.value) != 0) {
    return Fail(error, ParseFailure::kFieldRejected, pair.keyOffset, KeyOf(payload, pair));
  }
  return true;
}

// Open addressing over a table at least twice as large as the key table,
// so that every probe sequence meets an empty slot.
void PayloadProducer::IndexKeys() {
  size_t slots = 16;
  while (slots < 2 * m_keys.size()) slots *= 2;
  m_keySlots.assign(slots, KeySlotEntry());
  for (const auto& entry : m_keys) {
    const std::string& key = entry.first;
    size_t slot = KeySlot(key.data(), key.size());
    while (m_keySlots[slot].key != nullptr) slot = (slot + 1) & (slots - 1);
    m_keySlots[slot] = KeySlotEntry{key.data(), key.size(), entry.second};
  }
}

size_t PayloadProducer::KeySlot(const char* key, size_t length) const {
  // Length, first and last byte tell the keys of a producer apart cheaply.
  const size_t first = length > 0 ? static_cast<unsigned char>(key[0]) : 0u;
  const size_t last = length > 0 ? static_cast<unsigned char>(key[length - 1]) : 0u;
  return (length * 7u + first * 3u + last) & (m_keySlots.size() - 1);
}

bool PayloadProducer::FindField(const char* key, size_t length, int* field) const {
  if (m_keySlots.empty()) return false;
  const size_t mask = m_keySlots.size() - 1;
  for (size_t slot = KeySlot(key, length);; slot = (slot + 1) & mask) {
    const KeySlotEntry& entry = m_keySlots[slot];
    if (entry.key == nullptr) return false;
    if (entry.length != length) continue;
    // Keys are short: four bytes at a time and then a plain loop compare
    // them sooner than memcmp.
    size_t same = 0;
    for (; same + sizeof(uint32_t) <= length; same += sizeof(uint32_t)) {
      uint32_t ours = 0;
      uint32_t theirs = 0;
      std::memcpy(&ours, entry.key + same, sizeof ours);
      std::memcpy(&theirs, key + same, sizeof theirs);
      if (ours != theirs) break;
    }
    while (same < length && entry.key[same] == key[same]) ++same;
    if (same == length) {
      *field = entry.field;
      return true;
    }
  }
}

std::string PayloadProducer::KeyOf(const std::string& payload, const Pair& pair) {
  return payload.substr(pair.keyOffset, pair.keyLength);
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
