#include "ControlCommand.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>

namespace PelorinHost {
namespace {

constexpr int32_t kMinPercent = 1;
constexpr int32_t kMaxPercent = 100000;

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

ControlCommand Make(ControlCommand::Kind kind) {
  ControlCommand command;
  command.kind = kind;
  return command;
}

ControlCommand Invalid(const std::string& error) {
  ControlCommand command = Make(ControlCommand::kInvalid);
  command.error = error;
  return command;
}

ControlCommand ParseSpeed(const std::string& argument) {
  errno = 0;
  char* end = nullptr;
  const long percent = std::strtol(argument.c_str(), &end, 10);
  if (argument.empty() || errno != 0 || *end != '\0' || percent < kMinPercent ||
      percent > kMaxPercent) {
    return Invalid("speed needs a percentage from 1 to 100000 (100 is recorded speed)");
  }
  ControlCommand command = Make(ControlCommand::kSpeed);
  command.percent = static_cast<int32_t>(percent);
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
  if (!argument.empty()) return Invalid(word + " takes no argument");
  if (word == "start") return Make(kStart);
  if (word == "stop") return Make(kStop);
  if (word == "quit") return Make(kQuit);
  return Invalid("unknown command '" + word + "' (start, stop, speed PERCENT, quit)");
}

int32_t StepSpeed(int32_t percent, bool faster) {
  const int64_t next = faster ? int64_t{percent} * 2 : percent / 2;
  if (next < kMinPercent) return kMinPercent;
  if (next > kMaxPercent) return kMaxPercent;
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
