#include "StorageRoot.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Paths.h"
#include "host/common/DescriptorWriter.h"

namespace PelorinHost {
namespace {

const char kConfigFile[] = "Pelorin.cfg";
const char kModuleFolder[] = "quillan";
const char kEventsLink[] = "events";
const char kTpegsLink[] = "tpegs";
const char kInputCopy[] = "standard-input";
// The module opens at most 254 bytes of a path and turns backslashes into
// slashes; it reads configuration lines of up to 1023 bytes. A path it would
// not reach is offered through a link in the storage folder instead.
constexpr size_t kOpenPathLimit = 254;
constexpr size_t kConfigValueLimit = 1000;
const char kStorageFolder[] = "/fs/sda0/";

std::string NumberText(double value) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.17g", value);
  return text;
}

bool WriteFile(const std::string& path, const std::string& text) {
  FILE* file = std::fopen(path.c_str(), "w");
  if (file == nullptr) return false;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  return std::fclose(file) == 0 && written;
}

// Replaces `path` by a link under the module's folder when the module could
// not open it as it stands; false when the link cannot be made.
bool ReachThroughLink(const std::string& folder, const char* name, size_t limit, bool opened,
                      std::string* path) {
  const bool reachable =
      path->size() <= limit && !(opened && path->find('\\') != std::string::npos);
  if (reachable) return true;
  if (::symlink(path->c_str(), (folder + "/" + name).c_str()) != 0) return false;
  *path = std::string(kStorageFolder) + kModuleFolder + "/" + name;
  return true;
}

}  // namespace

std::string StorageRoot::ConfigText(const PlaybackSettings& settings) {
  std::string text = "# Written by pelorin-host for this run.\n";
  text += "eventsFile=" + settings.eventsFile + "\n";
  if (!settings.tpegsDir.empty()) text += "tpegsDir=" + settings.tpegsDir + "\n";
  text += std::string("interactive=") + (settings.interactive ? "true" : "false") + "\n";
  if (settings.playbackSpeed > 0.0)
    text += "playbackSpeed=" + NumberText(settings.playbackSpeed) + "\n";
  text += std::string("autostart=") + (settings.autostart ? "true" : "false") + "\n";
  return text;
}

bool StorageRoot::UseFolder(const std::string& folder, std::string* error) {
  Remove();
  if (!IsDirectory(folder)) {
    *error = "storage folder " + folder + " is not a directory";
    return false;
  }
  m_path = AbsolutePath(folder);
  m_private = false;
  return true;
}

bool StorageRoot::MakePrivate(const PlaybackSettings& settings, std::string* error) {
  Remove();
  const char* tmp = std::getenv("TMPDIR");
  std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/pelorin-host.XXXXXX";
  if (mkdtemp(&pattern[0]) == nullptr) {
    *error = "cannot make a temporary folder " + pattern + ": " + std::strerror(errno);
    return false;
  }
  m_path = pattern;
  m_private = true;
  const std::string folder = m_path + "/" + kModuleFolder;
  if (::mkdir(folder.c_str(), 0700) != 0) {
    *error = "cannot make " + folder + ": " + std::strerror(errno);
    Remove();
    return false;
  }
  PlaybackSettings written = settings;
  if (!ReachThroughLink(folder, kEventsLink, kOpenPathLimit, true, &written.eventsFile) ||
      !ReachThroughLink(folder, kTpegsLink, kConfigValueLimit, false, &written.tpegsDir) ||
      !WriteFile(folder + "/" + kConfigFile, ConfigText(written))) {
    *error = "cannot write " + folder + "/" + kConfigFile + ": " + std::strerror(errno);
    Remove();
    return false;
  }
  return true;
}

bool StorageRoot::CopyInput(int fd, std::string* error) {
  const std::string path = m_path + "/" + kModuleFolder + "/" + kInputCopy;
  const int out = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (out < 0) {
    *error = "cannot make " + path + ": " + std::strerror(errno);
    return false;
  }
  char buffer[64 * 1024];
  for (;;) {
    // A signal (EINTR) ends the copy: the run is being stopped.
    const ssize_t got = ::read(fd, buffer, sizeof(buffer));
    if (got <= 0) {
      const int readError = got < 0 ? errno : 0;
      const bool closed = ::close(out) == 0;
      if (readError != 0) *error = std::string("standard input: ") + std::strerror(readError);
      if (readError == 0 && !closed) *error = "cannot write " + path + ": " + std::strerror(errno);
      return readError == 0 && closed;
    }
    const int writeError =
        PelorinTools::DescriptorWriter::WriteAll(out, buffer, static_cast<size_t>(got));
    if (writeError != 0) {
      *error = "cannot write " + path + ": " + std::strerror(writeError);
      ::close(out);
      return false;
    }
  }
}

void StorageRoot::Remove() {
  if (m_private && !m_path.empty()) {
    const std::string folder = m_path + "/" + kModuleFolder;
    for (const char* name : {kConfigFile, kEventsLink, kTpegsLink, kInputCopy}) {
      ::unlink((folder + "/" + name).c_str());
    }
    ::rmdir(folder.c_str());
    ::rmdir(m_path.c_str());
  }
  m_path.clear();
  m_private = false;
}

}  // namespace PelorinHost
