#pragma once
// TempFile: a file with given contents under the temporary directory, removed
// when the object goes. For tests that need a real events or configuration
// file.

#include <string>

namespace pelorin_test {

class TempFile {
 public:
  explicit TempFile(const std::string& contents);
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const std::string& Path() const { return m_path; }
  void Write(const std::string& contents) const;

 private:
  std::string m_path;
};

}  // namespace pelorin_test
