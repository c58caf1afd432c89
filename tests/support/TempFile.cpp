#include "tests/support/TempFile.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace pelorin_test {
namespace {

std::string Pattern() {
  const char* directory = std::getenv("TMPDIR");
  return std::string(directory ? directory : "/tmp") + "/pelorin-XXXXXX";
}

}  // namespace

void WriteFile(const std::string& path, const std::string& bytes, const char* mode) {
  std::FILE* file = std::fopen(path.c_str(), mode);
  if (file == nullptr) return;
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
}

TempFile::TempFile(const std::string& contents) : m_path(Pattern()) {
  const int descriptor = mkstemp(&m_path[0]);
  if (descriptor >= 0) close(descriptor);
  WriteFile(m_path, contents);
}

TempFile::~TempFile() { std::remove(m_path.c_str()); }

TempFolder::TempFolder() : m_path(Pattern()) {
  if (mkdtemp(&m_path[0]) == nullptr) m_path.clear();
}

TempFolder::~TempFolder() {
  for (auto it = m_made.rbegin(); it != m_made.rend(); ++it) std::remove(it->c_str());
  rmdir(m_path.c_str());
}

std::string TempFolder::Write(const std::string& name, const std::string& bytes, const char* mode) {
  const std::string path = m_path + "/" + name;
  bool known = false;
  for (const std::string& made : m_made) known = known || made == path;
  if (!known) m_made.push_back(path);
  if (!name.empty() && name.back() == '/') {
    mkdir(path.c_str(), 0700);
  } else {
    WriteFile(path, bytes, mode);
  }
  return path;
}

}  // namespace pelorin_test
