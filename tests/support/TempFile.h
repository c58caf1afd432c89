#pragma once
// TempFile: a file with given contents under the temporary directory, removed
// when the object goes. TempFolder: a fresh temporary folder, removed with
// everything in it. For tests that need real events, storage or configuration
// files, and for the tools' tests.

#include <string>

namespace pelorin_test {

class TempFile {
 public:
  explicit TempFile(const std::string& contents);
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const std::string& Path() const { return m_path; }

 private:
  std::string m_path;
};

class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::string& Path() const { return m_path; }
  // Writes (mode "wb") or appends ("ab") `bytes` to `name`, a file or a
  // folder (name ending in '/') under this folder, making the folders on the
  // way; its full path.
  std::string Write(const std::string& name, const std::string& bytes = "",
                    const char* mode = "wb");

 private:
  std::string m_path;
};

// Removes `path`, a file or a folder with everything in it.
void RemoveTree(const std::string& path);

// Writes `bytes` to `path` with fopen `mode`.
void WriteFile(const std::string& path, const std::string& bytes, const char* mode = "wb");

}  // namespace pelorin_test
