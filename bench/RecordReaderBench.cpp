// How fast RecordReader::ReadRecord takes an events file, one byte per Read
// through InputFile's buffer. Google Benchmark cases over a generated file
// and over memory; with --read-file=PATH the program instead reads that file
// whole a few times and prints the best speed (used by reader_speed.sh).

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "player/InputFile.h"
#include "player/RecordReader.h"

namespace {

using Quillan::FileStatus;
using Quillan::ReadStatus;

// Lines as a recorder writes them: mostly TMC messages, some service lists
// and online traffic calls.
std::string MakeEvents(size_t bytes) {
  std::string events;
  events.reserve(bytes + 256);
  char line[256];
  for (unsigned i = 0; events.size() < bytes; ++i) {
    const unsigned time = 1416131460u + i / 4;
    const unsigned fraction = (i * 37u) % 100u;
    int length = 0;
    if (i % 20 == 7) {
      length =
          std::snprintf(line, sizeof(line),
                        "%u.%02u $TSL serviceType=1 sd_SID=%u sd_LTCC=13 sd_LTN=1 sd_PID=53761 "
                        "sd_SPN=RADIO1 monitorState=1\n",
                        time, fraction, 30 + i % 9);
    } else if (i % 20 == 13) {
      length = std::snprintf(line, sizeof(line), "%u.%02u $TOT setNewData:tpeg_%06u.bin\n", time,
                             fraction, i);
    } else {
      length = std::snprintf(line, sizeof(line),
                             "%u.%02u $TMC timeStamp=%u LTN=1 SID=34 PID=53761 "
                             "tmcData=%02X:%02X:%02X:%02X:%02X\n",
                             time, fraction, time, i & 0xff, (i >> 3) & 0xff, (i >> 5) & 0xff, 0x3c,
                             i % 7);
    }
    events.append(line, static_cast<size_t>(length));
  }
  return events;
}

// Serves bytes from memory, all of them read ahead: the reader's cost
// without a file.
class MemoryReader : public Quillan::ByteReader {
 public:
  explicit MemoryReader(const std::string& bytes) : m_bytes(bytes) {}
  using ByteReader::Read;
  FileStatus Read(void* buffer, uint32_t length, uint32_t* count) override {
    *count = 0;
    if (m_pos == m_bytes.size() || length == 0) return FileStatus::kEndOfFile;
    static_cast<char*>(buffer)[0] = m_bytes[m_pos++];
    *count = 1;
    return FileStatus::kSuccess;
  }
  const uint8_t* PeekReady(uint32_t* count) override {
    *count = static_cast<uint32_t>(m_bytes.size() - m_pos);
    return reinterpret_cast<const uint8_t*>(m_bytes.data()) + m_pos;
  }
  void TakeReady(uint32_t count) override { m_pos += count; }

 private:
  const std::string& m_bytes;
  size_t m_pos = 0;
};

// Reads every record; returns how many there were (-1 on a read error).
long ReadAll(Quillan::ByteReader& input) {
  Quillan::RecordReader reader(input);
  Quillan::Record record;
  long records = 0;
  for (;;) {
    const ReadStatus status = reader.ReadRecord(record);
    if (status == ReadStatus::kEndOfInput) return records;
    if (status == ReadStatus::kReadError) return -1;
    benchmark::DoNotOptimize(record.time);
    ++records;
  }
}

// A generated events file in a temporary folder for the file cases.
class EventsFile {
 public:
  explicit EventsFile(size_t bytes) {
    char folder[] = "/tmp/pelorin-bench-XXXXXX";
    if (mkdtemp(folder) == nullptr) return;
    m_folder = folder;
    m_path = m_folder + "/events";
    const std::string events = MakeEvents(bytes);
    m_size = events.size();
    FILE* file = std::fopen(m_path.c_str(), "wb");
    if (file == nullptr) return;
    std::fwrite(events.data(), 1, events.size(), file);
    std::fclose(file);
  }
  ~EventsFile() {
    if (!m_path.empty()) std::remove(m_path.c_str());
    if (!m_folder.empty()) rmdir(m_folder.c_str());
  }
  const std::string& Path() const { return m_path; }
  size_t Size() const { return m_size; }

 private:
  std::string m_folder;
  std::string m_path;
  size_t m_size = 0;
};

void BM_ReadRecordFromFile(benchmark::State& state) {
  static EventsFile file(16u * 1024u * 1024u);
  for (auto _ : state) {
    Quillan::InputFile input(file.Path(), O_RDONLY);
    if (input.Open() != FileStatus::kSuccess) {
      state.SkipWithError("cannot open the generated events file");
      return;
    }
    benchmark::DoNotOptimize(ReadAll(input));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.Size()));
}
BENCHMARK(BM_ReadRecordFromFile)->Unit(benchmark::kMillisecond);

void BM_ReadRecordFromMemory(benchmark::State& state) {
  static const std::string events = MakeEvents(16u * 1024u * 1024u);
  for (auto _ : state) {
    MemoryReader input(events);
    benchmark::DoNotOptimize(ReadAll(input));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * events.size()));
}
BENCHMARK(BM_ReadRecordFromMemory)->Unit(benchmark::kMillisecond);

// --read-file mode: the best of `passes` whole-file reads.
int ReadFileMode(const std::string& path, int passes) {
  double bestSeconds = 0.0;
  long records = 0;
  off_t bytes = 0;
  for (int pass = 0; pass < passes; ++pass) {
    Quillan::InputFile input(path, O_RDONLY);
    if (input.Open() != FileStatus::kSuccess) {
      std::fprintf(stderr, "cannot open %s\n", path.c_str());
      return 1;
    }
    const auto start = std::chrono::steady_clock::now();
    records = ReadAll(input);
    const auto stop = std::chrono::steady_clock::now();
    const double seconds = std::chrono::duration<double>(stop - start).count();
    if (pass == 0 || seconds < bestSeconds) bestSeconds = seconds;
    input.Seek(0, 2);
  }
  const int descriptor = open(path.c_str(), O_RDONLY);
  if (descriptor != -1) {
    bytes = lseek(descriptor, 0, SEEK_END);
    close(descriptor);
  }
  if (records < 0 || bestSeconds <= 0.0) {
    std::fprintf(stderr, "reading %s failed\n", path.c_str());
    return 1;
  }
  std::printf("records=%ld bytes=%lld seconds=%.6f mb_per_s=%.1f\n", records,
              static_cast<long long>(bytes), bestSeconds,
              static_cast<double>(bytes) / 1e6 / bestSeconds);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string readFile;
  int passes = 3;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--read-file=", 12) == 0) readFile = argv[i] + 12;
    if (std::strncmp(argv[i], "--passes=", 9) == 0) passes = std::atoi(argv[i] + 9);
  }
  if (!readFile.empty()) return ReadFileMode(readFile, passes > 0 ? passes : 1);

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
