#pragma once
// TagCounter: how many records carry each tag, in memory that does not grow
// with the file. The first kMaxTags distinct tags are counted one by one, in
// the order they first appear; records with any further tag are counted
// together as "other". Tags longer than kMaxTagBytes are counted under their
// first kMaxTagBytes bytes.

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace PelorinCheck {

class TagCounter {
 public:
  static constexpr size_t kMaxTags = 16;
  static constexpr size_t kMaxTagBytes = 64;

  void Add(const std::string& tag);

  // (tag, count) in order of first appearance.
  const std::vector<std::pair<std::string, uint64_t>>& Counts() const { return m_counts; }
  // Records whose tag did not fit in the table.
  uint64_t OtherRecords() const { return m_otherRecords; }

 private:
  // Whether `counted` is the first `length` bytes of `tag`.
  static bool Is(const std::string& counted, const std::string& tag, size_t length);

  std::vector<std::pair<std::string, uint64_t>> m_counts;
  size_t m_last = 0;  // the entry counted last
  uint64_t m_otherRecords = 0;
};

}  // namespace PelorinCheck
