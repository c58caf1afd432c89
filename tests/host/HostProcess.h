#pragma once
// HostProcess: runs the built pelorin-host as a child process (posix_spawn,
// through the launcher of a cross build, e.g. qemu-user) with pipes on its
// standard input, output and error, for the end-to-end tests. Each child
// gets a TMPDIR of its own, so a test can check that the host removed its
// private storage root. Used by one test thread.

#include <string>
#include <vector>

#include <sys/types.h>

#include "JsonValue.h"

namespace pelorin_host_test {

// One parsed output line.
struct HostItem {
  std::string line;
  JsonValue json;
  std::string type;  // json["type"]
  double t = 0.0;    // json["t"]
};

class HostProcess {
 public:
  HostProcess();
  ~HostProcess();
  HostProcess(const HostProcess&) = delete;
  HostProcess& operator=(const HostProcess&) = delete;

  // Starts pelorin-host with these arguments. False when it cannot be spawned.
  bool Start(const std::vector<std::string>& args);

  // The next line of standard output (without its line feed); false at its
  // end or when `timeoutMs` pass first.
  bool ReadLine(std::string* line, int timeoutMs);
  // Reads lines until one whose JSON "type" is `type` arrives; every line
  // read goes into Items(). False at the end or after `timeoutMs`.
  bool WaitForItem(const std::string& type, int timeoutMs, HostItem* found = nullptr);
  void WriteInput(const std::string& text);
  void CloseInput();

  // Waits for the exit and reads the rest of the output. Returns the exit
  // status, or -1 when the host had to be killed after `timeoutMs`.
  int Wait(int timeoutMs);

  // Every JSON line read so far, parsed; lines that do not parse are in
  // BadLines().
  const std::vector<HostItem>& Items() const { return m_items; }
  const std::vector<std::string>& BadLines() const { return m_badLines; }
  std::vector<HostItem> ItemsOfType(const std::string& type) const;
  const std::string& Stderr() const { return m_stderr; }
  // True when the private TMPDIR of the child is empty again.
  bool TempDirEmpty() const;
  void Signal(int number);
  // True while the child has not exited.
  bool Running();
  // Wall-clock seconds since Start.
  double Elapsed() const;

 private:
  bool Pump(int timeoutMs);
  void TakeLine(const std::string& line);

  pid_t m_pid = -1;
  int m_in = -1;
  int m_out = -1;
  int m_err = -1;
  std::string m_outBuffer;
  std::vector<std::string> m_lines;  // complete, not yet handed out
  std::vector<HostItem> m_items;
  std::vector<std::string> m_badLines;
  std::string m_stderr;
  std::string m_tempDir;
  double m_startSeconds = 0.0;
  int m_exitStatus = -1;
};

// Runs pelorin-host to its end with no input and returns its exit status.
int RunHost(const std::vector<std::string>& args, HostProcess* process, int timeoutMs = 60000);

// A fresh folder for a test's files, removed with its content at exit.
class TestFolder {
 public:
  TestFolder();
  ~TestFolder();
  const std::string& Path() const { return m_path; }
  // Writes `text` to Path()/name (creating sub-folders) and returns the path.
  std::string Write(const std::string& name, const std::string& text) const;
  // The names found under Path(), recursively, sorted.
  std::vector<std::string> List() const;

 private:
  std::string m_path;
};

// Milliseconds scaled for slow configurations (sanitizers, qemu).
int ScaledMs(int ms);

}  // namespace pelorin_host_test
