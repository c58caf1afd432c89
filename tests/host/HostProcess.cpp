#include "HostProcess.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>

#include "tests/support/TestTime.h"

extern char** environ;

namespace pelorin_host_test {
namespace {

double NowSeconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

std::vector<std::string> SplitList(const std::string& text) {
  std::vector<std::string> parts;
  size_t start = 0;
  while (start <= text.size()) {
    const size_t end = text.find('|', start);
    const std::string part = text.substr(start, end == std::string::npos ? end : end - start);
    if (!part.empty()) parts.push_back(part);
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return parts;
}

std::string MakeTempDir(const char* name) {
  const char* base = std::getenv("TMPDIR");
  std::string pattern = std::string(base && *base ? base : "/tmp") + "/" + name + ".XXXXXX";
  return mkdtemp(&pattern[0]) ? pattern : std::string();
}

void RemoveTree(const std::string& path) {
  DIR* dir = opendir(path.c_str());
  if (dir != nullptr) {
    while (dirent* entry = readdir(dir)) {
      const std::string name = entry->d_name;
      if (name == "." || name == "..") continue;
      const std::string child = path + "/" + name;
      struct stat info {};
      if (lstat(child.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
        RemoveTree(child);
      } else {
        unlink(child.c_str());
      }
    }
    closedir(dir);
  }
  rmdir(path.c_str());
}

void ListTree(const std::string& root, const std::string& prefix, std::vector<std::string>* out) {
  DIR* dir = opendir((root + prefix).c_str());
  if (dir == nullptr) return;
  while (dirent* entry = readdir(dir)) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    out->push_back(prefix + "/" + name);
    ListTree(root, prefix + "/" + name, out);
  }
  closedir(dir);
}

}  // namespace

int ScaledMs(int ms) { return static_cast<int>(ms * pelorin_test::TimeScale()); }

HostProcess::HostProcess() : m_tempDir(MakeTempDir("pelorin-host-test")) {}

HostProcess::~HostProcess() {
  if (m_pid > 0) {
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
  }
  for (int fd : {m_in, m_out, m_err}) {
    if (fd >= 0) close(fd);
  }
  if (!m_tempDir.empty()) RemoveTree(m_tempDir);
}

bool HostProcess::Start(const std::vector<std::string>& args) {
  std::vector<std::string> argv = SplitList(PELORIN_HOST_LAUNCHER);
  argv.push_back(PELORIN_HOST_PROGRAM);
  argv.insert(argv.end(), args.begin(), args.end());
  std::vector<char*> argvPointers;
  for (std::string& arg : argv) argvPointers.push_back(&arg[0]);
  argvPointers.push_back(nullptr);

  std::vector<std::string> env;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (std::strncmp(*entry, "TMPDIR=", 7) != 0) env.emplace_back(*entry);
  }
  env.push_back("TMPDIR=" + m_tempDir);
  std::vector<char*> envPointers;
  for (std::string& entry : env) envPointers.push_back(&entry[0]);
  envPointers.push_back(nullptr);

