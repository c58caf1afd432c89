#include "host/pelorin-check/TagCounter.h"

namespace PelorinCheck {

void TagCounter::Add(const std::string& tag) {
  const size_t length = tag.size() < kMaxTagBytes ? tag.size() : kMaxTagBytes;
  for (auto& entry : m_counts) {
    if (entry.first.size() == length && entry.first.compare(0, length, tag, 0, length) == 0) {
      ++entry.second;
      return;
    }
  }
  if (m_counts.size() < kMaxTags) {
    m_counts.emplace_back(tag.substr(0, length), 1u);
  } else {
    ++m_otherRecords;
  }
}

}  // namespace PelorinCheck
