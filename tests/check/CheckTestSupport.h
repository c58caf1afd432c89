#pragma once
// Helpers for the checker's tests: a temporary folder that holds events
// files and is removed afterwards, and a report writer that keeps what it
// is given.

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "host/pelorin-check/ReportWriter.h"

namespace pelorin_check_test {

class TempDir {
 public:
  TempDir() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/pelorin-check-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    m_path = mkdtemp(buffer.data()) ? buffer.data() : "";
  }
  ~TempDir() { Remove(m_path); }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& Path() const { return m_path; }

  // Writes `bytes` to `name` under the folder (sub-folders are created) and
  // returns the file's path.
  std::string Write(const std::string& name, const std::string& bytes) const {
    for (size_t slash = name.find('/'); slash != std::string::npos;
         slash = name.find('/', slash + 1)) {
      ::mkdir((m_path + "/" + name.substr(0, slash)).c_str(), 0755);
    }
    const std::string path = m_path + "/" + name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }

 private:
  static void Remove(const std::string& path) {
    if (path.empty()) return;
    if (DIR* dir = ::opendir(path.c_str())) {
      while (dirent* entry = ::readdir(dir)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") Remove(path + "/" + name);
      }
      ::closedir(dir);
      ::rmdir(path.c_str());
    } else {
      ::unlink(path.c_str());
    }
  }

  std::string m_path;
};

class CollectingWriter : public PelorinCheck::ReportWriter {
 public:
  void WriteDiagnostic(const PelorinCheck::Diagnostic& diagnostic) override {
    diagnostics.push_back(diagnostic);
  }
  void WriteSummary(const PelorinCheck::FileSummary& summary) override {
    summaries.push_back(summary);
  }

  // The diagnostics of one kind.
  std::vector<PelorinCheck::Diagnostic> OfKind(PelorinCheck::DiagnosticKind kind) const {
    std::vector<PelorinCheck::Diagnostic> found;
    for (const auto& diagnostic : diagnostics) {
      if (diagnostic.kind == kind) found.push_back(diagnostic);
    }
    return found;
  }

  std::vector<PelorinCheck::Diagnostic> diagnostics;
  std::vector<PelorinCheck::FileSummary> summaries;
};

}  // namespace pelorin_check_test
