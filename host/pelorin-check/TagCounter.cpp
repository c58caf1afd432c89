#include "host/pelorin-check/TagCounter.h"

#include <cstring>

namespace PelorinCheck {

void TagCounter::Add(const std::string& tag) {
  const size_t length = tag.size() < kMaxTagBytes ? tag.size() : kMaxTagBytes;
  // Records mostly carry the tag of the record before.
  if (m_last < m_counts.size() && Is(m_counts[m_last].first, tag, length)) {
    ++m_counts[m_last].second;
    return;
  }
  for (size_t i = 0; i < m_counts.size(); ++i) {
    if (Is(m_counts[i].first, tag, length)) {
      ++m_counts[i].second;
      m_last = i;
      return;
    }
  }
  if (m_counts.size() < kMaxTags) {
    m_last = m_counts.size();
    m_counts.emplace_back(tag.substr(0, length), 1u);
  } else {
    ++m_otherRecords;
  }
}

bool TagCounter::Is(const std::string& counted, const std::string& tag, size_t length) {
  return counted.size() == length && std::memcmp(counted.data(), tag.data(), length) == 0;
}

}  // namespace PelorinCheck
