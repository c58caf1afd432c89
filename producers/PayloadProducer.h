#pragma once
// PayloadProducer: the common base of the "$TMC" and "$TSL" producers. Parse
// reads a key=value payload and lets the subclass store each value; the
// subclass keeps the message being built behind a shared pointer that Begin
// replaces, so a message handed out earlier keeps its own data.
//
// Payload grammar: pairs key=value, each ended by one separator byte, a blank
// or a ";" that also starts a new item (NextItem). A value that begins with a
// double quote runs to the next double quote (or the end of the payload) and
// may hold blanks and ";"; the byte right after a closing quote is the
// separator, whatever it is. Keys compare exactly, byte for byte.
//
// Not thread-safe: one thread (the work loop's) parses at a time. The key
// table is filled by InitKeys at the first Parse and kept; the pair being
// read is kept too, so that its texts are not allocated anew for each record.

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "producers/ProducedMessage.h"

namespace Quillan {

// Why a payload was refused, for tools that explain a recording. Parse resets
// it at its start and fills it when it fails.
enum class ParseFailure {
  kNone,
  kMissingEquals,    // no further "=" in the payload; offset: where the key would begin
  kEmptyKey,         // "=" right where a key should begin; offset: that "="
  kQuoteAtEnd,       // the payload ends right after an opening quote; offset: the quote
  kEmptyValueAtEnd,  // the last pair has an empty value; offset: where the value begins
  kUnknownKey,       // key not in the producer's table; offset: first byte of the key
  kFieldRejected,    // the producer refused to store the value; offset: first byte of the key
};

struct ParseError {
  ParseFailure kind = ParseFailure::kNone;
  size_t offset = 0;  // byte offset into the payload
  std::string key;    // the key being read, when there is one
};

class PayloadProducer {
 public:
  using KeyTable = std::map<std::string, int>;

  PayloadProducer() = default;
  virtual ~PayloadProducer() = default;
  PayloadProducer(const PayloadProducer&) = delete;
  PayloadProducer& operator=(const PayloadProducer&) = delete;

  // Builds the message of one payload; null when the payload breaks the
  // grammar, names an unknown key or a value is refused. Then `error`, when
  // given, says why; fields stored before the failure are dropped at the next
  // Begin.
  virtual std::unique_ptr<ProducedMessage> Parse(const std::string& payload,
                                                 ParseError* error = nullptr);
  // Parse without the message: Begin and every field stored, true when Parse
  // would give a message (CreateMessage never refuses). For tools that only
  // want the verdict.
  bool ParseFields(const std::string& payload, ParseError* error = nullptr);
  // Starts fresh message data.
  virtual void Begin() = 0;
  // Fills the key table: key to field number.
  virtual void InitKeys(KeyTable& keys) = 0;
  // Stores one value; 0 when stored, anything else refuses the payload.
  virtual int SetField(int field, const std::string& value) = 0;
  // Called before the first pair and after every ";". Does nothing here.
  virtual void NextItem() {}
  // Wraps the current data into a new message.
  virtual std::unique_ptr<ProducedMessage> CreateMessage() = 0;

  // Short English description of a failure kind, for diagnostics.
  static const char* FailureText(ParseFailure kind);

 protected:
  // While SetField runs: where the value it is given stands in the payload
  // (after an opening quote), for tools that rewrite values in place.
  size_t StoringValueOffset() const { return m_pair.valueOffset; }

 private:
  // One key=value pair as read from the payload; the key is left where it
  // stands in the payload.
  struct Pair {
    size_t keyOffset = 0;
    size_t keyLength = 0;
    std::string value;
    size_t valueOffset = 0;
    bool startsItem = false;  // its separator was ";"
  };

  bool ReadPair(const std::string& payload, size_t& pos, Pair& pair, ParseError* error) const;
  bool StorePair(const std::string& payload, const Pair& pair, ParseError* error);
  // Hashes the key table into m_keySlots.
  void IndexKeys();
  size_t KeySlot(const char* key, size_t length) const;
  // The field number of a key; false when the key is not in the table.
  bool FindField(const char* key, size_t length, int* field) const;
  static std::string KeyOf(const std::string& payload, const Pair& pair);

  // One slot of the key hash table; `key` points into m_keys, whose texts
  // stay where they are once filled. Empty when `key` is null.
  struct KeySlotEntry {
    const char* key = nullptr;
    size_t length = 0;
    int field = 0;
  };

  KeyTable m_keys;
  // A hash table of the keys (a power of two long), which finds a key with
  // one comparison in most cases.
  std::vector<KeySlotEntry> m_keySlots;
  Pair m_pair;
};

}  // namespace Quillan
