#include "host/pelorin-edit/EditProgram.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "host/common/ExitStatus.h"
#include "host/common/FileOutput.h"
#include "host/common/OptionParser.h"
#include "host/common/StopSignals.h"
#include "host/common/TerminalText.h"
#include "host/pelorin-edit/AtomicOutput.h"
#include "host/recording/CutState.h"
#include "host/pelorin-edit/EditInput.h"
#include "host/pelorin-edit/Options.h"
#include "host/pelorin-edit/PackFolder.h"
#include "host/pelorin-edit/ShiftedText.h"

namespace PelorinEdit {
namespace {

using PelorinTools::StopSignals;
using PelorinTools::TerminalText;

const char kTool[] = "pelorin-edit: ";

// The temporary output file, for the stop signal's handler; empty while none.
char g_temporary[4096];

void PublishTemporary(const std::string& path) {
  g_temporary[0] = '\0';
  if (path.size() < sizeof g_temporary) {
    std::memcpy(g_temporary + 1, path.c_str() + 1, path.size());
    g_temporary[0] = path.empty() ? '\0' : path[0];  // last: the handler sees all or none
  }
}

// What a run came to, for the exit status.
struct Outcome {
  bool unusable = false;
  int writeError = 0;
  bool endedEarly = false;
};

int ExitStatus(const Outcome& outcome) {
  return PelorinTools::ExitStatus::Of(
      outcome.writeError, outcome.unusable, StopSignals::Caught(),
      outcome.endedEarly ? EditProgram::kEndedEarly : EditProgram::kWritten);
}

// The output file that is also input `file`, compared by device and inode.
bool SameFile(const struct stat& output, const std::string& file) {
  struct stat input;
  const int status = file == "-" ? ::fstat(STDIN_FILENO, &input) : ::stat(file.c_str(), &input);
  return status == 0 && input.st_dev == output.st_dev && input.st_ino == output.st_ino;
}

class Editor {
 public:
  Editor(const Options& options, std::ostream& err) : m_options(options), m_err(err) {}

  void Run(Outcome& outcome) {
    const bool packing = !m_options.pack.empty();
    std::string reason;
    if (packing && !m_pack.Begin(m_options.pack, m_options.force, &reason)) {
      m_err << kTool << TerminalText::Escaped(reason) << '\n';
      outcome.unusable = true;
      return;
    }
    if (!RefuseInputAsOutput() || !OpenInputs()) {
      outcome.unusable = true;
      return;
    }
    const std::string path = packing ? m_pack.EventsPath() : m_options.output;
    const std::string& target = packing ? m_options.pack : m_options.output;
    if (!m_output.Open(path, &reason)) {
      m_err << kTool << "cannot write " << TerminalText::Escaped(target) << ": " << reason << '\n';
      outcome.unusable = true;
      return;
    }
    PublishTemporary(m_output.Temporary());
    const bool written = Write();
    PublishTemporary("");
    ReportStops(outcome);
    if (written && !outcome.unusable && StopSignals::Caught() == 0) {
      if (!m_output.Commit(&reason) && m_output.Error() == 0) {
        outcome.writeError = EIO;  // the sync, close or rename failed
      } else if (packing && outcome.writeError == 0 && m_output.Error() == 0) {
        Pack(outcome);
      }
    }
    if (outcome.writeError == 0) outcome.writeError = m_output.Error();
    if (outcome.writeError == 0) outcome.writeError = m_dataFileError;
    if (outcome.writeError != 0 && !m_output.ToStandardOutput()) {
      if (reason.empty()) reason = std::strerror(outcome.writeError);
      m_err << kTool << "error writing " << TerminalText::Escaped(target) << ": " << reason << '\n';
    }
  }

 private:
  // Puts the pack in place once its configuration is written and the check
  // finds nothing that refuses it (or --force).
  void Pack(Outcome& outcome) {
    int error = 0;
    if (!m_pack.WriteConfiguration(m_options.PackConfiguration(), &error)) {
      outcome.writeError = error;  // said with the other write errors
      return;
    }
    std::string report;
    const size_t findings = m_pack.Check(&report);
    m_err << report;
    if (findings > 0 && !m_options.force) {
      m_err << kTool << "the pack " << TerminalText::Escaped(m_options.pack)
            << " is refused: " << findings << (findings == 1 ? " finding" : " findings")
            << " above; nothing written (--force packs it anyway)\n";
      outcome.endedEarly = true;
      return;
    }
    std::string reason;
    if (!m_pack.Commit(&reason)) {
      m_err << kTool << "cannot put the pack in place at " << TerminalText::Escaped(m_options.pack)
            << ": " << reason << '\n';
      outcome.unusable = true;
    }
  }

  // Copies the TPEG file that a written "setNewData" names into the pack.
  void AddDataFile(size_t input, const std::string& name) {
    int error = 0;
    if (!m_options.pack.empty() && !name.empty() &&
        !m_pack.AddTpegFile(m_options.files[input], name, &error)) {
      m_dataFileError = error;
    }
  }

  bool RefuseInputAsOutput() {
    struct stat output;
    if (m_options.output.empty() || m_options.output == "-" ||
        ::stat(m_options.output.c_str(), &output) != 0)
      return true;
    for (const std::string& file : m_options.files) {
      if (SameFile(output, file)) {
        m_err << kTool << "the output " << TerminalText::Escaped(m_options.output)
              << " is the input " << TerminalText::Escaped(file) << "; nothing written\n";
        return false;
      }
    }
    return true;
  }

