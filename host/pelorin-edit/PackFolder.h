#pragma once
// PackFolder: a head unit's storage folder made from an edit, for a USB
// stick: quillan/events, the TPEG files that its "setNewData" calls name
// (copied from beside the recording that holds the call, where the module
// would look for them), and a quillan/Pelorin.cfg that plays them. It is
// built in a temporary folder beside the pack folder and put in place by
// Commit only, so a failed or refused run leaves no half-written pack; the
// temporary folder goes with the object otherwise. A pack folder that holds
// anything is replaced only when forced. Before Commit, Check reads the
// pack with pelorin-check's rules. One thread.

#include <cstddef>
#include <string>

namespace PelorinEdit {

class PackFolder {
 public:
  PackFolder() = default;
  ~PackFolder();
  PackFolder(const PackFolder&) = delete;
  PackFolder& operator=(const PackFolder&) = delete;

  // False with a one-line `error` when `folder` is a file, holds anything
  // and `force` is not given, or no temporary folder can be made beside it.
  bool Begin(const std::string& folder, bool force, std::string* error);
  // Where the events file of the pack is written.
  std::string EventsPath() const { return m_temporary + "/quillan/events"; }
  // Copies the file `name` that a "setNewData" of `recording` names, once.
  // A file that is missing or a name that climbs out of the folder is left
  // to Check; false (with the errno) only when writing the copy failed.
  bool AddTpegFile(const std::string& recording, const std::string& name, int* writeError);
  // Writes quillan/Pelorin.cfg; false with the errno.
  bool WriteConfiguration(const std::string& text, int* writeError);
  // The findings of pelorin-check's rules on the pack that refuse it (lines
  // where playback ends, TPEG files missing or outside the folder), written
  // in `report` with the pack's final paths; their number.
  size_t Check(std::string* report) const;
  // Puts the pack in place of the folder; false with the OS reason.
  bool Commit(std::string* error);

 private:
  std::string m_folder;
  std::string m_temporary;  // empty once committed
};

// Removes `path`, a file or a folder with everything in it.
void RemoveTree(const std::string& path);

}  // namespace PelorinEdit
