// --control-socket: the JSON commands and answers, several clients, one that
// goes away or never reads, the socket file's mode and its removal at every
// end, and the paths that are refused.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "ControlCommand.h"
#include "ControlSocket.h"
#include "ToolProcess.h"

namespace pelorin_tool_test {
namespace {

using PelorinHost::ControlCommand;
using PelorinHost::ControlSocket;

// One connection to the socket, from the test thread.
class Client {
 public:
  explicit Client(const std::string& path) : m_fd(socket(AF_UNIX, SOCK_STREAM, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    m_connected = connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
  }
  ~Client() { Close(); }
  bool Connected() const { return m_connected; }
  void Send(const std::string& text) { (void)!send(m_fd, text.data(), text.size(), MSG_NOSIGNAL); }
  // The next answer line; empty after `timeoutMs` without one.
  std::string Answer(int timeoutMs) {
    for (;;) {
      const size_t end = m_in.find('\n');
      if (end != std::string::npos) {
        const std::string line = m_in.substr(0, end);
        m_in.erase(0, end + 1);
        return line;
      }
      pollfd ready{m_fd, POLLIN, 0};
      char buffer[4096];
      if (poll(&ready, 1, timeoutMs) <= 0) return "";
      const ssize_t count = read(m_fd, buffer, sizeof(buffer));
      if (count <= 0) return "";
      m_in.append(buffer, static_cast<size_t>(count));
    }
  }
  std::string Ask(const std::string& line) {
    Send(line + "\n");
    return Answer(ScaledMs(5000));
  }
  void Close() {
    if (m_fd >= 0) close(m_fd);
    m_fd = -1;
  }

 private:
  int m_fd;
  bool m_connected = false;
  std::string m_in;
};

bool Exists(const std::string& path) {
  struct stat info {};
  return lstat(path.c_str(), &info) == 0;
}

TEST(HostControlSocket, CommandsAndTheirAnswers) {
  const struct {
    const char* line;
    ControlCommand::Kind kind;
    const char* answer;
  } cases[] = {
      {R"({"command": "start"})", ControlCommand::kStart, R"({"ok":true})"},
      {R"( {"command":"stop"} )", ControlCommand::kStop, R"({"ok":true})"},
      {R"({"command": "speed", "value": "2x"})", ControlCommand::kSpeed, R"({"ok":true})"},
      {R"({"command": "speed", "value": 0.5})", ControlCommand::kSpeed, R"({"ok":true})"},
      {R"({"command": "quit"})", ControlCommand::kQuit, R"({"ok":true})"},
      {R"({"command": "status"})", ControlCommand::kStatus,
       R"({"ok":true,"line":7,"clock":1416131460,"speed":"2x","state":"playing","lagSeconds":1.005})"},
      {R"({"command": "speed"})", ControlCommand::kInvalid,
       R"j({"ok":false,"error":"\"speed\" needs a \"value\" of a speed from 0.01 to 21474836.47 times the recorded speed, written as a factor (2, 2x) or a percentage (200%)"})j"},
      {R"({"command": "start", "value": 1})", ControlCommand::kInvalid,
       R"({"ok":false,"error":"start takes no \"value\""})"},
      {R"({"command": "jump"})", ControlCommand::kInvalid,
       R"j({"ok":false,"error":"unknown command \"jump\" (commands: start, stop, speed, quit, status)"})j"},
      {"start", ControlCommand::kInvalid,
       R"({"ok":false,"error":"not a JSON object with \"command\""})"},
      {R"({"command": "start"} x)", ControlCommand::kInvalid,
       R"({"ok":false,"error":"not a JSON object with \"command\""})"},
  };
  PelorinHost::StatusInfo status;
  status.line = 7;
  status.recordTime = 1416131460;
  status.speed = "2x";
  status.state = "playing";
  status.lagMs = 1005;
  for (const auto& test : cases) {
    const ControlCommand command = ControlCommand::FromJson(test.line);
    EXPECT_EQ(command.kind, test.kind) << test.line;
    EXPECT_EQ(ControlSocket::Answer(command, status), test.answer) << test.line;
  }
  EXPECT_EQ(ControlCommand::FromJson(R"({"command": "speed", "value": "4x"})").percent, 400);
}

