#pragma once
// Diagnostic: one finding about one line of an events file (or about the
// whole file when `line` is 0), as the report writers print it. Plain data.

#include <cstdint>
#include <string>

namespace PelorinCheck {

enum class Severity { kWarning, kError };

// What was found; each kind has a stable code for machine readers.
enum class DiagnosticKind {
  kOpenFailed,        // the events file does not open
  kReadError,         // reading failed: playback ends here
  kMalformedLine,     // the reader rejects the line: playback ends here
  kUnknownTag,        // no consumer handles the tag
  kPayloadRefused,    // a "$TMC" or "$TSL" payload breaks the grammar or names an unknown key
  kEmptyMethod,       // a "$TOT" payload without a method name
  kUnknownMethod,     // a "$TOT" method that cannot be replayed
  kArgumentCount,     // a "$TOT" method with the wrong number of arguments
  kTimeNotConverted,  // the time stamp does not convert: the record plays as time 0
  kTimeNotPositive,   // the time stamp is 0 or negative
  kTimeBackwards,     // earlier than the record before: plays without delay
  kTpegFileMissing,   // a "setNewData" file is not in the TPEG directory
};

const char* DiagnosticCode(DiagnosticKind kind);
const char* SeverityName(Severity severity);

struct Diagnostic {
  std::string file;
  uint64_t line = 0;  // 1-based, as the reader counts lines; 0 for the whole file
  Severity severity = Severity::kWarning;
  DiagnosticKind kind = DiagnosticKind::kUnknownTag;
  std::string message;

  // Details for machine readers; empty or absent when they do not apply.
  std::string tag;
  std::string key;         // the payload key that failed
  bool hasOffset = false;  // `offset` holds a byte offset
  uint64_t offset = 0;     // into the payload, or into the file for read errors
};

}  // namespace PelorinCheck
