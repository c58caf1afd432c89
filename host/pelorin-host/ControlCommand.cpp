#include "ControlCommand.h"

#include <cctype>
#include <cstdlib>

#include "JsonMembers.h"
#include "host/common/SpeedText.h"
#include "host/common/TerminalText.h"

namespace PelorinHost {

using PelorinTools::SpeedText;
namespace {

const char kCommands[] = "commands: start, stop, speed SPEED, quit";

std::string Trimmed(const std::string& text) {
  size_t begin = 0;
  size_t end = text.size();
  while (begin < end && std::isspace(static_cast<unsigned char>(text[begin]))) ++begin;
  while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
  return text.substr(begin, end - begin);
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

const char kJsonCommands[] = "commands: start, stop, speed, quit, status";

// A JSON string's characters when it has no escapes, else the JSON text.
std::string Unquoted(const std::string& json) {
  const bool plain =
      json.size() >= 2 && json.front() == '"' && json.find('\\') == std::string::npos;
  return plain ? json.substr(1, json.size() - 2) : json;
}

ControlCommand Make(ControlCommand::Kind kind) {
  ControlCommand command;
  command.kind = kind;
  return command;
}

// Every problem with a line is told the same way: what is wrong, then the
// commands there are.
ControlCommand Invalid(const std::string& problem) {
  ControlCommand command = Make(ControlCommand::kInvalid);
  command.error = "ignored: " + problem + " (" + kCommands + ")";
  return command;
}

ControlCommand ParseSpeed(const std::string& argument) {
  ControlCommand command = Make(ControlCommand::kSpeed);
  if (!SpeedText::Parse(argument, &command.percent)) {
    return Invalid("speed needs " + SpeedText::Accepted() + ", not " +
                   PelorinTools::TerminalText::Quoted(argument));
  }
  return command;
}

}  // namespace

ControlCommand ControlCommand::FromLine(const std::string& line) {
  const std::string text = Lower(Trimmed(line));
  if (text.empty()) return Make(kNone);
  const size_t blank = text.find_first_of(" \t");
  const std::string word = text.substr(0, blank);
  const std::string argument = blank == std::string::npos ? "" : Trimmed(text.substr(blank));
  if (word == "speed") return ParseSpeed(argument);
  const bool known = word == "start" || word == "stop" || word == "quit";
  if (!known) return Invalid("unknown command " + PelorinTools::TerminalText::Quoted(word));
  if (!argument.empty()) {
    return Invalid(word + " takes no argument, not " +
                   PelorinTools::TerminalText::Quoted(argument));
  }
  if (word == "start") return Make(kStart);
  if (word == "stop") return Make(kStop);
  return Make(kQuit);
}

ControlCommand ControlCommand::FromJson(const std::string& line) {
  ControlCommand invalid = Make(kInvalid);
  JsonMembers members;
  const std::string* name = members.Parse(line) ? members.Find("command") : nullptr;
  if (name == nullptr) {
    invalid.error = "not a JSON object with \"command\"";
    return invalid;
  }
  const std::string* value = members.Find("value");
  const std::string word = Unquoted(*name);
  if (word == "speed") {
    const ControlCommand speed = value != nullptr ? ParseSpeed(Unquoted(*value)) : invalid;
    if (speed.kind == kSpeed) return speed;
    invalid.error = "\"speed\" needs a \"value\" of " + SpeedText::Accepted();
    return invalid;
  }
  const Kind kind = word == "start"    ? kStart
                    : word == "stop"   ? kStop
                    : word == "quit"   ? kQuit
                    : word == "status" ? kStatus
                                       : kInvalid;
  if (kind != kInvalid && value == nullptr) return Make(kind);
  invalid.error = kind != kInvalid ? word + " takes no \"value\""
                                   : "unknown command " + *name + " (" + kJsonCommands + ")";
  return invalid;
}

int32_t StepSpeed(int32_t percent, bool faster) {
  const int64_t next = faster ? int64_t{percent} * 2 : percent / 2;
  if (next < SpeedText::kMinPercent) return SpeedText::kMinPercent;
  if (next > SpeedText::kMaxPercent) return SpeedText::kMaxPercent;
  return static_cast<int32_t>(next);
}

ControlCommand KeyDecoder::Feed(unsigned char byte, std::string* echo) {
  if (m_escape == 1) {
    m_escape = byte == '[' || byte == 'O' ? 2 : 0;
    return Make(ControlCommand::kNone);
  }
  if (m_escape == 2) {
    if (byte >= 0x40 && byte <= 0x7e) {  // the final byte of the sequence
      m_escape = 0;
      if (byte == 'A' || byte == 'C') return Make(ControlCommand::kFaster);
      if (byte == 'B' || byte == 'D') return Make(ControlCommand::kSlower);
    }
    return Make(ControlCommand::kNone);
  }
  switch (byte) {
    case 0x1b:
      m_escape = 1;
      return Make(ControlCommand::kNone);
    case 0x04:  // Ctrl-D
      if (m_line.empty()) return Make(ControlCommand::kEndOfInput);
      return Make(ControlCommand::kNone);
    case '\r':
    case '\n': {
      const std::string line = m_line;
      m_line.clear();
      if (!line.empty()) *echo += "\r\n";
      return ControlCommand::FromLine(line);
    }
    case 0x7f:
    case 0x08:
      if (!m_line.empty()) {
        m_line.pop_back();
        *echo += "\b \b";
      }
      return Make(ControlCommand::kNone);
    case ' ':
      if (m_line.empty()) return Make(ControlCommand::kToggle);
      break;
    case 'q':
    case 'Q':
      if (m_line.empty()) return Make(ControlCommand::kQuit);
      break;
    default:
      break;
  }
  if (byte >= 0x20 && byte < 0x7f) {
    m_line += static_cast<char>(byte);
    *echo += static_cast<char>(byte);
  }
  return Make(ControlCommand::kNone);
}

}  // namespace PelorinHost
