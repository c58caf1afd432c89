#pragma once
// Controls: reads the control input (standard input) on a thread of its own
// and carries out its commands on the ControlTarget, as the HMI would. On a
// terminal it switches the terminal to single keys (restored by Stop) and
// echoes the line being typed on the status descriptor. "quit" and the end
// of the input are raised on the EndSignal for the main thread (the end of
// the input is also told on the status descriptor); problems with a line
// are reported there and otherwise ignored.
// Start, Wake and Stop are called by the main thread.

#include <termios.h>

#include <atomic>
#include <string>
#include <thread>

#include "ControlCommand.h"
#include "WakePipe.h"

namespace PelorinHost {

class ControlTarget;
class EndSignal;
class Output;

class Controls {
 public:
  Controls(ControlTarget& target, EndSignal& endSignal, Output& output, int inputFd, int statusFd);
  ~Controls();
  Controls(const Controls&) = delete;
  Controls& operator=(const Controls&) = delete;

  bool Start();
  // Tells the thread to end, without waiting for it.
  void Wake();
  // Ends the thread (also while it waits for input) and restores the terminal.
  void Stop();

 private:
  void ReadLoop();
  bool HandleBytes(const char* bytes, size_t size);
  // False when the command ends the controls.
  bool Execute(const ControlCommand& command);
  void Complain(const std::string& text);

  ControlTarget& m_target;
  EndSignal& m_endSignal;
  Output& m_output;
  const int m_inputFd;
  const int m_statusFd;
  bool m_terminal = false;
  termios m_savedTerminal{};
  WakePipe m_wake;
  std::thread m_thread;
  std::string m_pendingLine;
  KeyDecoder m_keys;
};

}  // namespace PelorinHost
