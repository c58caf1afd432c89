#include "ControlSocket.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "ControlTarget.h"
#include "EndSignal.h"
#include "host/common/JsonWriter.h"
#include "host/common/TerminalText.h"

namespace PelorinHost {
namespace {

using PelorinTools::JsonWriter;

constexpr size_t kMostPending = 64 * 1024;  // answers not yet read by a client
constexpr size_t kLongestLine = 4096;
constexpr size_t kMostClients = 16;

bool Address(const std::string& path, sockaddr_un* address) {
  std::memset(address, 0, sizeof(*address));
  address->sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof(address->sun_path)) return false;
  std::memcpy(address->sun_path, path.data(), path.size());
  return true;
}

// Whether a program listens on the socket at `path`.
bool Listened(const sockaddr_un& address) {
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  const bool listened =
      ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  ::close(fd);
  return listened;
}

void Close(int& fd) {
  if (fd >= 0) ::close(fd);
  fd = -1;
}

}  // namespace

ControlSocket::~ControlSocket() { Stop(); }

bool ControlSocket::Open(const std::string& path, std::string* error) {
  const std::string name = "--control-socket " + PelorinTools::TerminalText::Escaped(path);
  sockaddr_un address;
  if (!Address(path, &address)) {
    *error = name + ": the path is empty or longer than " +
             std::to_string(sizeof(address.sun_path) - 1) + " bytes";
    return false;
  }
  struct stat info {};
  if (::lstat(path.c_str(), &info) == 0) {
    if (!S_ISSOCK(info.st_mode)) {
      *error = name + ": the file exists and is not a socket";
      return false;
    }
    if (Listened(address)) {
      *error = name + ": another program listens on it";
      return false;
    }
    ::unlink(path.c_str());  // a stale socket of an earlier run
  }
  m_listenFd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const sockaddr* generic = reinterpret_cast<const sockaddr*>(&address);
  // Linux makes the socket file with the socket's own mode: the user's
  // only from the moment it exists. The chmod below covers other systems.
  if (m_listenFd >= 0) ::fchmod(m_listenFd, 0600);
  if (m_listenFd < 0 || ::bind(m_listenFd, generic, sizeof(address)) != 0) {
    *error = name + ": " + std::strerror(errno);
    Close(m_listenFd);
    return false;
  }
  m_path = path;
  // Nobody can connect before listen: the mode is the user's only by then
  // wherever the file was made with another.
  if (::chmod(path.c_str(), 0600) != 0 || ::listen(m_listenFd, 8) != 0 ||
      !m_wake.Open()) {
    *error = name + ": " + std::strerror(errno);
    Stop();
    return false;
  }
  return true;
}

bool ControlSocket::Start(ControlTarget& target) {
  if (m_listenFd < 0) return false;
  m_target = &target;
  m_thread = std::thread(&ControlSocket::ServeLoop, this);
  return true;
}

void ControlSocket::Publish(const StatusInfo& status) {
  std::lock_guard<std::mutex> guard(m_statusLock);
  m_status = status;
}

StatusInfo ControlSocket::Published() {
  std::lock_guard<std::mutex> guard(m_statusLock);
  return m_status;
}

void ControlSocket::Wake() {
  if (m_thread.joinable()) m_wake.Wake();
}

void ControlSocket::Stop() {
  if (m_thread.joinable()) {
    Wake();
    m_thread.join();
  }
  for (Client& client : m_clients) Close(client.fd);
  m_clients.clear();
  Close(m_listenFd);
  m_wake.Close();
  Remove();
}

void ControlSocket::Remove() {
  if (!m_path.empty()) ::unlink(m_path.c_str());
  m_path.clear();
}

