#pragma once
// OptionParser: the command-line conventions both tools share. A tool keeps
// its own table of options; the parser walks the arguments and hands out one
// option or operand at a time: "--name value" and "--name=value", "-x"
// (no clustering), an option whose value may be left out, "--" ending the
// options, a lone "-" as an operand (standard input). A repeated option is
// handed out again; the tool decides what that means. Problems come back as
// one line naming the option; Usage shapes every option error of both tools
// alike. Does not own the table; one thread.

#include <cstddef>
#include <string>
#include <vector>

namespace PelorinTools {

class OptionParser {
 public:
  enum class Kind { kFlag, kValue, kOptionalValue };

  struct Definition {
    const char* name;  // "--name"
    char shortName;    // 'x' for "-x"; 0 when none
    Kind kind;
    // For kOptionalValue: whether the next argument is the value.
    bool (*looksLikeValue)(const std::string& argument) = nullptr;
  };

  // An option with its value, or an operand (`option` null, `value` the operand).
  struct Item {
    const Definition* option = nullptr;
    std::string value;
    bool hasValue = false;
  };

  OptionParser(const Definition* definitions, size_t count, std::vector<std::string> arguments);

  // The next option or operand. False at the end, or on a problem that
  // Error() then tells.
  bool Next(Item* item);
  const std::string& Error() const { return m_error; }

  // The one line on standard error for an option error, without the line
  // end: "PROGRAM: MESSAGE (see 'PROGRAM --help')", the message escaped for
  // the terminal since it echoes the arguments.
  static std::string Usage(const std::string& program, const std::string& message);

 private:
  const Definition* Find(const std::string& name) const;
  bool TakeValue(const Definition& definition, const std::string& name, Item* item);
  bool Fail(const std::string& message);

  const Definition* m_definitions;
  size_t m_count;
  std::vector<std::string> m_arguments;
  size_t m_index = 0;
  bool m_optionsEnded = false;
  std::string m_inline;  // the value after "=" of the current argument
  bool m_hasInline = false;
  std::string m_error;
};

}  // namespace PelorinTools
