#pragma once
// Options: the command line of pelorin-check, parsed with the option parser
// both tools share (PelorinTools::OptionParser): long options take their
// value as the next argument or after "=", a repeated option keeps its last
// value, "--" ends the options and a lone "-" names standard input. Parse
// does not touch the file system.

#include <cstdint>
#include <string>
#include <vector>

namespace PelorinCheck {

struct Options {
  std::vector<std::string> files;  // events files, in the order given
  bool strict = false;             // warnings make the exit status 1
  bool json = false;               // JSON Lines instead of text
  bool hasSpeed = false;           // --speed given
  double speed = 1.0;              // its factor, greater than 0
  std::string root;                // stands for /fs/sda0; empty when not given
  std::string configFile;          // configuration file; empty when not given
  uint32_t maxErrors = 20;         // diagnostics shown per file; 0 shows all
  std::string timeline;            // SVG file to draw the one events file into; empty: none
  bool help = false;
  bool version = false;

  // Fills `options` from the arguments after the program name. False with a
  // one-line `error` when the arguments are unusable. --help and --version
  // succeed without files.
  static bool Parse(const std::vector<std::string>& arguments, Options* options,
                    std::string* error);

  // The text --help prints.
  static std::string HelpText();
  // The line --version prints.
  static std::string VersionText();
};

}  // namespace PelorinCheck
