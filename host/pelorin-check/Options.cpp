#include "host/pelorin-check/Options.h"

#include "host/common/ExitStatus.h"
#include "host/common/OptionParser.h"
#include "host/common/SpeedText.h"
#include "runtime/NumberText.h"

#ifndef PELORIN_VERSION_TEXT
#define PELORIN_VERSION_TEXT "unknown"
#endif

namespace PelorinCheck {
namespace {

using PelorinTools::OptionParser;

const OptionParser::Definition kOptions[] = {
    {"--strict", 0, OptionParser::Kind::kFlag},    {"--json", 0, OptionParser::Kind::kFlag},
    {"--help", 'h', OptionParser::Kind::kFlag},    {"--version", 'V', OptionParser::Kind::kFlag},
    {"--speed", 0, OptionParser::Kind::kValue},    {"--root", 0, OptionParser::Kind::kValue},
    {"--config", 0, OptionParser::Kind::kValue},   {"--max-errors", 0, OptionParser::Kind::kValue},
    {"--timeline", 0, OptionParser::Kind::kValue},
};

void SetFlag(const std::string& name, Options* options) {
  if (name == "--strict") options->strict = true;
  if (name == "--json") options->json = true;
  if (name == "--help") options->help = true;
  if (name == "--version") options->version = true;
}

bool SetValue(const std::string& name, const std::string& value, Options* options,
              std::string* error) {
  if (value.empty()) {
    *error = "option '" + name + "' needs a non-empty value";
    return false;
  }
  if (name == "--speed") {
    // Read as pelorin-host reads it, so that one speed means the same in both.
    int32_t percent = 0;
    if (!PelorinTools::SpeedText::Parse(value, &percent)) {
      *error = "--speed needs " + PelorinTools::SpeedText::Accepted() + ", not '" + value + "'";
      return false;
    }
    options->speed = percent / 100.0;
    options->hasSpeed = true;
  } else if (name == "--max-errors") {
    int64_t count = 0;
    if (!Quillan::ParseInteger(value, &count) || count < 0 || count > UINT32_MAX) {
      *error = "--max-errors needs a whole number from 0 to 4294967295 (0 shows all), not '" +
               value + "'";
      return false;
    }
    options->maxErrors = static_cast<uint32_t>(count);
  } else if (name == "--root") {
    options->root = value;
  } else if (name == "--config") {
    options->configFile = value;
  } else if (name == "--timeline") {
    options->timeline = value;
  }
  return true;
}

}  // namespace

bool Options::Parse(const std::vector<std::string>& arguments, Options* options,
                    std::string* error) {
  *options = Options();
  OptionParser parser(kOptions, sizeof kOptions / sizeof kOptions[0], arguments);
  OptionParser::Item item;
  while (parser.Next(&item)) {
    if (item.option == nullptr) {
      options->files.push_back(item.value);
    } else if (item.option->kind == OptionParser::Kind::kFlag) {
      SetFlag(item.option->name, options);
    } else if (!SetValue(item.option->name, item.value, options, error)) {
      return false;
    }
  }
  if (!parser.Error().empty()) {
    *error = parser.Error();
    return false;
  }
  if (options->files.empty() && !options->help && !options->version) {
    *error = "no events file given";
    return false;
  }
  if (!options->timeline.empty() && options->files.size() > 1) {
    *error = "--timeline draws one events file, not " + std::to_string(options->files.size());
    return false;
  }
  if (!options->timeline.empty() && options->files.size() == 1 &&
      options->timeline == options->files.front()) {
    *error = "--timeline would overwrite the events file '" + options->timeline + "'";
    return false;
  }
  return true;
}

std::string Options::HelpText() {
  return "pelorin-check: tells what a Pelorin recording (events file) will do when it plays.\n"
         "\n"
         "Usage: pelorin-check [OPTIONS] [--] EVENTS...\n"
         "\n"
         "Each EVENTS file is read with the module's own record reader and producers.\n"
         "Problems are reported as FILE:LINE: SEVERITY: MESSAGE, followed by a summary\n"
         "of each file and, for several files, a total line. Errors are lines where\n"
         "playback would end; warnings are records that would be dropped, do nothing,\n"
         "deliver a value other than the one written, or play at an unexpected time.\n"
         "Every \"setNewData\" file is looked for where the module would look: in the\n"
         "\"tpegsDir\" of --root or --config, else beside the events file; a name\n"
         "that climbs out of that folder (\"../x\") is a warning. Paths on this\n"
         "computer are taken as they are. A lone '-' reads standard input; '--' ends\n"
         "the options. Bytes of a recording that are control characters or not UTF-8\n"
         "are shown escaped (\\x1b).\n"
         "\n"
         "Byte numbers count from 1, in the text and the JSON report alike: byte 1 is\n"
         "the first byte of the payload (payload findings) or of the file (read errors,\n"
         "binary data). Columns count bytes of the line from 1.\n"
         "\n"
         "Options:\n"
         "      --strict         warnings count as errors (exit status 1)\n"
         "      --json           write JSON Lines: one object per diagnostic, per summary\n"
         "                       and for the total (see docs/json-check.md)\n"
         "      --max-errors N   show at most N diagnostics per file, 0 for all\n"
         "                       (0 to 4294967295, default 20); the rest are counted\n"
         "      --speed SPEED    also say how long each file plays at this speed: a\n"
         "                       factor from 0.01 to 21474836.47, 2 or 2x twice as\n"
         "                       fast as recorded, 200% the same\n"
         "                       The play times leave out the waits for online traffic\n"
         "                       answers (getInventory, getNewData): the summary says\n"
         "                       what they add at the least, 50 ms each\n"
         "      --root DIR       DIR stands for the head unit's /fs/sda0: read the TPEG\n"
         "                       directory (\"tpegsDir\") from DIR/quillan/Pelorin.cfg\n"
         "      --config FILE    read \"tpegsDir\" from FILE instead (with --root, paths\n"
         "                       under /fs/sda0 still map into DIR)\n"
         "      --timeline FILE.svg\n"
         "                       draw the events file (only one) into FILE.svg: a UTC\n"
         "                       time axis, a row per tag and per \"$TOT\" method whose\n"
         "                       marks darken with the number of records, gaps of a\n"
         "                       minute and 5% of the span or longer shaded and\n"
         "                       labelled with their length, and coloured lines where\n"
         "                       a \"setNewData\" file is missing, a time stamp goes\n"
         "                       back or playback ends (the first 100 of these)\n"
         "  -h, --help           show this help\n"
         "  -V, --version        show the version\n"
         "\n"
         "Exit status:\n"
         "  0    no errors (and no warnings with --strict)\n"
         "  1    errors found, or warnings with --strict\n" +
         PelorinTools::ExitStatus::HelpText(
             "an unusable option or value, an events file\n"
             "       that is missing, a directory or unreadable, or a --timeline file that\n"
             "       cannot be written") +
         "\n"
         "Example:\n"
         "  $ pelorin-check --speed 4 --root /media/usb rec/events\n"
         "  rec/events:12: warning: unknown key \"ltn\" in the \"$TMC\" payload at byte 24 "
         "(column 41); the record is dropped\n"
         "  rec/events:40: error: malformed line: empty tag (two blanks after the time "
         "stamp); playback ends here\n"
         "  rec/events: summary: 57 lines; 38 records play: $TMC 29, $TSL 2, $TOT 7; 1 record "
         "dropped\n"
         "  rec/events: summary: first 2014-11-16 09:51:00 UTC, last 2014-11-16 10:02:10 UTC, "
         "span 11m10s\n"
         "  rec/events: summary: plays 11m10s at speed 1, 2m47.5s at speed 4\n"
         "  rec/events: summary: playback ends at line 40: empty tag (two blanks after the "
         "time stamp); 17 later lines never play\n"
         "  rec/events: summary: 1 error, 1 warning\n";
}

std::string Options::VersionText() { return std::string("pelorin-check ") + PELORIN_VERSION_TEXT; }

}  // namespace PelorinCheck