// wallclock: two clients steer one run; the one that goes away, with an
// answer unread, changes nothing; the socket is the user's and is gone at
// the end.
TEST(HostControlSocket, TwoClientsOneGoesAwayMidRun) {
  TestFolder folder;
  const std::string events = folder.Write(
      "events", "1416131460 $TMC SID=1\n1416131460.5 $TMC SID=2\n1416135060 $TMC SID=3\n");
  const std::string path = folder.Path() + "/control";
  ToolProcess host;
  ASSERT_TRUE(
      host.Start(PELORIN_HOST_PROGRAM, {"--json", "--paused", "--control-socket", path, events}));
  // The socket file is the user's only from the moment it exists; it takes
  // connections once the host listens, a moment later.
  struct stat info {};
  ASSERT_TRUE(pelorin_test::WaitUntil([&] { return lstat(path.c_str(), &info) == 0; }));
  EXPECT_TRUE(S_ISSOCK(info.st_mode));
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  std::unique_ptr<Client> first;
  ASSERT_TRUE(pelorin_test::WaitUntil([&] {
    first.reset(new Client(path));
    return first->Connected();
  }));
  Client second(path);
  ASSERT_TRUE(second.Connected());
  EXPECT_EQ(first->Ask(R"({"command": "speed", "value": "2x"})"), R"({"ok":true})");
  EXPECT_EQ(second.Ask("not json"), R"({"ok":false,"error":"not a JSON object with \"command\""})");
  second.Send(R"({"command": "status"})"
              "\n");
  second.Close();
  EXPECT_EQ(first->Ask(R"({"command": "start"})"), R"({"ok":true})");
  ASSERT_TRUE(host.WaitForItem("tmc", ScaledMs(5000)));
  // The status answered is the one the host last published, a moment later.
  // The last record lies an hour ahead, so the run is still playing however
  // slow the machine; a faster speed then brings it in.
  std::string status;
  EXPECT_TRUE(pelorin_test::WaitUntil([&] {
    status = first->Ask(R"({"command": "status"})");
    return status.find(R"("speed":"2x","state":"playing")") != std::string::npos;
  })) << status;
  EXPECT_EQ(first->Ask(R"({"command": "speed", "value": "100000x"})"), R"({"ok":true})");
  ASSERT_TRUE(host.WaitForItem("finished", ScaledMs(5000)));
  EXPECT_EQ(host.Wait(ScaledMs(10000)), 0) << host.Stderr();
  EXPECT_EQ(host.ItemsOfType("tmc").size(), 3u);
  EXPECT_FALSE(Exists(path));
  EXPECT_TRUE(host.TempDirEmpty());
}

// A client that sends but never reads is dropped, not waited for; a signal
// still ends the run at once and removes the socket.
TEST(HostControlSocket, AClientThatNeverReadsAndASignal) {
  TestFolder folder;
  const std::string events = folder.Write("events", "1416131460 $TMC SID=1\n1416135060 $TMC\n");
  const std::string path = folder.Path() + "/control";
  ToolProcess host;
  ASSERT_TRUE(host.Start(PELORIN_HOST_PROGRAM, {"--json", "--control-socket", path, events}));
  ASSERT_TRUE(host.WaitForItem("tmc", ScaledMs(5000)));
  Client greedy(path);
  ASSERT_TRUE(greedy.Connected());
  const std::string flood = std::string(R"({"command": "status"})") + "\n";
  std::string many;
  for (int i = 0; i < 2000; ++i) many += flood;
  for (int i = 0; i < 20; ++i) greedy.Send(many);
  Client polite(path);
  ASSERT_TRUE(polite.Connected());
  EXPECT_EQ(polite.Ask(R"({"command": "stop"})"), R"({"ok":true})");
  host.Signal(SIGTERM);
  EXPECT_EQ(host.Wait(ScaledMs(10000)), 143);
  EXPECT_FALSE(Exists(path));
}

TEST(HostControlSocket, PathsThatAreRefusedOrReplaced) {
  TestFolder folder;
  const std::string events = folder.Write("events", "1 $TMC SID=1\n");
  const std::string file = folder.Write("file", "keep me");
  const std::string stale = folder.Path() + "/stale";
  {
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, stale.c_str(), sizeof(address.sun_path) - 1);
    ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    close(fd);  // bound, never listened on: what a run that was killed leaves
  }
  ToolProcess refused;
  EXPECT_EQ(
      RunTool(PELORIN_HOST_PROGRAM, {"--batched", "--control-socket", file, events}, &refused), 2);
  EXPECT_EQ(refused.Stderr(),
            "pelorin-host: --control-socket " + file + ": the file exists and is not a socket\n");
  std::ostringstream kept;
  kept << std::ifstream(file).rdbuf();
  EXPECT_EQ(kept.str(), "keep me");
  ToolProcess replaced;
  EXPECT_EQ(
      RunTool(PELORIN_HOST_PROGRAM, {"--batched", "--control-socket", stale, events}, &replaced), 0)
      << replaced.Stderr();
  EXPECT_FALSE(Exists(stale));
  ToolProcess tooLong;
  EXPECT_EQ(RunTool(PELORIN_HOST_PROGRAM,
                    {"--batched", "--control-socket", folder.Path() + "/" + std::string(120, 'x'),
                     events},
                    &tooLong),
            2);
}

}  // namespace
}  // namespace pelorin_tool_test
