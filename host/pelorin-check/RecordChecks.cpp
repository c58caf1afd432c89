#include "host/pelorin-check/RecordChecks.h"

#include <cctype>
#include <cstring>
#include <utility>

#include "host/common/TerminalText.h"
#include "host/common/TimeText.h"
#include "producers/IntegerText.h"
#include "producers/OnlineTrafficProducer.h"
#include "producers/PayloadProducer.h"
#include "producers/ProducedMessage.h"
#include "producers/TotCall.h"
#include "runtime/NumberText.h"

namespace PelorinCheck {
namespace {

using PelorinTools::TerminalText;
using PelorinTools::TimeText;

const char kOnlineTrafficTag[] = "$TOT";
const char kSetNewData[] = "setNewData";
const char kTmcTag[] = "$TMC";
const char kServiceListTag[] = "$TSL";
// The methods whose arguments the service receives as signed 32-bit integers.
const char* const kIntegerMethods[] = {"setOnlineTrafficDataStatus", "setTimeoutForFallback",
                                       "dsiConnectionStateChanged"};

using Field = CheckedProducer::Field;
// The fields of the "$TMC" and "$TSL" producers, by field number.
const std::vector<Field> kTmcFields = {Field::kUnsigned32, Field::kUnsigned8, Field::kUnsigned8,
                                       Field::kUnsigned32, Field::kHexBytes};
const std::vector<Field> kServiceListFields = {
    Field::kUnsigned32, Field::kUnsigned8, Field::kUnsigned8,  Field::kUnsigned8,
    Field::kUnsigned8,  Field::kUnsigned32, Field::kUnsigned32, Field::kText,
    Field::kText,       Field::kUnsigned8, Field::kUnsigned8,  Field::kUnsigned8,
    Field::kUnsigned8,  Field::kSigned32,  Field::kUnsigned32};
// The tags that playback knows, for the letter-case hint of an unknown tag.
const std::vector<const char*> kKnownTags = {kTmcTag, kServiceListTag, kOnlineTrafficTag};

// Whether `tag` is `name`, without measuring `name` at run time.
template <size_t N>
bool IsTag(const std::string& tag, const char (&name)[N]) {
  return tag.size() == N - 1 && std::memcmp(tag.data(), name, N - 1) == 0;
}

bool EqualsIgnoringCase(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

// " (did you mean "X"?)" when `name` differs from a known name only in
// letter case, else "".
template <typename Names>
std::string CaseHint(const std::string& name, const Names& known) {
  for (const char* candidate : known) {
    if (EqualsIgnoringCase(name, candidate)) {
      return std::string(" (names are case-sensitive: did you mean ") +
             TerminalText::Quoted(candidate) + "?)";
    }
  }
  return "";
}

std::vector<const char*> MethodNames() {
  std::vector<const char*> names;
  for (const Quillan::TotMethod& method : Quillan::TotCall::kMethods) {
    names.push_back(method.name);
  }
  return names;
}

// What went wrong in a key=value payload, in words.
std::string PayloadFailureText(const Quillan::ParseError& error) {
  const std::string key = TerminalText::Quoted(error.key);
  switch (error.kind) {
    case Quillan::ParseFailure::kMissingEquals:
      return "no \"=\" in the rest of the payload";
    case Quillan::ParseFailure::kEmptyKey:
      return "empty key before \"=\"";
    case Quillan::ParseFailure::kQuoteAtEnd:
      return "the payload ends right after the opening quote of " + key + "'s value";
    case Quillan::ParseFailure::kEmptyValueAtEnd:
      return "empty value of " + key + " at the end of the payload";
    case Quillan::ParseFailure::kUnknownKey:
      return "unknown key " + key;
    case Quillan::ParseFailure::kFieldRejected:
      return "value of " + key + " refused";
    case Quillan::ParseFailure::kNone:
      break;
  }
  return Quillan::PayloadProducer::FailureText(error.kind);
}

// Whether a file name, joined to a folder, climbs above it through "..".
bool LeavesFolder(const std::string& name) {
  int64_t depth = 0;
  size_t start = 0;
  while (start <= name.size()) {
    size_t end = name.find('/', start);
    if (end == std::string::npos) end = name.size();
    const size_t length = end - start;
    if (length == 2 && name.compare(start, 2, "..") == 0) {
      if (--depth < 0) return true;
    } else if (length > 0 && !(length == 1 && name[start] == '.')) {
      ++depth;
    }
    start = end + 1;
  }
  return false;
}

}  // namespace

RecordChecks::RecordChecks(std::string file, std::string eventsPath, const TpegDirectory& tpegs)
    : m_file(std::move(file)),
      m_eventsPath(std::move(eventsPath)),
      m_tpegs(tpegs),
      m_tmc(*m_dispatcher.FindProducer(kTmcTag), kTmcFields),
      m_tsl(*m_dispatcher.FindProducer(kServiceListTag), kServiceListFields) {}

bool RecordChecks::Check(uint64_t line, const Quillan::Record& record, const LineShape& shape,
                         std::vector<Diagnostic>& out) {
  // The payload begins after the time text, the blank, the tag and one more
  // blank; columns count bytes from 1.
  m_payloadColumn = shape.firstBlank + record.tag.size() + 3;
  CheckTime(line, record.time, shape, out);
  return CheckTag(line, record, out);
}

Diagnostic RecordChecks::Make(uint64_t line, DiagnosticKind kind, std::string message) const {
  Diagnostic diagnostic;
  diagnostic.file = m_file;
  diagnostic.line = line;
  diagnostic.severity = Severity::kWarning;
  diagnostic.kind = kind;
  diagnostic.message = std::move(message);
  return diagnostic;
}

void RecordChecks::CheckTime(uint64_t line, double time, const LineShape& shape,
                             std::vector<Diagnostic>& out) {
  if (time == 0.0) {
    // The reader gives 0 both for a time text that does not convert and for
    // one that reads as zero; the same conversion on the text tells which.
    double value = 0.0;
    const bool converts = shape.TimeTextKnown() && Quillan::ParseDecimal(shape.TimeText(), &value);
    const std::string text =
        TerminalText::Quoted(shape.TimeTextKnown() ? shape.TimeText() : shape.head, 40);
    out.push_back(converts ? Make(line, DiagnosticKind::kTimeNotPositive,
                                  "time stamp " + text +
                                      " is 0; the record plays as time 0 (the interactive "
                                      "player skips it)")
                           : Make(line, DiagnosticKind::kTimeNotConverted,
                                  "time stamp " + text +
                                      " does not convert; the record plays as time 0 (the "
                                      "interactive player skips it)"));
  } else if (time < 0.0) {
    out.push_back(Make(line, DiagnosticKind::kTimeNotPositive,
                       "time stamp " + TimeText::Number(time) +
                           " is before 1970; the record plays as time 0 (the interactive "
                           "player skips it)"));
  } else if (m_hasPrevious && time < m_previousTime) {
    out.push_back(Make(line, DiagnosticKind::kTimeBackwards,
                       "time stamp " + TimeText::Number(time) + " is earlier than " +
                           TimeText::Number(m_previousTime) + " on line " +
                           std::to_string(m_previousLine) + "; the record plays without delay"));
  }
  m_hasPrevious = true;
  m_previousTime = time;
  m_previousLine = line;
}

bool RecordChecks::CheckTag(uint64_t line, const Quillan::Record& record,
                            std::vector<Diagnostic>& out) {
  // "$TMC" and "$TSL" go to the checked producers without a look-up.
  CheckedProducer* checked = IsTag(record.tag, kTmcTag)           ? &m_tmc
                             : IsTag(record.tag, kServiceListTag) ? &m_tsl
                                                                  : nullptr;
  if (checked != nullptr) return CheckPayload(line, record, *checked, checked, out);
  Quillan::PayloadProducer* producer = m_dispatcher.FindProducer(record.tag);
  if (producer != nullptr) return CheckPayload(line, record, *producer, nullptr, out);
  if (IsTag(record.tag, kOnlineTrafficTag)) return CheckOnlineCall(line, record, out);
  Diagnostic diagnostic =
      Make(line, DiagnosticKind::kUnknownTag,
           "unknown tag " + TerminalText::Quoted(record.tag, 40) +
               CaseHint(record.tag, kKnownTags) + "; no consumer takes the record, it is dropped");
  diagnostic.tag = record.tag;
  out.push_back(std::move(diagnostic));
  return false;
}

// `producer` is the one the dispatcher hands this tag's records to (or the
// checked producer in front of it), so the verdict is playback's own; the
// message itself is not built, nothing here would look at it.
bool RecordChecks::CheckPayload(uint64_t line, const Quillan::Record& record,
                                Quillan::PayloadProducer& producer, CheckedProducer* checked,
                                std::vector<Diagnostic>& out) {
  Quillan::ParseError error;
  if (producer.ParseFields(record.payload, &error)) {
    if (checked == nullptr) return true;
    for (const CheckedProducer::Finding& finding : checked->Findings()) {
      Diagnostic diagnostic = Make(line, finding.kind, finding.message);
      diagnostic.tag = record.tag;
      diagnostic.key = finding.key;
      out.push_back(std::move(diagnostic));
    }
    return true;
  }
  Diagnostic diagnostic =
      Make(line, DiagnosticKind::kPayloadRefused,
           PayloadFailureText(error) + " in the " + TerminalText::Quoted(record.tag) +
               " payload at byte " + std::to_string(error.offset + 1) + " (column " +
               std::to_string(m_payloadColumn + error.offset) + "); the record is dropped");
  diagnostic.tag = record.tag;
  diagnostic.key = error.key;
  diagnostic.hasByte = true;
  diagnostic.byte = error.offset + 1;
  out.push_back(std::move(diagnostic));
  return false;
}

bool RecordChecks::CheckOnlineCall(uint64_t line, const Quillan::Record& record,
                                   std::vector<Diagnostic>& out) {
  const Quillan::TotCall call = Quillan::TotCall::Parse(record.payload);
  const Quillan::TotCall::Verdict status = call.Check();
  const auto method = [&call] { return TerminalText::Quoted(call.method, 40); };
  Diagnostic diagnostic;
  switch (status) {
    case Quillan::TotCall::kEmptyMethod:
      diagnostic = Make(line, DiagnosticKind::kEmptyMethod,
                        "\"$TOT\" record without a method name; no call is replayed");
      break;
    case Quillan::TotCall::kUnknownMethod:
      diagnostic = Make(line, DiagnosticKind::kUnknownMethod,
                        "unknown \"$TOT\" method " + method() +
                            CaseHint(call.method, MethodNames()) + "; no call is replayed");
      break;
    case Quillan::TotCall::kWrongArgumentCount: {
      const size_t expected =
          Quillan::TotCall::kMethods[Quillan::TotCall::FindMethod(call.method)].argumentCount;
      diagnostic = Make(line, DiagnosticKind::kArgumentCount,
                        "\"$TOT\" method " + method() + " takes " + std::to_string(expected) +
                            (expected == 1 ? " argument" : " arguments") + " but has " +
                            std::to_string(call.arguments.size()) + "; no call is replayed");
      break;
    }
    default:
      if (call.method == kSetNewData) CheckTpegFile(line, call.arguments[0], out);
      CheckIntegerArguments(line, call, out);
      return true;
  }
  diagnostic.tag = record.tag;
  out.push_back(std::move(diagnostic));
  return false;
}

void RecordChecks::CheckIntegerArguments(uint64_t line, const Quillan::TotCall& call,
                                         std::vector<Diagnostic>& out) {
  bool integers = false;
  for (const char* method : kIntegerMethods) integers = integers || call.method == method;
  if (!integers) return;
  for (const std::string& argument : call.arguments) {
    int64_t value = 0;
    const bool converts = Quillan::IntegerText::Convert(argument, 10, &value);
    if (converts && value >= INT32_MIN && value <= INT32_MAX) continue;
    Diagnostic diagnostic =
        Make(line, converts ? DiagnosticKind::kValueOutOfRange : DiagnosticKind::kValueNotNumber,
             "argument " + TerminalText::Quoted(argument, 40) + " of \"$TOT\" method " +
                 TerminalText::Quoted(call.method, 40) +
                 (converts ? " does not fit a signed 32-bit integer (-2147483648 to 2147483647)"
                           : " is not a decimal integer") +
                 "; the service receives whatever the platform makes of it");
    diagnostic.tag = kOnlineTrafficTag;
    out.push_back(std::move(diagnostic));
  }
}

void RecordChecks::CheckTpegFile(uint64_t line, const std::string& fileName,
                                 std::vector<Diagnostic>& out) {
  const std::string local = m_tpegs.LocalPath(m_eventsPath, fileName);
  if (LeavesFolder(fileName)) {
    Diagnostic diagnostic =
        Make(line, DiagnosticKind::kTpegFileOutside,
             "\"setNewData\" file " + TerminalText::Quoted(fileName) +
                 " leaves the TPEG directory; the head unit would read a file outside it (" +
                 TerminalText::Quoted(local, 200) + ")");
    diagnostic.tag = kOnlineTrafficTag;
    out.push_back(std::move(diagnostic));
  }
  if (TpegDirectory::FileExists(local)) return;
  Diagnostic diagnostic =
      Make(line, DiagnosticKind::kTpegFileMissing,
           "\"setNewData\" file " + TerminalText::Quoted(fileName) +
               " is not in the TPEG directory (no file " + TerminalText::Quoted(local, 200) + ")");
  diagnostic.tag = kOnlineTrafficTag;
  out.push_back(std::move(diagnostic));
}

}  // namespace PelorinCheck
