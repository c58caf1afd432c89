#include "tests/support/TempFile.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>

namespace pelorin_test {

TempFile::TempFile(const std::string& contents) {
  const char* directory = std::getenv("TMPDIR");
  std::string pattern = std::string(directory ? directory : "/tmp") + "/pelorin-XXXXXX";
  const int descriptor = mkstemp(&pattern[0]);
  if (descriptor >= 0) close(descriptor);
  m_path = pattern;
  Write(contents);
}

TempFile::~TempFile() { std::remove(m_path.c_str()); }

void TempFile::Write(const std::string& contents) const {
  std::FILE* file = std::fopen(m_path.c_str(), "wb");
  if (file == nullptr) return;
  std::fwrite(contents.data(), 1, contents.size(), file);
  std::fclose(file);
}

}  // namespace pelorin_test
