#include "Controls.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "ControlTarget.h"
#include "EndSignal.h"
#include "Output.h"

namespace PelorinHost {

Controls::Controls(ControlTarget& target, EndSignal& endSignal, Output& output, int inputFd,
                   int statusFd)
    : m_target(target),
      m_endSignal(endSignal),
      m_output(output),
      m_inputFd(inputFd),
      m_statusFd(statusFd) {}

Controls::~Controls() { Stop(); }

bool Controls::Start() {
  if (!m_wake.Open()) return false;
  if (isatty(m_inputFd) == 1 && tcgetattr(m_inputFd, &m_savedTerminal) == 0) {
    termios raw = m_savedTerminal;
    raw.c_lflag &= static_cast<tcflag_t>(~(ICANON | ECHO));
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    m_terminal = tcsetattr(m_inputFd, TCSANOW, &raw) == 0;
  }
  m_thread = std::thread(&Controls::ReadLoop, this);
  return true;
}

void Controls::Wake() {
  if (m_thread.joinable()) m_wake.Wake();
}

void Controls::Stop() {
  if (m_thread.joinable()) {
    Wake();
    m_thread.join();
  }
  if (m_terminal) {
    tcsetattr(m_inputFd, TCSANOW, &m_savedTerminal);
    m_terminal = false;
  }
  m_wake.Close();
}

void Controls::ReadLoop() {
  char buffer[256];
  for (;;) {
    pollfd fds[2] = {{m_inputFd, POLLIN, 0}, {m_wake.ReadFd(), POLLIN, 0}};
    if (::poll(fds, 2, -1) < 0) {
      if (errno == EINTR) continue;
      break;
    }
    if (fds[1].revents != 0) return;  // Stop
    if (fds[0].revents == 0) continue;
    const ssize_t got = ::read(m_inputFd, buffer, sizeof(buffer));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    if (!HandleBytes(buffer, static_cast<size_t>(got))) return;
  }
  // End of input: a last line without a line feed still counts.
  if (!m_terminal && !m_pendingLine.empty() && !Execute(ControlCommand::FromLine(m_pendingLine))) {
    return;
  }
  Complain("end of the control input: quitting");
  m_endSignal.Raise(EndSignal::kInputEnded);
}

bool Controls::HandleBytes(const char* bytes, size_t size) {
  for (size_t i = 0; i < size; ++i) {
    ControlCommand command;
    if (m_terminal) {
      std::string echo;
      command = m_keys.Feed(static_cast<unsigned char>(bytes[i]), &echo);
      if (!echo.empty()) {
        m_output.ClearStatus();
        while (::write(m_statusFd, echo.data(), echo.size()) < 0 && errno == EINTR) {
        }
      }
    } else if (bytes[i] == '\n') {
      command = ControlCommand::FromLine(m_pendingLine);
      m_pendingLine.clear();
    } else {
      m_pendingLine += bytes[i];
      continue;
    }
    if (!Execute(command)) return false;
  }
  return true;
}

bool Controls::Execute(const ControlCommand& command) {
  switch (command.kind) {
    case ControlCommand::kNone:
      break;
    case ControlCommand::kStart:
      m_target.StartPlayback();
      break;
    case ControlCommand::kStop:
      m_target.StopPlayback();
      break;
    case ControlCommand::kToggle:
      if (m_target.IsPlaying()) {
        m_target.StopPlayback();
      } else {
        m_target.StartPlayback();
      }
      break;
    case ControlCommand::kSpeed:
      m_target.SetSpeedPercent(command.percent);
      break;
    case ControlCommand::kFaster:
    case ControlCommand::kSlower:
      m_target.SetSpeedPercent(
          StepSpeed(m_target.SpeedPercent(), command.kind == ControlCommand::kFaster));
      break;
    case ControlCommand::kQuit:
      m_endSignal.Raise(EndSignal::kQuit);
      return false;
    case ControlCommand::kStatus:  // a control socket's command only
      break;
    case ControlCommand::kEndOfInput:
      Complain("end of the control input: quitting");
      m_endSignal.Raise(EndSignal::kInputEnded);
      return false;
    case ControlCommand::kInvalid:
      Complain(command.error);
      break;
  }
  return true;
}

void Controls::Complain(const std::string& text) {
  m_output.ClearStatus();
  const std::string line = "pelorin-host: " + text + (m_terminal ? "\r\n" : "\n");
  while (::write(m_statusFd, line.data(), line.size()) < 0 && errno == EINTR) {
  }
}

}  // namespace PelorinHost
