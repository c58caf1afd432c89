#include "StorageRoot.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Paths.h"

namespace PelorinHost {
namespace {

const char kConfigFile[] = "Pelorin.cfg";
const char kModuleFolder[] = "quillan";

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
  if (::mkdir(folder.c_str(), 0700) != 0 ||
      !WriteFile(folder + "/" + kConfigFile, ConfigText(settings))) {
    *error = "cannot write " + folder + "/" + kConfigFile + ": " + std::strerror(errno);
    Remove();
    return false;
  }
  return true;
}

void StorageRoot::Remove() {
  if (m_private && !m_path.empty()) {
    const std::string folder = m_path + "/" + kModuleFolder;
    ::unlink((folder + "/" + kConfigFile).c_str());
    ::rmdir(folder.c_str());
    ::rmdir(m_path.c_str());
  }
  m_path.clear();
  m_private = false;
}

}  // namespace PelorinHost
