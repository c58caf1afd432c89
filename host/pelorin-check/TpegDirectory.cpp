#include "host/pelorin-check/TpegDirectory.h"

#include <sys/stat.h>

#include <utility>

#include "host/recording/LocalFile.h"
#include "host/pelorin-check/Options.h"
#include "player/Config.h"
#include "producers/Utf8Text.h"
#include "runtime/SplitPath.h"

namespace PelorinCheck {
namespace {

const char kStorage[] = "/fs/sda0";
const char kConfigUnderRoot[] = "/quillan/Pelorin.cfg";

bool IsDirectory(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// The head unit joins a folder that ends in "/" and a name with another
// one; both file systems read "//" as "/", and people read it better so.
std::string SingleSlashes(const std::string& path) {
  std::string single;
  single.reserve(path.size());
  for (const char c : path) {
    if (c != '/' || single.empty() || single.back() != '/') single += c;
  }
  return single;
}

}  // namespace

TpegDirectory::TpegDirectory(std::string configuredDir, std::string root)
    : m_configuredDir(std::move(configuredDir)), m_root(std::move(root)) {}

bool TpegDirectory::FromOptions(const Options& options, TpegDirectory* directory,
                                std::string* error) {
  *directory = TpegDirectory();
  if (options.root.empty() && options.configFile.empty()) return true;
  if (!options.root.empty() && !IsDirectory(options.root)) {
    *error = "--root: '" + options.root + "' is not a directory";
    return false;
  }
  // A path of this computer: opened by its rules, read by the module's.
  const bool named = !options.configFile.empty();
  const std::string configPath = named ? options.configFile : options.root + kConfigUnderRoot;
  PelorinRecording::LocalFile local;
  std::string reason;
  const bool opened = local.Open(configPath, &reason);
  if (named && !opened) {
    *error = "--config: cannot read '" + configPath + "': " + reason;
    return false;
  }
  const Quillan::Config config =
      opened ? Quillan::Config::FromFile(local.ModulePath()) : Quillan::Config();
  *directory = TpegDirectory(config.GetString("tpegsDir", ""), options.root);
  return true;
}

std::string TpegDirectory::HeadUnitPath(const std::string& eventsPath,
                                        const std::string& fileName) const {
  std::string dir = m_configuredDir;
  if (dir.empty()) Quillan::SplitPath(eventsPath, &dir, nullptr);
  const std::string path = dir.empty() ? fileName : dir + "/" + fileName;
  return Quillan::Utf8Text::FromBytes(path);
}

std::string TpegDirectory::LocalPath(const std::string& eventsPath,
                                     const std::string& fileName) const {
  const std::string path = HeadUnitPath(eventsPath, fileName);
  const size_t storageLength = sizeof(kStorage) - 1;
  const bool onStorage = path.compare(0, storageLength, kStorage) == 0 &&
                         (path.size() == storageLength || path[storageLength] == '/');
  if (m_root.empty() || !onStorage) return SingleSlashes(path);
  return SingleSlashes(m_root + path.substr(storageLength));
}

bool TpegDirectory::FileExists(const std::string& localPath) {
  struct stat info;
  return ::stat(localPath.c_str(), &info) == 0 && !S_ISDIR(info.st_mode);
}

}  // namespace PelorinCheck
