#pragma once
// ControlSocket: --control-socket PATH. A Unix domain socket on which
// programs of the same user steer the run as --control does: each sends one
// JSON object a line ({"command": "start"}, {"command": "speed", "value":
// "2x"}, {"command": "status"}, ...) and gets one JSON line back. Several
// clients may be connected; one that goes away changes nothing, one that
// sends a malformed line gets an error answer. Answers are written without
// blocking: a client that does not read them is dropped once 64 KiB wait.
// The socket file is made for the user only (0600) and removed by Stop and
// the destructor; a file at PATH that is not a stale socket is refused.
// Open, Start, Publish, Wake, Stop and Remove run on the main thread; the
// clients are served on a thread of this class, which calls the
// ControlTarget (as the controls thread does) and the EndSignal ("quit").
// "status" answers from the StatusInfo last published.

#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ControlCommand.h"
#include "StatusLine.h"
#include "WakePipe.h"

namespace PelorinHost {

class ControlTarget;
class EndSignal;

class ControlSocket {
 public:
  explicit ControlSocket(EndSignal& endSignal) : m_endSignal(endSignal) {}
  ~ControlSocket();
  ControlSocket(const ControlSocket&) = delete;
  ControlSocket& operator=(const ControlSocket&) = delete;

  // Makes the socket and listens; false with `error` (naming PATH and the
  // reason) when PATH exists and is not a stale socket or cannot be bound.
  bool Open(const std::string& path, std::string* error);
  // Starts serving clients, steering `target` (connections wait until
  // then); `target` must outlive Stop.
  bool Start(ControlTarget& target);
  // The figures that "status" answers with.
  void Publish(const StatusInfo& status);
  // Tells the thread to end, without waiting for it.
  void Wake();
  // Ends the thread, closes every connection and removes the socket file.
  void Stop();
  // Removes the socket file only (a hurried exit).
  void Remove();

  // The answer to `command` as a JSON line without its line end (tests).
  static std::string Answer(const ControlCommand& command, const StatusInfo& status);

 private:
  struct Client {
    int fd;
    std::string in;
    std::string out;
  };
  void ServeLoop();
  void Accept();
  // False when the client is to be dropped.
  bool Read(Client& client);
  bool Flush(Client& client);
  void Handle(Client& client, const std::string& line);
  StatusInfo Published();

  ControlTarget* m_target = nullptr;
  EndSignal& m_endSignal;
  std::string m_path;  // empty when no socket file of ours exists
  int m_listenFd = -1;
  WakePipe m_wake;
  std::thread m_thread;
  std::vector<Client> m_clients;  // the serving thread's
  std::mutex m_statusLock;
  StatusInfo m_status;  // guarded by m_statusLock
};

}  // namespace PelorinHost
