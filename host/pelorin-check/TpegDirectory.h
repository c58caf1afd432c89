#pragma once
// TpegDirectory: where the online traffic service would look for the files
// that "setNewData" records name, seen from this computer. The head unit
// joins the configured "tpegsDir" and the recorded name with "/" (or uses the
// name alone when the directory is empty); without "tpegsDir" the directory
// is that of the events file. With a root, a path under /fs/sda0 (the head
// unit's storage) is looked for under the root instead.
//
// Created once per run from the options and asked once per events file;
// stateless afterwards.

#include <string>

namespace PelorinCheck {

struct Options;

class TpegDirectory {
 public:
  // Neither a root nor a configuration file: the files are looked for
  // beside the events file, as the module does without "tpegsDir".
  TpegDirectory() = default;
  // `configuredDir`: the "tpegsDir" value (empty when absent); `root`: the
  // local folder that stands for /fs/sda0 (empty for none).
  TpegDirectory(std::string configuredDir, std::string root);

  // Reads "tpegsDir" from the configuration file the options name (--config,
  // else ROOT/quillan/Pelorin.cfg). False with a one-line `error` when a
  // named configuration file or the root cannot be read; a missing
  // Pelorin.cfg under the root is not an error (the head unit then uses the
  // defaults too).
  static bool FromOptions(const Options& options, TpegDirectory* directory, std::string* error);

  // The path the head unit hands to the service for `fileName` recorded in
  // events file `eventsPath` (as the module builds it, in UTF-8).
  std::string HeadUnitPath(const std::string& eventsPath, const std::string& fileName) const;
  // The same file on this computer, runs of slashes written as one.
  std::string LocalPath(const std::string& eventsPath, const std::string& fileName) const;
  // Whether the file exists (and is not a directory) on this computer.
  static bool FileExists(const std::string& localPath);

 private:
  std::string m_configuredDir;
  std::string m_root;
};

}  // namespace PelorinCheck
