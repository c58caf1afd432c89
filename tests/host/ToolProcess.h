#pragma once
// ToolProcess: runs a built tool (pelorin-host, pelorin-check) as a child
// process, through the launcher of a cross build (e.g. qemu-user), with pipes
// on its standard input and output; its standard error goes to a file. Each
// child gets a TMPDIR of its own, so a test can check that the tool removed
// what it made there. Output lines that are JSON objects are parsed as they
// arrive. TestFolder holds a test's input files. Used by one test thread.

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
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "JsonValue.h"
#include "tests/support/TempFile.h"
#include "tests/support/TestTime.h"

extern char** environ;

namespace pelorin_tool_test {

inline int ScaledMs(int ms) { return static_cast<int>(ms * pelorin_test::TimeScale()); }

inline double NowSeconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// A folder "<name>-<pid>.XXXXXX" under TMPDIR. Folders that a test process
// left behind when it crashed or was killed before its destructors ran are
// removed on the way: their pid no longer runs.
inline std::string MakeTempDir(const char* name) {
  const char* tmp = std::getenv("TMPDIR");
  const std::string base = tmp && *tmp ? tmp : "/tmp";
  const std::string prefix = std::string(name) + "-";
  if (DIR* dir = opendir(base.c_str())) {
    while (dirent64* entry = readdir64(dir)) {
      if (std::strncmp(entry->d_name, prefix.c_str(), prefix.size()) != 0) continue;
      const long pid = std::strtol(entry->d_name + prefix.size(), nullptr, 10);
      if (pid > 0 && kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH) {
        pelorin_test::RemoveTree(base + "/" + entry->d_name);
      }
    }
    closedir(dir);
  }
  std::string pattern = base + "/" + prefix + std::to_string(getpid()) + ".XXXXXX";
  return mkdtemp(&pattern[0]) ? pattern : std::string();
}

// The names under root + prefix, recursively, sorted.
// readdir64: on a 32-bit target plain readdir gives up (EOVERFLOW) on file
// systems whose directory offsets need 64 bits.
inline std::vector<std::string> ListTree(const std::string& root, const std::string& prefix = "") {
  std::vector<std::string> names;
  if (DIR* dir = opendir((root + prefix).c_str())) {
    while (dirent64* entry = readdir64(dir)) {
      const std::string name = prefix + "/" + entry->d_name;
      if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
      names.push_back(name);
      for (const std::string& below : ListTree(root, name)) names.push_back(below);
    }
    closedir(dir);
  }
  std::sort(names.begin(), names.end());
  return names;
}

// One output line that is a JSON object.
struct Item {
  std::string line;
  JsonValue json;
  std::string type;  // json["type"]
  double t = 0.0;    // json["t"]
};

class ToolProcess {
 public:
  ToolProcess() : m_tempDir(MakeTempDir("pelorin-tool")), m_errPath(m_tempDir + ".stderr") {}
  ~ToolProcess() {
    if (m_pid > 0) {
      kill(m_pid, SIGKILL);
      waitpid(m_pid, nullptr, 0);
    }
    CloseInput();
    if (m_out >= 0) close(m_out);
    pelorin_test::RemoveTree(m_tempDir);
    unlink(m_errPath.c_str());
  }
  ToolProcess(const ToolProcess&) = delete;
  ToolProcess& operator=(const ToolProcess&) = delete;

  // Standard output of the next Start: a file at `path` (written, not
  // read), or closed when `path` is empty; a pipe by default.
  void OutputTo(const std::string& path) {
    m_outputElsewhere = true;
    m_outputPath = path;
  }
  // Closes the reading end of the output pipe, as a reader that goes away.
  void CloseOutput() {
    if (m_out >= 0) close(m_out);
    m_out = -1;
  }

  // False when `program` cannot be spawned.
  bool Start(const std::string& program, const std::vector<std::string>& args) {
    std::vector<std::string> argv;
    std::stringstream launcher(PELORIN_TOOL_LAUNCHER);  // words separated by "|"
    for (std::string word; std::getline(launcher, word, '|');) {
      if (!word.empty()) argv.push_back(word);
    }
    argv.push_back(program);
    argv.insert(argv.end(), args.begin(), args.end());
    std::vector<std::string> env = {"TMPDIR=" + m_tempDir};
    for (char** entry = environ; *entry != nullptr; ++entry) {
      if (std::strncmp(*entry, "TMPDIR=", 7) != 0) env.emplace_back(*entry);
    }
    int in[2], out[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], 0);
    if (!m_outputElsewhere) {
      posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    } else if (m_outputPath.empty()) {
      posix_spawn_file_actions_addclose(&actions, 1);
    } else {
      posix_spawn_file_actions_addopen(&actions, 1, m_outputPath.c_str(), O_WRONLY, 0);
    }
    posix_spawn_file_actions_addopen(&actions, 2, m_errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    m_startSeconds = NowSeconds();
    const int spawned = posix_spawnp(&m_pid, argv[0].c_str(), &actions, nullptr,
                                     Pointers(argv).data(), Pointers(env).data());
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    m_in = in[1];
    m_out = out[0];
    if (m_outputElsewhere) CloseOutput();
    if (spawned != 0) m_pid = -1;
    return spawned == 0;
  }

