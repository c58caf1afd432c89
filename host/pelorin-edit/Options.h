#pragma once
// Options: the command line of pelorin-edit, parsed with the option parser
// the tools share (PelorinTools::OptionParser); the selection options are
// pelorin-host's, read by the same Selection. Parse does not touch the file
// system.

#include <string>
#include <vector>

#include "host/recording/Selection.h"

namespace PelorinEdit {

struct Options {
  std::vector<std::string> files;  // recordings, in the order given
  std::string output;              // -o; "-" for standard output
  PelorinRecording::Selection selection;
  bool state = true;                      // not --no-state
  bool hasShift = false;                  // --shift
  double shift = 0.0;
  bool hasStart = false;            // --start
  double start = 0.0;               // seconds since 1970 UTC
  std::vector<double> inputShifts;  // --shift-input, one per file
  std::string pack;                 // --pack: a head unit's storage folder; empty: none
  bool force = false;               // --force
  // How the pack's Pelorin.cfg plays: interactive (started by the HMI, or
  // at once with --autostart), in real time at a speed, or all at once.
  enum class Play { kInteractive, kRealTime, kBatched };
  Play play = Play::kInteractive;
  bool playGiven = false;
  double speed = 1.0;
  bool autostart = false;
  bool help = false;
  bool version = false;

  // Fills `options` from the arguments after the program name. False with a
  // one-line `error`. --help and --version succeed without files.
  static bool Parse(const std::vector<std::string>& arguments, Options* options,
                    std::string* error);
  // A UTC date-time "2014-11-16T09:51:00.5Z" (or with a blank for the "T",
  // "Z" optional) or a record time as written in recordings; false when
  // `text` is neither.
  static bool ParseStart(const std::string& text, double* seconds);

  // The Pelorin.cfg of a pack, for the head unit's paths.
  std::string PackConfiguration() const;

  static std::string HelpText();
  static std::string VersionText();
};

}  // namespace PelorinEdit
