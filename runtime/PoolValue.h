#pragma once
// PoolValue: one typed entry of a data-pool client's value table: an
// integer, a text, a list of integers, a list of texts, a byte buffer or a
// list of byte buffers. The entry owns what it holds and frees it by type
// when destroyed. Its type is fixed at construction: every operation of
// another type answers false and changes nothing. Not thread-safe: the table's
// owner brackets calls with its read and write sections.
// An entry of an unknown type code holds nothing and refuses every operation.

#include <cstdint>
#include <string>
#include <vector>

namespace Quillan {

class PoolValue {
 public:
  // Type codes as the data pool knows them.
  static constexpr uint32_t kInteger = 0;
  static constexpr uint32_t kText = 1;
  static constexpr uint32_t kIntegerList = 2;
  static constexpr uint32_t kTextList = 3;
  static constexpr uint32_t kBuffer = 4;
  static constexpr uint32_t kBufferList = 5;

  // An entry of `type` made from `initial`: an integer entry holds the
  // number; a text entry holds its decimal text (0 gives the empty text);
  // list and buffer entries start without content.
  PoolValue(uint32_t type, int32_t initial);
  // An entry of `type` without content (a text entry holds no text at all).
  static PoolValue Empty(uint32_t type);

  ~PoolValue();
  PoolValue(PoolValue&& other) noexcept;
  PoolValue(const PoolValue&) = delete;
  PoolValue& operator=(const PoolValue&) = delete;
  PoolValue& operator=(PoolValue&&) = delete;

  uint32_t GetType() const { return m_type; }

  bool GetInt(int32_t* value) const;
  bool SetInt(int32_t value);
  // A text entry without text gives the empty text and false.
  bool GetText(std::string* text) const;
  bool SetText(const std::string& text);
  // A buffer entry without buffer gives null, 0 and false.
  bool GetBuffer(const uint8_t** bytes, uint32_t* size) const;
  bool SetBuffer(const uint8_t* bytes, uint32_t size);

  bool GetIntAt(uint32_t index, int32_t* value) const;
  bool GetTextAt(uint32_t index, std::string* text) const;
  bool GetBufferAt(uint32_t index, const uint8_t** bytes, uint32_t* size) const;
  bool AppendInt(int32_t value);
  bool AppendText(const std::string& text);
  bool AppendBuffer(const uint8_t* bytes, uint32_t size);
  // Empties a list entry (one that has no list yet counts as empty).
  bool ClearList();
  // Number of elements of a list entry; 0 for other entries.
  uint32_t GetCount() const;

 private:
  using Bytes = std::vector<uint8_t>;

  // The entry's one word: the integer, or the owned object of its type.
  union Content {
    int32_t integer;
    std::string* text;
    std::vector<int32_t>* integers;
    std::vector<std::string>* texts;
    Bytes* buffer;
    std::vector<Bytes>* buffers;
  };

  explicit PoolValue(uint32_t type);
  void Free();

  Content m_value;
  uint32_t m_type;
};

}  // namespace Quillan
