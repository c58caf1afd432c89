#include "host/pelorin-edit/Options.h"

#include <cstdint>
#include <cstdio>

#include "host/common/ExitStatus.h"
#include "host/common/OptionParser.h"
#include "host/common/SpeedText.h"
#include "host/common/TimeText.h"
#include "runtime/NumberText.h"

#ifndef PELORIN_VERSION_TEXT
#define PELORIN_VERSION_TEXT "unknown"
#endif

namespace PelorinEdit {
namespace {

using PelorinTools::OptionParser;

const OptionParser::Definition kOptions[] = {
    {"--output", 'o', OptionParser::Kind::kValue},
    {"--from", 0, OptionParser::Kind::kValue},
    {"--until", 0, OptionParser::Kind::kValue},
    {"--only", 0, OptionParser::Kind::kValue},
    {"--skip", 0, OptionParser::Kind::kValue},
    {"--no-state", 0, OptionParser::Kind::kFlag},
    {"--shift", 0, OptionParser::Kind::kValue},
    {"--start", 0, OptionParser::Kind::kValue},
    {"--shift-input", 0, OptionParser::Kind::kValue},
    {"--help", 'h', OptionParser::Kind::kFlag},
    {"--version", 'V', OptionParser::Kind::kFlag},
    {"--pack", 0, OptionParser::Kind::kValue},
    {"--force", 0, OptionParser::Kind::kFlag},
    {"--interactive", 0, OptionParser::Kind::kFlag},
    {"--realtime", 0, OptionParser::Kind::kValue},
    {"--batched", 0, OptionParser::Kind::kFlag},
    {"--autostart", 0, OptionParser::Kind::kFlag},
};

// Sets how the pack plays; false when another way was given before.
bool SetPlay(Options::Play play, const std::string& name, Options* options, std::string* error) {
  if (options->playGiven && options->play != play) {
    *error = name + " and another of --interactive, --realtime, --batched; give one of them";
    return false;
  }
  options->playGiven = true;
  options->play = play;
  return true;
}

// Days from 1970-01-01 to a date of the proleptic Gregorian calendar.
int64_t DaysFromCivil(int64_t year, int64_t month, int64_t day) {
  year -= month <= 2 ? 1 : 0;
  const int64_t era = (year >= 0 ? year : year - 399) / 400;
  const int64_t yearOfEra = year - era * 400;
  const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

bool ParseSeconds(const std::string& value, double* seconds) {
  return Quillan::ParseDecimal(value, seconds);
}

// "N=SECONDS": input N (from 1) moved by SECONDS.
bool ParseInputShift(const std::string& value, size_t* input, double* seconds) {
  const size_t equals = value.find('=');
  int64_t number = 0;
  if (equals == std::string::npos || !Quillan::ParseInteger(value.substr(0, equals), &number) ||
      number < 1 || number > 100000) {
    return false;
  }
  *input = static_cast<size_t>(number);
  return ParseSeconds(value.substr(equals + 1), seconds);
}

bool SetValue(const std::string& name, const std::string& value, Options* options,
              std::vector<std::pair<size_t, double>>* inputShifts, std::string* error) {
  PelorinRecording::Selection& selection = options->selection;
  if (name == "--output") {
    if (value.empty()) *error = "--output needs a file name, or - for standard output";
    options->output = value;
    return !value.empty();
  }
  if (name == "--from") {
    return selection.SetFrom(value, error);
  }
  if (name == "--until") return selection.SetUntil(value, error);
  if (name == "--only") return selection.SetOnly(value, error);
  if (name == "--skip") return selection.SetSkip(value, error);
  if (name == "--shift") {
    options->hasShift = ParseSeconds(value, &options->shift);
    if (!options->hasShift)
      *error = "--shift needs seconds, such as 3600 or -90.5, not '" + value + "'";
    return options->hasShift;
  }
  if (name == "--start") {
    options->hasStart = Options::ParseStart(value, &options->start);
    if (!options->hasStart) {
      *error = "--start needs a UTC time such as 2014-11-16T09:51:00Z or a record time, not '" +
               value + "'";
    }
    return options->hasStart;
  }
  if (name == "--pack") {
    if (value.empty()) *error = "--pack needs a folder";
    options->pack = value;
    return !value.empty();
  }
  if (name == "--realtime") {
    int32_t percent = 0;
    if (!PelorinTools::SpeedText::Parse(value, &percent)) {
      *error = "--realtime needs " + PelorinTools::SpeedText::Accepted() + ", not '" + value + "'";
      return false;
    }
    options->speed = percent / 100.0;
    return SetPlay(Options::Play::kRealTime, name, options, error);
  }
  if (name == "--shift-input") {
    std::pair<size_t, double> shift;
    if (!ParseInputShift(value, &shift.first, &shift.second)) {
      *error = "--shift-input needs N=SECONDS (input N from 1), such as 2=-30, not '" + value + "'";
      return false;
    }
    inputShifts->push_back(shift);
  }
  return true;
}

}  // namespace

bool Options::ParseStart(const std::string& text, double* seconds) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, consumed = 0;
  char separator = 0;
  if (std::sscanf(text.c_str(), "%4d-%2d-%2d%c%2d:%2d:%n", &year, &month, &day, &separator, &hour,
                  &minute, &consumed) != 6 ||
      consumed == 0) {
    return ParseSeconds(text, seconds);
  }
  std::string rest = text.substr(static_cast<size_t>(consumed));
  if (!rest.empty() && rest.back() == 'Z') rest.pop_back();
  double second = 0.0;
  if ((separator != 'T' && separator != ' ') || month < 1 || month > 12 || day < 1 || day > 31 ||
      hour > 23 || minute > 59 || rest.size() < 2 || rest[0] < '0' || rest[0] > '9' ||
      !Quillan::ParseDecimal(rest, &second) || second < 0.0 || second >= 61.0) {
    return false;
  }
  *seconds =
      static_cast<double>(DaysFromCivil(year, month, day) * 86400 + hour * 3600 + minute * 60) +
      second;
  return true;
}

bool Options::Parse(const std::vector<std::string>& arguments, Options* options,
                    std::string* error) {
  *options = Options();
  std::vector<std::pair<size_t, double>> inputShifts;
  OptionParser parser(kOptions, sizeof kOptions / sizeof kOptions[0], arguments);
  OptionParser::Item item;
  while (parser.Next(&item)) {
    if (item.option == nullptr) {
      options->files.push_back(item.value);
    } else if (item.option->kind == OptionParser::Kind::kFlag) {
      const std::string name = item.option->name;
      options->help |= name == "--help";
      options->version |= name == "--version";
      options->state &= name != "--no-state";
      options->force |= name == "--force";
      options->autostart |= name == "--autostart";
      if ((name == "--interactive" && !SetPlay(Play::kInteractive, name, options, error)) ||
          (name == "--batched" && !SetPlay(Play::kBatched, name, options, error))) {
        return false;
      }
    } else if (!SetValue(item.option->name, item.value, options, &inputShifts, error)) {
      return false;
    }
  }
  if (!parser.Error().empty()) {
    *error = parser.Error();
    return false;
  }
  if (options->help || options->version) return true;
  if (options->files.empty()) {
    *error = "no recording given";
    return false;
  }
  if (options->output.empty() == options->pack.empty()) {
    *error = options->pack.empty()
                 ? "no output given: -o FILE, -o - for standard output, or --pack DIR"
                 : "-o and --pack both name the output; give one of them";
    return false;
  }
  if (options->pack.empty() && (options->playGiven || options->autostart || options->force)) {
    *error = "--interactive, --realtime, --batched, --autostart and --force go with --pack";
    return false;
  }
  if (options->autostart && options->play != Play::kInteractive) {
    *error = "--autostart starts interactive playback, not playback with --realtime or --batched";
    return false;
  }
  if (options->hasShift && options->hasStart) {
    *error = "--shift and --start both move the records; give one of them";
    return false;
  }
  if (!options->selection.Check(error)) return false;
  options->inputShifts.assign(options->files.size(), 0.0);
  for (const auto& shift : inputShifts) {
    if (shift.first > options->files.size()) {
      *error = "--shift-input names input " + std::to_string(shift.first) + " of " +
               std::to_string(options->files.size());
      return false;
    }
    options->inputShifts[shift.first - 1] = shift.second;
  }
  return true;
}

std::string Options::PackConfiguration() const {
  std::string text =
      "# Written by pelorin-edit.\n"
      "eventsFile=/fs/sda0/quillan/events\n"
      "tpegsDir=/fs/sda0/quillan/\n";
  text += play == Play::kInteractive ? "interactive=true\n" : "interactive=false\n";
  if (play != Play::kBatched)
    text += "playbackSpeed=" + PelorinTools::TimeText::Number(speed) + "\n";
  if (play == Play::kInteractive) text += autostart ? "autostart=true\n" : "autostart=false\n";
  return text;
}

std::string Options::HelpText() {
  return "pelorin-edit: cuts, merges and moves Pelorin recordings (events files).\n"
         "\n"
         "Usage: pelorin-edit [OPTIONS] -o OUTPUT [--] EVENTS...\n"
         "\n"
         "Writes the selected records of each EVENTS file to OUTPUT, several files\n"
         "merged by record time (in the order given where times are equal). Each\n"
         "record keeps the bytes it was read with, but for the times moved on purpose;\n"
         "every line ends with LF. Records are read with the module's own reader, so a\n"
         "file's records end where playback would end: at the first line the module\n"
         "rejects, which standard error names. OUTPUT is written to a temporary file\n"
         "beside it and renamed into place when the run succeeds; a failed run leaves\n"
         "no OUTPUT. An OUTPUT that is one of the EVENTS files is refused. A lone '-'\n"
         "reads standard input (EVENTS) or writes standard output (OUTPUT); '--' ends\n"
         "the options. The selection options apply to each file's records as written,\n"
         "before they are moved.\n"
         "\n"
         "A cut begins with the head unit's state at the cut point: of the records\n"
         "before --from, the last \"$TSL\", the last of each online traffic call that\n"
         "sets the service's state (setOnlineTrafficDataStatus, setNewSession,\n"
         "setTimeoutForFallback, dsiConnectionStateChanged, setNewData), in their\n"
         "order. They carry the time of the cut's first record, so they play at once.\n"
         "\n"
         "Options:\n"
         "  -o, --output FILE    write to FILE; - for standard output\n"
         "      --from BOUND     begin at the first record at or after BOUND: a record\n"
         "                       time as written (1416131460.5), +SECONDS after the\n"
         "                       file's first record, or @LINE (from 1)\n"
         "      --until BOUND    end with the last record at or before BOUND\n"
         "      --only TAGS      take only records of these tags (TMC,TSL or $TOT)\n"
         "      --skip TAGS      take all records but those of these tags\n"
         "      --no-state       leave out the state at the cut point\n"
         "      --shift SECONDS  move every record by SECONDS (3600, -90.5): its time\n"
         "                       and the timeStamp values of \"$TMC\" payloads, each\n"
         "                       number kept with the decimals it was written with\n"
         "      --start TIME     move the records so that the first one written lies\n"
         "                       at TIME: UTC as 2014-11-16T09:51:00Z (fraction allowed)\n"
         "                       or a record time\n"
         "      --shift-input N=SECONDS\n"
         "                       move the records of input N (from 1) by SECONDS before\n"
         "                       the merge, as --shift does; repeat for other inputs\n"
         "      --pack DIR       write a head unit's storage folder instead of -o:\n"
         "                       DIR/quillan/events, the TPEG files its setNewData\n"
         "                       calls name (from beside the recording that holds\n"
         "                       the call) and DIR/quillan/Pelorin.cfg. The pack is\n"
         "                       checked with pelorin-check's rules and refused when\n"
         "                       playback would end early or a TPEG file is missing\n"
         "      --force          pack anyway, and replace a DIR that is not empty\n"
         "      --interactive    the pack plays under HMI control (the default)\n"
         "      --autostart      ... and starts at once\n"
         "      --realtime SPEED the pack plays in real time at SPEED, a factor from\n"
         "                       0.01 to 21474836.47 (2, 2x or 200%)\n"
         "      --batched        the pack plays all at once\n"
         "  -h, --help           show this help\n"
         "  -V, --version        show the version\n"
         "\n"
         "Exit status:\n"
         "  0    written\n"
         "  1    written, but an EVENTS file ended early at a line that playback\n"
         "       rejects (standard error names it); its later records are left out;\n"
         "       or --pack refused on what the check found (nothing written)\n" +
         PelorinTools::ExitStatus::HelpText(
             "an unusable option or value, an EVENTS file\n"
             "       that is missing, a directory or unreadable, an OUTPUT that is an\n"
             "       input or cannot be written in its folder (nothing is written)") +
         "Writing OUTPUT failing (full disk) also gives 4 and leaves OUTPUT as it was.\n"
         "\n"
         "Examples:\n"
         "  pelorin-edit --from +3600 --until +3720 -o incident.txt drive.txt\n"
         "  pelorin-edit --shift-input 2=5400 -o drive+incident.txt drive.txt incident.txt\n"
         "  pelorin-edit --from +3600 --until +3720 --pack /media/usb drive.txt\n";
}

std::string Options::VersionText() { return std::string("pelorin-edit ") + PELORIN_VERSION_TEXT; }

}  // namespace PelorinEdit
