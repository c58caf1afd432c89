#pragma once
// Diagnostic: one finding about one line of an events file (or about the
// whole file when `line` is 0), as the report writers print it. Plain data.

#include <cstdint>
#include <string>

namespace PelorinCheck {

enum class Severity { kWarning, kError };

// What was found; each kind has a stable code for machine readers.
enum class DiagnosticKind {
  kReadError,         // reading failed: playback ends here
  kBinaryData,        // a rejected line of binary bytes; later findings are not shown
  kEmptyRecording,    // the file has no line: nothing plays
  kByteOrderMark,     // a UTF-8 byte-order mark spoils the first time stamp
  kMalformedLine,     // the reader rejects the line: playback ends here
  kPayloadCut,        // a NUL byte ends the payload early: the rest is not played
  kUnknownTag,        // no consumer handles the tag
  kPayloadRefused,    // a "$TMC" or "$TSL" payload breaks the grammar or names an unknown key
  kEmptyMethod,       // a "$TOT" payload without a method name
  kUnknownMethod,     // a "$TOT" method that cannot be replayed
  kArgumentCount,     // a "$TOT" method with the wrong number of arguments
  kTimeNotConverted,  // the time stamp does not convert: the record plays as time 0
  kTimeNotPositive,   // the time stamp is 0 or negative
  kTimeBackwards,     // earlier than the record before: plays without delay
  kTpegFileMissing,   // a "setNewData" file is not in the TPEG directory
  kTpegFileOutside,   // a "setNewData" file name climbs out of the TPEG directory
  kValueNotNumber,    // a numeric value that does not convert: it is delivered as 0
  kValueOutOfRange,   // a number that does not fit its field: it is delivered changed
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
  // Byte numbers count from 1: the first byte of the payload (or, for read
  // errors and binary data, of the file) is byte 1.
  bool hasByte = false;  // `byte` holds a byte number
  uint64_t byte = 0;
};

}  // namespace PelorinCheck