  bool OpenInputs() {
    for (size_t i = 0; i < m_options.files.size(); ++i) {
      m_inputs.push_back(std::make_unique<EditInput>(m_options.selection,
                                                     m_options.state ? &m_state : nullptr, i,
                                                     m_options.inputShifts[i]));
      std::string reason;
      if (!m_inputs.back()->Open(m_options.files[i], &reason)) {
        m_err << kTool << "cannot read " << TerminalText::Escaped(m_options.files[i]) << ": "
              << reason << '\n';
        return false;
      }
    }
    return true;
  }

  // The input whose record comes next: the earliest, the first given at
  // equal times; null when all have ended.
  EditInput* Earliest() {
    EditInput* earliest = nullptr;
    for (size_t i = 0; i < m_inputs.size(); ++i) {
      if (!m_live[i]) continue;
      if (earliest == nullptr || m_inputs[i]->Time() < earliest->Time())
        earliest = m_inputs[i].get();
    }
    return earliest;
  }

  bool Stopping() const {
    return StopSignals::Caught() != 0 || m_output.Error() != 0 || m_dataFileError != 0;
  }

  // Writes the state and the merged records; false when stopped.
  bool Write() {
    for (const auto& input : m_inputs) m_live.push_back(input->Next());
    EditInput* first = Earliest();
    if (first == nullptr) return true;
    m_shift = m_options.hasStart ? m_options.start - first->Time() : m_options.shift;
    const std::string firstTime = NewTime(*first);
    for (const StateRecord& record : m_state.Records()) {
      m_out.assign(firstTime);
      m_out.append(record.text, record.timeTextLength, std::string::npos);
      m_output.Stream() << m_out << '\n';
      AddDataFile(record.input, record.dataFile);
    }
    for (EditInput* input = first; input != nullptr; input = Earliest()) {
      if (Stopping()) return false;
      WriteRecord(*input);
      m_live[input->Index()] = input->Next();
    }
    return !Stopping();
  }

  std::string NewTime(const EditInput& input) {
    const PelorinRecording::RecordingReader& reader = input.Reader();
    const double shift = input.Shift() + m_shift;
    if (shift == 0.0) return std::string(reader.TimeText());
    return ShiftedText::Time(reader.TimeText(), reader.Record().time, shift);
  }

  void WriteRecord(const EditInput& input) {
    const PelorinRecording::RecordingReader& reader = input.Reader();
    const double shift = input.Shift() + m_shift;
    const std::string& line = reader.Shape().head;
    if (!m_options.pack.empty()) AddDataFile(input.Index(), DataFile(reader.Record()));
    if (shift == 0.0) {
      m_output.Stream() << line << '\n';
      return;
    }
    const Quillan::Record& record = reader.Record();
    const size_t timeLength = reader.TimeText().size();
    const size_t payloadOffset = timeLength + 1 + record.tag.size() + 1;
    m_output.Stream() << m_shifted.Line(line, timeLength, NewTime(input), record.tag,
                                        record.payload, payloadOffset, shift)
                      << '\n';
  }

  void ReportStops(Outcome& outcome) {
    for (size_t i = 0; i < m_inputs.size(); ++i) {
      const EditInput& input = *m_inputs[i];
      // A read that a stop signal broke off is no fault of the file.
      if (input.StopLine() == 0 || (input.ReadFailed() && StopSignals::Caught() != 0)) continue;
      m_err << kTool << TerminalText::Escaped(m_options.files[i]) << ':' << input.StopLine() << ": "
            << (input.ReadFailed() ? "cannot be read to its end: " : "playback ends here: ")
            << input.StopReason()
            << (input.ReadFailed() ? "; nothing written\n" : "; the lines after it are left out\n");
      outcome.unusable |= input.ReadFailed();
      outcome.endedEarly = true;
    }
  }

  const Options& m_options;
  std::ostream& m_err;
  PackFolder m_pack;  // declared before the output, which lies in it
  AtomicOutput m_output;
  int m_dataFileError = 0;  // errno of a TPEG file that could not be copied
  CutState m_state;
  ShiftedText m_shifted;
  std::vector<std::unique_ptr<EditInput>> m_inputs;
  std::vector<bool> m_live;
  double m_shift = 0.0;
  std::string m_out;
};

}  // namespace

void EditProgram::OnStopSignal(int number) {
  if (!PelorinRecording::RecordingReader::Reading().load()) return;
  if (g_temporary[0] != '\0') ::unlink(g_temporary);
  ::_exit(PelorinTools::ExitStatus::kSignalBase + number);
}

int EditProgram::Run(const std::vector<std::string>& arguments, std::ostream& err) {
  Options options;
  Outcome outcome;
  std::string error;
  if (!Options::Parse(arguments, &options, &error)) {
    err << PelorinTools::OptionParser::Usage("pelorin-edit", error) << '\n';
    outcome.unusable = true;
  } else if (options.help || options.version) {
    PelorinTools::FileOutput out(STDOUT_FILENO);
    std::ostream(&out) << (options.help ? Options::HelpText() : Options::VersionText() + "\n")
                       << std::flush;
    outcome.writeError = out.Error();
  } else {
    Editor(options, err).Run(outcome);
  }
  const int status = ExitStatus(outcome);
  if (status == PelorinTools::ExitStatus::kWriteFailed && options.output == "-") {
    err << kTool << "error writing standard output: " << std::strerror(outcome.writeError) << '\n';
  }
  return status;
}

}  // namespace PelorinEdit
