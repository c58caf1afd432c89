#pragma once
// StorageRoot: the folder that stands for the head unit's /fs/sda0 while the
// host runs (served through Storage::SetStorageRoot, so the module opens its
// fixed paths unchanged and no real /fs is touched).
// - UseFolder: a folder of the user's, used as it is; nothing is written.
// - MakePrivate: a fresh temporary folder (mkdtemp) holding
//   quillan/Pelorin.cfg written from the playback settings (an events file
//   or TPEG folder whose path the module could not open is reached through
//   a link beside it); Remove (also the destructor) deletes exactly what was
//   made. CopyInput copies standard input into it, for "-" as the events.
// Used on the main thread.

#include <string>

namespace PelorinHost {

struct PlaybackSettings {
  std::string eventsFile;  // absolute
  std::string tpegsDir;    // absolute, without a trailing slash
  bool interactive = true;
  double playbackSpeed = 0.0;  // 0: not written
  bool autostart = false;
};

class StorageRoot {
 public:
  StorageRoot() = default;
  ~StorageRoot() { Remove(); }
  StorageRoot(const StorageRoot&) = delete;
  StorageRoot& operator=(const StorageRoot&) = delete;

  bool UseFolder(const std::string& folder, std::string* error);
  bool MakePrivate(const PlaybackSettings& settings, std::string* error);
  void Remove();
  // Copies everything from `fd` into the private folder's copy of the
  // input; false with `error` naming the OS reason.
  bool CopyInput(int fd, std::string* error);
  // Where the module finds that copy.
  static const char* InputCopyPath() { return "/fs/sda0/quillan/standard-input"; }

  const std::string& Path() const { return m_path; }

  // The text of Pelorin.cfg for these settings.
  static std::string ConfigText(const PlaybackSettings& settings);

 private:
  std::string m_path;
  bool m_private = false;
};

}  // namespace PelorinHost