  int in[2], out[2], err[2];
  if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
    return false;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_adddup2(&actions, err[1], 2);
  m_startSeconds = NowSeconds();
  const int spawned = posix_spawnp(&m_pid, argvPointers[0], &actions, nullptr, argvPointers.data(),
                                   envPointers.data());
  posix_spawn_file_actions_destroy(&actions);
  close(in[0]);
  close(out[1]);
  close(err[1]);
  m_in = in[1];
  m_out = out[0];
  m_err = err[0];
  if (spawned != 0) m_pid = -1;
  return spawned == 0;
}

void HostProcess::Signal(int number) {
  if (m_pid > 0) kill(m_pid, number);
}

bool HostProcess::Running() {
  if (m_pid <= 0) return false;
  int status = 0;
  const pid_t done = waitpid(m_pid, &status, WNOHANG);
  if (done != m_pid) return true;
  m_exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  m_pid = -1;
  return false;
}

double HostProcess::Elapsed() const { return NowSeconds() - m_startSeconds; }

void HostProcess::TakeLine(const std::string& line) {
  HostItem item;
  item.line = line;
  std::string error;
  if (!line.empty() && line[0] == '{' && JsonValue::Parse(line, &item.json, &error)) {
    item.type = item.json["type"].String();
    item.t = item.json["t"].Number();
    m_items.push_back(item);
  } else {
    m_badLines.push_back(line);
  }
}

// Reads what is there (waiting up to `timeoutMs` for something); false when
// both output pipes have ended.
bool HostProcess::Pump(int timeoutMs) {
  pollfd fds[2] = {{m_out, POLLIN, 0}, {m_err, POLLIN, 0}};
  if (m_out < 0 && m_err < 0) return false;
  if (poll(fds, 2, timeoutMs) <= 0) return true;
  char buffer[65536];
  if (fds[1].revents != 0) {
    const ssize_t got = read(m_err, buffer, sizeof(buffer));
    if (got > 0) {
      m_stderr.append(buffer, static_cast<size_t>(got));
    } else if (got == 0 || errno != EINTR) {
      close(m_err);
      m_err = -1;
    }
  }
  if (fds[0].revents != 0) {
    const ssize_t got = read(m_out, buffer, sizeof(buffer));
    if (got > 0) {
      m_outBuffer.append(buffer, static_cast<size_t>(got));
      size_t newline;
      while ((newline = m_outBuffer.find('\n')) != std::string::npos) {
        m_lines.push_back(m_outBuffer.substr(0, newline));
        m_outBuffer.erase(0, newline + 1);
      }
    } else if (got == 0 || errno != EINTR) {
      close(m_out);
      m_out = -1;
    }
  }
  return true;
}

bool HostProcess::ReadLine(std::string* line, int timeoutMs) {
  const double deadline = NowSeconds() + timeoutMs / 1000.0;
  while (m_lines.empty()) {
    const double left = deadline - NowSeconds();
    if (left <= 0 || m_out < 0) return false;
    if (!Pump(static_cast<int>(left * 1000.0) + 1)) return false;
  }
  *line = m_lines.front();
  m_lines.erase(m_lines.begin());
  TakeLine(*line);
  return true;
}

bool HostProcess::WaitForItem(const std::string& type, int timeoutMs, HostItem* found) {
  const double deadline = NowSeconds() + timeoutMs / 1000.0;
  std::string line;
  for (;;) {
    const double left = deadline - NowSeconds();
    const size_t before = m_items.size();
    if (left <= 0 || !ReadLine(&line, static_cast<int>(left * 1000.0) + 1)) return false;
    if (m_items.size() > before && m_items.back().type == type) {
      if (found != nullptr) *found = m_items.back();
      return true;
    }
  }
}

void HostProcess::WriteInput(const std::string& text) {
  if (m_in < 0) return;
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t written = write(m_in, text.data() + done, text.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    done += static_cast<size_t>(written);
  }
}

void HostProcess::CloseInput() {
  if (m_in >= 0) close(m_in);
  m_in = -1;
}

int HostProcess::Wait(int timeoutMs) {
  const double deadline = NowSeconds() + timeoutMs / 1000.0;
  std::string line;
  while (m_out >= 0 || m_err >= 0) {
    const double left = deadline - NowSeconds();
    if (left <= 0) break;
    Pump(static_cast<int>(left * 1000.0) + 1);
    while (!m_lines.empty()) ReadLine(&line, 0);
  }
  int status = 0;
  if ((m_out >= 0 || m_err >= 0) && m_pid > 0) {
    kill(m_pid, SIGKILL);
    waitpid(m_pid, &status, 0);
    m_pid = -1;
    return -1;
  }
  if (m_pid > 0) {
    waitpid(m_pid, &status, 0);
    m_pid = -1;
    m_exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  return m_exitStatus;
}

std::vector<HostItem> HostProcess::ItemsOfType(const std::string& type) const {
  std::vector<HostItem> items;
  std::copy_if(m_items.begin(), m_items.end(), std::back_inserter(items),
               [&type](const HostItem& item) { return item.type == type; });
  return items;
}

bool HostProcess::TempDirEmpty() const {
  std::vector<std::string> names;
  ListTree(m_tempDir, "", &names);
  return names.empty();
}

int RunHost(const std::vector<std::string>& args, HostProcess* process, int timeoutMs) {
  if (!process->Start(args)) return -2;
  process->CloseInput();
  return process->Wait(timeoutMs);
}

TestFolder::TestFolder() : m_path(MakeTempDir("pelorin-host-files")) {}

TestFolder::~TestFolder() { RemoveTree(m_path); }

std::string TestFolder::Write(const std::string& name, const std::string& text) const {
  const std::string path = m_path + "/" + name;
  for (size_t slash = path.find('/', m_path.size() + 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    mkdir(path.substr(0, slash).c_str(), 0755);
  }
  FILE* file = std::fopen(path.c_str(), "wb");
  if (file != nullptr) {
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
  }
  return path;
}

std::vector<std::string> TestFolder::List() const {
  std::vector<std::string> names;
  ListTree(m_path, "", &names);
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace pelorin_host_test