  // Reads the next output line into Items() or, when it is not a JSON
  // object, BadLines(). False at the end of the output or after `timeoutMs`.
  bool ReadLine(int timeoutMs) {
    const double deadline = NowSeconds() + timeoutMs / 1000.0;
    size_t newline;
    while ((newline = m_buffer.find('\n')) == std::string::npos) {
      const int left = static_cast<int>((deadline - NowSeconds()) * 1000.0);
      if (m_out < 0 || left <= 0) return false;
      pollfd fd = {m_out, POLLIN, 0};
      if (poll(&fd, 1, left) <= 0) continue;
      char buffer[65536];
      const ssize_t got = read(m_out, buffer, sizeof(buffer));
      if (got > 0) {
        m_buffer.append(buffer, static_cast<size_t>(got));
        m_output.append(buffer, static_cast<size_t>(got));
      } else if (got == 0 || errno != EINTR) {
        close(m_out);
        m_out = -1;
      }
    }
    Item item;
    item.line = m_buffer.substr(0, newline);
    m_buffer.erase(0, newline + 1);
    if (item.line.rfind('{', 0) == 0 && JsonValue::Parse(item.line, &item.json)) {
      item.type = item.json["type"].string;
      item.t = item.json["t"].number;
      m_items.push_back(item);
    } else {
      m_badLines.push_back(item.line);
    }
    return true;
  }
  // Reads until no line comes for `quietMs`.
  void Drain(int quietMs) {
    while (ReadLine(quietMs)) {
    }
  }
  // Reads until an item of `type` arrives; false at the end or after `timeoutMs`.
  bool WaitForItem(const std::string& type, int timeoutMs, Item* found = nullptr) {
    const double deadline = NowSeconds() + timeoutMs / 1000.0;
    for (;;) {
      const size_t before = m_items.size();
      if (!ReadLine(static_cast<int>((deadline - NowSeconds()) * 1000.0))) return false;
      if (m_items.size() > before && m_items.back().type == type) {
        if (found != nullptr) *found = m_items.back();
        return true;
      }
    }
  }
  void WriteInput(const std::string& text) {
    for (size_t done = 0; m_in >= 0 && done < text.size();) {
      const ssize_t written = write(m_in, text.data() + done, text.size() - done);
      if (written <= 0 && errno != EINTR) return;
      if (written > 0) done += static_cast<size_t>(written);
    }
  }
  void CloseInput() {
    if (m_in >= 0) close(m_in);
    m_in = -1;
  }
  void Signal(int number) {
    if (m_pid > 0) kill(m_pid, number);
  }
  // Reads the rest of the output and waits for the exit. Returns the exit
  // status (128 + the signal after one), or -1 when the tool had to be
  // killed after `timeoutMs`.
  int Wait(int timeoutMs) {
    const double deadline = NowSeconds() + timeoutMs / 1000.0;
    while (m_out >= 0 && NowSeconds() < deadline) {
      ReadLine(static_cast<int>((deadline - NowSeconds()) * 1000.0) + 1);
    }
    while (m_out < 0 && Running() && NowSeconds() < deadline) usleep(1000);
    if (m_pid > 0 && (m_out >= 0 || Running())) {
      kill(m_pid, SIGKILL);
      waitpid(m_pid, nullptr, 0);
      m_pid = -1;
      return -1;
    }
    while (Running()) usleep(1000);
    return m_status;
  }
  bool Running() {
    int status = 0;
    if (m_pid <= 0 || waitpid(m_pid, &status, WNOHANG) != m_pid) return m_pid > 0;
    m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    m_pid = -1;
    return false;
  }

  const std::string& Output() const { return m_output; }
  const std::vector<Item>& Items() const { return m_items; }
  const std::vector<std::string>& BadLines() const { return m_badLines; }
  std::vector<Item> ItemsOfType(const std::string& type) const {
    std::vector<Item> items;
    std::copy_if(m_items.begin(), m_items.end(), std::back_inserter(items),
                 [&type](const Item& item) { return item.type == type; });
    return items;
  }
  std::string Stderr() const {
    std::ostringstream text;
    text << std::ifstream(m_errPath, std::ios::binary).rdbuf();
    return text.str();
  }
  // True when the child's own TMPDIR is empty (again).
  bool TempDirEmpty() const { return ListTree(m_tempDir).empty(); }
  // Wall-clock seconds since Start.
  double Elapsed() const { return NowSeconds() - m_startSeconds; }

 private:
  static std::vector<char*> Pointers(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(&word[0]);
    pointers.push_back(nullptr);
    return pointers;
  }

  std::string m_tempDir;
  std::string m_errPath;
  bool m_outputElsewhere = false;
  std::string m_outputPath;
  pid_t m_pid = -1;
  int m_in = -1;
  int m_out = -1;
  int m_status = -1;
  double m_startSeconds = 0.0;
  std::string m_buffer;  // output not yet split into lines
  std::string m_output;  // all output so far
  std::vector<Item> m_items;
  std::vector<std::string> m_badLines;
};

// Runs `program` to its end with no input; its exit status, -1 on a timeout.
inline int RunTool(const std::string& program, const std::vector<std::string>& args,
                   ToolProcess* process, int timeoutMs = ScaledMs(60000)) {
  if (!process->Start(program, args)) return -2;
  process->CloseInput();
  return process->Wait(timeoutMs);
}

using TestFolder = pelorin_test::TempFolder;

}  // namespace pelorin_tool_test
