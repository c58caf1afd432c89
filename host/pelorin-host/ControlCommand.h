#pragma once
// ControlCommand: one command of the control input, from a line ("start",
// "stop", "speed SPEED" with SPEED as SpeedText reads it, "quit"; letter
// case and surrounding blanks do not matter, empty lines are nothing) or
// from a key on a terminal (space toggles start and stop; q quits; up/right
// double the speed, down/left halve it).
// KeyDecoder turns the bytes of a terminal in raw mode into commands and
// edits the line being typed. Plain values; no threads.

#include <cstdint>
#include <string>

namespace PelorinHost {

struct ControlCommand {
  enum Kind {
    kNone,
    kStart,
    kStop,
    kToggle,
    kSpeed,
    kFaster,
    kSlower,
    kQuit,
    kStatus,  // from a control socket only
    kEndOfInput,
    kInvalid
  };
  Kind kind = kNone;
  int32_t percent = 0;  // kSpeed: percent of the recorded speed
  std::string error;    // kInvalid: what is wrong with the line, and the commands

  static ControlCommand FromLine(const std::string& line);
  // A control socket's line: one JSON object, {"command": "start"} (also
  // "stop", "quit", "status") or {"command": "speed", "value": "2x"} (a
  // string or a number). kInvalid with `error` for anything else.
  static ControlCommand FromJson(const std::string& line);
};

// The speed after kFaster or kSlower, kept within SpeedText's range.
int32_t StepSpeed(int32_t percent, bool faster);

class KeyDecoder {
 public:
  // Feeds one byte; returns the command it completes (kNone while a line
  // or an escape sequence is still being typed). `echo` receives what the
  // terminal should show for the byte.
  ControlCommand Feed(unsigned char byte, std::string* echo);

 private:
  std::string m_line;
  int m_escape = 0;  // 0 none, 1 after ESC, 2 after ESC [
};

}  // namespace PelorinHost
