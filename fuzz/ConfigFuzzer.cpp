// Feeds arbitrary bytes to the configuration reader through an in-memory
// ByteReader, then asks every typed lookup for the keys the player uses and
// for keys taken from the input.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "player/ByteReader.h"
#include "player/Config.h"

namespace {

class MemoryReader : public Quillan::ByteReader {
 public:
  MemoryReader(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
  using ByteReader::Read;
  Quillan::FileStatus Read(void* buffer, uint32_t length, uint32_t* count) override {
    *count = 0;
    if (m_pos == m_size || length == 0) return Quillan::FileStatus::kEndOfFile;
    const size_t taken = m_size - m_pos < length ? m_size - m_pos : length;
    std::memcpy(buffer, m_data + m_pos, taken);
    m_pos += taken;
    *count = static_cast<uint32_t>(taken);
    return Quillan::FileStatus::kSuccess;
  }

 private:
  const uint8_t* m_data;
  size_t m_size;
  size_t m_pos = 0;
};

void Lookup(const Quillan::Config& config, const std::string& key) {
  std::string upper = key;
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  // Keys are case-insensitive.
  if (config.GetString(key, "\x01") != config.GetString(upper, "\x01")) std::abort();
  const double value = config.GetDouble(key, 0.5);
  if (value != value) std::abort();  // never NaN
  const bool flag = config.GetBool(key, true);
  // An empty value counts as absent for the typed lookups.
  if (config.GetString(key, "x").empty() && (!flag || value != 0.5)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  MemoryReader reader(data, size);
  const Quillan::Config config = Quillan::Config::FromReader(reader);
  if (size == 0 && !config.IsEmpty()) std::abort();
  for (const char* key : {"eventsFile", "tpegsDir", "interactive", "playbackSpeed", "autostart"}) {
    Lookup(config, key);
  }
  // A key from the input: the text before the first "=" of its first line.
  const std::string text(reinterpret_cast<const char*>(data), size < 64 ? size : 64);
  Lookup(config, text.substr(0, text.find_first_of("=\n")));
  return 0;
}