void ControlSocket::ServeLoop() {
  std::vector<pollfd> polled;
  for (;;) {
    polled.assign({pollfd{m_wake.ReadFd(), POLLIN, 0}, pollfd{m_listenFd, POLLIN, 0}});
    for (const Client& client : m_clients) {
      polled.push_back(
          pollfd{client.fd, static_cast<short>(client.out.empty() ? POLLIN : POLLIN | POLLOUT), 0});
    }
    if (::poll(polled.data(), polled.size(), -1) < 0 && errno != EINTR) return;
    if (polled[0].revents != 0) return;
    // Clients first: their entries in `polled` follow m_clients' order.
    size_t kept = 0;
    for (size_t i = 0; i < m_clients.size(); ++i) {
      const short events = polled[i + 2].revents;
      Client& client = m_clients[i];
      const bool keep = (!(events & (POLLIN | POLLHUP | POLLERR)) || Read(client)) &&
                        (!(events & POLLOUT) || Flush(client));
      if (!keep) {
        Close(client.fd);
        continue;
      }
      if (kept != i) m_clients[kept] = std::move(client);
      ++kept;
    }
    m_clients.resize(kept);
    if (polled[1].revents & POLLIN) Accept();
  }
}

void ControlSocket::Accept() {
  for (;;) {
    const int fd = ::accept4(m_listenFd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) return;
    if (m_clients.size() >= kMostClients) {
      ::close(fd);
      continue;
    }
    m_clients.push_back(Client{fd, {}, {}});
  }
}

// One read a round, so that a client that keeps sending cannot hold up the
// others or the end.
bool ControlSocket::Read(Client& client) {
  char buffer[1024];
  const ssize_t count = ::recv(client.fd, buffer, sizeof(buffer), 0);
  if (count == 0) return false;  // the client went away
  if (count < 0) return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
  client.in.append(buffer, static_cast<size_t>(count));
  for (size_t end; (end = client.in.find('\n')) != std::string::npos;) {
    const std::string line = client.in.substr(0, end);
    client.in.erase(0, end + 1);
    Handle(client, line);
  }
  return client.in.size() <= kLongestLine && Flush(client) && client.out.size() <= kMostPending;
}

bool ControlSocket::Flush(Client& client) {
  while (!client.out.empty()) {
    const ssize_t count = ::send(client.fd, client.out.data(), client.out.size(), MSG_NOSIGNAL);
    if (count < 0) return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
    client.out.erase(0, static_cast<size_t>(count));
  }
  return true;
}

void ControlSocket::Handle(Client& client, const std::string& line) {
  if (line.find_first_not_of(" \t\r") == std::string::npos) return;
  const ControlCommand command = ControlCommand::FromJson(line);
  switch (command.kind) {
    case ControlCommand::kStart:
      m_target->StartPlayback();
      break;
    case ControlCommand::kStop:
      m_target->StopPlayback();
      break;
    case ControlCommand::kSpeed:
      m_target->SetSpeedPercent(command.percent);
      break;
    case ControlCommand::kQuit:
      m_endSignal.Raise(EndSignal::kQuit);
      break;
    default:
      break;
  }
  client.out += Answer(command, Published());
  client.out += '\n';
}

std::string ControlSocket::Answer(const ControlCommand& command, const StatusInfo& status) {
  JsonWriter json;
  json.BeginObject();
  json.Key("ok");
  json.Bool(command.kind != ControlCommand::kInvalid);
  if (command.kind == ControlCommand::kInvalid) {
    json.Key("error");
    json.String(command.error);
  } else if (command.kind == ControlCommand::kStatus) {
    json.Key("line");
    json.Uint(status.line);
    json.Key("clock");
    if (status.recordTime > 0) {
      json.Int(status.recordTime);
    } else {
      json.Null();
    }
    json.Key("speed");
    json.String(status.speed);
    json.Key("state");
    json.String(status.state);
    json.Key("lagSeconds");
    if (status.lagMs >= 0) {
      json.Number(std::to_string(status.lagMs / 1000) + "." +
                  std::to_string(1000 + status.lagMs % 1000).substr(1));
    } else {
      json.Null();
    }
  }
  json.EndObject();
  return json.Text();
}

}  // namespace PelorinHost
