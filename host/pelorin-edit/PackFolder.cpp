#include "host/pelorin-edit/PackFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <sstream>
#include <vector>

#include "host/common/DescriptorWriter.h"
#include "host/pelorin-check/Checker.h"
#include "host/pelorin-check/TextReportWriter.h"

namespace PelorinEdit {
namespace {

const char kHeadUnitFolder[] = "/fs/sda0/quillan/";

// Whether `folder` holds anything; false also when it does not exist.
bool HoldsAnything(const std::string& folder) {
  DIR* dir = ::opendir(folder.c_str());
  if (dir == nullptr) return false;
  bool any = false;
  while (const dirent* entry = ::readdir(dir)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") {
      any = true;
      break;
    }
  }
  ::closedir(dir);
  return any;
}

// A name that stays inside the folder it is joined to.
bool StaysInside(const std::string& name) {
  if (name.empty() || name[0] == '/') return false;
  std::istringstream parts(name);
  for (std::string part; std::getline(parts, part, '/');) {
    if (part == "..") return false;
  }
  return true;
}

// Writes `size` bytes from `source` (a descriptor) or `text` to a new file;
// 0 or the errno of a failed write. EEXIST when the file is there already.
int WriteNewFile(const std::string& path, int source, const std::string& text) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (fd < 0) return errno;
  int error = PelorinTools::DescriptorWriter::WriteAll(fd, text.data(), text.size());
  char buffer[65536];
  while (error == 0 && source >= 0) {
    const ssize_t count = ::read(source, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    error = PelorinTools::DescriptorWriter::WriteAll(fd, buffer, static_cast<size_t>(count));
  }
  if (::close(fd) != 0 && error == 0) error = errno;
  return error;
}

// Forwards the findings that refuse a pack, under the pack's own path.
class RefusingFindings : public PelorinCheck::ReportWriter {
 public:
  // Paths under `temporary` are shown under `folder`, where the pack goes.
  RefusingFindings(std::ostream& out, std::string temporary, std::string folder)
      : m_text(out), m_temporary(std::move(temporary)), m_folder(std::move(folder)) {}
  void WriteDiagnostic(const PelorinCheck::Diagnostic& diagnostic) override {
    using PelorinCheck::DiagnosticKind;
    if (diagnostic.severity != PelorinCheck::Severity::kError &&
        diagnostic.kind != DiagnosticKind::kTpegFileMissing &&
        diagnostic.kind != DiagnosticKind::kTpegFileOutside) {
      return;
    }
    PelorinCheck::Diagnostic shown = diagnostic;
    shown.file = m_folder + "/quillan/events";
    for (size_t at = shown.message.find(m_temporary); at != std::string::npos;
         at = shown.message.find(m_temporary, at + m_folder.size())) {
      shown.message.replace(at, m_temporary.size(), m_folder);
    }
    m_text.WriteDiagnostic(shown);
    ++count;
  }
  void WriteSummary(const PelorinCheck::FileSummary&) override {}
  void WriteTotal(const PelorinCheck::RunTotal&) override {}
  size_t count = 0;

 private:
  PelorinCheck::TextReportWriter m_text;
  std::string m_temporary;
  std::string m_folder;
};

}  // namespace

void RemoveTree(const std::string& path) {
  ::nftw(
      path.c_str(),
      [](const char* entry, const struct stat*, int, struct FTW*) { return ::remove(entry); }, 16,
      FTW_DEPTH | FTW_PHYS);
}

PackFolder::~PackFolder() {
  if (!m_temporary.empty()) RemoveTree(m_temporary);
}

bool PackFolder::Begin(const std::string& folder, bool force, std::string* error) {
  m_folder = folder;
  while (m_folder.size() > 1 && m_folder.back() == '/') m_folder.pop_back();
  struct stat info;
  if (::stat(m_folder.c_str(), &info) == 0 && !S_ISDIR(info.st_mode)) {
    *error = "the pack folder " + folder + " is a file";
    return false;
  }
  if (!force && HoldsAnything(m_folder)) {
    *error = "the pack folder " + folder + " is not empty (--force replaces it)";
    return false;
  }
  const size_t slash = m_folder.rfind('/');
  const std::string parent = slash == std::string::npos ? "" : m_folder.substr(0, slash + 1);
  const std::string name = slash == std::string::npos ? m_folder : m_folder.substr(slash + 1);
  std::string pattern = parent + "." + name + ".XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (::mkdtemp(buffer.data()) == nullptr) {
    *error = "cannot make the pack folder " + folder + ": " + std::strerror(errno);
    return false;
  }
  m_temporary = buffer.data();
  ::chmod(
      m_temporary.c_str(), 0777 & ~[] {
        const mode_t m = ::umask(0);
        ::umask(m);
        return m;
      }());
  if (::mkdir((m_temporary + "/quillan").c_str(), 0777) != 0) {
    *error = "cannot make the pack folder " + folder + ": " + std::strerror(errno);
    return false;
  }
  return true;
}

bool PackFolder::AddTpegFile(const std::string& recording, const std::string& name,
                             int* writeError) {
  if (!StaysInside(name)) return true;
  const std::string target = m_temporary + "/quillan/" + name;
  for (size_t slash = target.find('/', m_temporary.size() + 9); slash != std::string::npos;
       slash = target.find('/', slash + 1)) {
    ::mkdir(target.substr(0, slash).c_str(), 0777);
  }
  const size_t cut = recording.rfind('/');
  const std::string source = (cut == std::string::npos ? "" : recording.substr(0, cut + 1)) + name;
  const int fd = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return true;
  const int error = WriteNewFile(target, fd, "");
  ::close(fd);
  if (error == 0 || error == EEXIST || error == ENOENT || error == EISDIR) return true;
  *writeError = error;
  return false;
}

bool PackFolder::WriteConfiguration(const std::string& text, int* writeError) {
  *writeError = WriteNewFile(m_temporary + "/quillan/Pelorin.cfg", -1, text);
  return *writeError == 0;
}

size_t PackFolder::Check(std::string* report) const {
  PelorinCheck::Options options;
  options.maxErrors = 20;
  const PelorinCheck::TpegDirectory tpegs(kHeadUnitFolder, m_temporary);
  std::ostringstream text;
  RefusingFindings findings(text, m_temporary, m_folder);
  PelorinCheck::Checker checker(options, tpegs, findings);
  checker.CheckFile(EventsPath());
  *report = text.str();
  return findings.count;
}

bool PackFolder::Commit(std::string* error) {
  std::string old;
  if (::rmdir(m_folder.c_str()) != 0 && errno != ENOENT) {
    // Held something and forced: moved aside, replaced, then removed.
    old = m_temporary + ".old";
    if (::rename(m_folder.c_str(), old.c_str()) != 0) {
      *error = std::strerror(errno);
      return false;
    }
  }
  if (::rename(m_temporary.c_str(), m_folder.c_str()) != 0) {
    *error = std::strerror(errno);
    if (!old.empty()) ::rename(old.c_str(), m_folder.c_str());
    return false;
  }
  m_temporary.clear();
  if (!old.empty()) RemoveTree(old);
  return true;
}

}  // namespace PelorinEdit
