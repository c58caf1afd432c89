#include "PrivateEvents.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "GapCap.h"
#include "host/common/DescriptorWriter.h"

namespace PelorinHost {

const char PrivateEvents::kModulePath[] = "/fs/sda0/quillan/played-events";
const char PrivateEvents::kFileName[] = "played-events";

namespace {

constexpr size_t kChunk = 65536;
constexpr int kPollMs = 50;

}  // namespace

// Turns selected records into lines, buffered, and hands full chunks to a
// sink. A line that begins with a CR can only follow a lone CR line end, so
// line ends are written when the next line is known.
class PrivateEvents::Writer {
 public:
  explicit Writer(double maxGapSeconds) : m_gaps(maxGapSeconds) {}

  template <typename Sink>
  bool Pass(SelectedRecords& records, Sink&& sink, uint64_t* count) {
    SelectedRecord record;
    *count = 0;
    m_gaps.Restart();
    while (records.Next(&record)) {
      m_gaps.Next(record.played);
      const size_t blank = record.text.find(' ');
      if (m_gaps.SkippedMs() > 0 && blank != std::string_view::npos && record.text[0] != '\r') {
        m_moved = m_gaps.Played(record.played);
        m_moved += record.text.substr(blank);
        Line(m_moved);
      } else {
        Line(record.text);
      }
      ++*count;
      if (m_buffer.size() >= kChunk && !Flush(sink)) return false;
    }
    return true;
  }

  template <typename Sink>
  bool Finish(Sink&& sink) {
    if (m_started) m_buffer += '\n';
    return Flush(sink);
  }

 private:
  void Line(std::string_view text) {
    const bool crFirst = !text.empty() && text[0] == '\r';
    if (m_started) {
      m_buffer += crFirst ? '\r' : '\n';
    } else if (crFirst) {
      // A line of its own that yields nothing and is never waited for.
      m_buffer += "0 $HOST\r";
    }
    m_buffer += text;
    m_started = true;
  }

  template <typename Sink>
  bool Flush(Sink&& sink) {
    const bool written = m_buffer.empty() || sink(m_buffer);
    m_buffer.clear();
    return written;
  }

  GapCap m_gaps;
  std::string m_moved;  // a record line with its time moved
  std::string m_buffer;
  bool m_started = false;
};


PrivateEvents::~PrivateEvents() {
  Stop();
  if (!m_path.empty()) ::unlink(m_path.c_str());
}

bool PrivateEvents::Text(const Selection& selection, const std::string& recording,
                         uint32_t passes, double maxGapSeconds, std::string* text) {
  SelectedRecords records(selection, SelectedRecords::Keep::kText);
  std::string error;
  if (!records.Open(recording, &error)) return false;
  Writer writer(maxGapSeconds);
  auto sink = [text](const std::string& bytes) {
    *text += bytes;
    return true;
  };
  uint64_t count = 0;
  for (uint32_t pass = 0; pass < passes; ++pass) {
    if ((pass > 0 && !records.Rewind()) || !writer.Pass(records, sink, &count)) return false;
  }
  return writer.Finish(sink);
}

bool PrivateEvents::Create(const std::string& recording, const std::string& path, bool piped,
                           std::string* error) {
  m_recording = recording;
  SelectedRecords records(m_selection, SelectedRecords::Keep::kText);
  if (!records.Open(recording, error)) return false;
  if (piped) {
    if (::mkfifo(path.c_str(), 0600) != 0) {
      *error = "cannot make " + path + ": " + std::strerror(errno);
      return false;
    }
    m_path = path;
    m_feeder = std::thread(&PrivateEvents::Feed, this);
    return true;
  }
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (fd == -1) {
    *error = "cannot write " + path + ": " + std::strerror(errno);
    return false;
  }
  m_path = path;
  Writer writer(m_maxGapSeconds);
  auto sink = [fd](const std::string& bytes) {
    return PelorinTools::DescriptorWriter::WriteAll(fd, bytes.data(), bytes.size()) == 0;
  };
  const bool written = writer.Pass(records, sink, &m_records) && writer.Finish(sink);
  if (::close(fd) != 0 || !written) {
    *error = "cannot write " + path + ": " + std::strerror(errno);
    return false;
  }
  return true;
}

void PrivateEvents::Stop() {
  m_stop.store(true);
  if (m_feeder.joinable()) m_feeder.join();
}

// The pipe is opened and written without blocking, so that Stop is heard
// whether the module reads, waits or never opened the file.
void PrivateEvents::Feed() {
  int fd = -1;
  while (fd == -1 && !m_stop.load()) {
    fd = ::open(m_path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd == -1) ::usleep(kPollMs * 1000 / 5);
  }
  if (fd == -1) return;
  auto sink = [this, fd](const std::string& bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
      if (m_stop.load()) return false;
      const ssize_t count = ::write(fd, bytes.data() + done, bytes.size() - done);
      if (count > 0) {
        done += static_cast<size_t>(count);
      } else if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        struct pollfd ready {fd, POLLOUT, 0};
        ::poll(&ready, 1, kPollMs);
      } else {
        return false;  // the module closed the file
      }
    }
    return true;
  };
  SelectedRecords records(m_selection, SelectedRecords::Keep::kText);
  std::string error;
  Writer writer(m_maxGapSeconds);
  bool going = records.Open(m_recording, &error);
  for (uint32_t pass = 0; going && (m_passes == 0 || pass < m_passes); ++pass) {
    uint64_t count = 0;
    going = (pass == 0 || records.Rewind()) && writer.Pass(records, sink, &count) && count > 0;
  }
  writer.Finish(sink);
  ::close(fd);
}

}  // namespace PelorinHost
