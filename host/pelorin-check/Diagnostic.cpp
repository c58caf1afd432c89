#include "host/pelorin-check/Diagnostic.h"

namespace PelorinCheck {

const char* DiagnosticCode(DiagnosticKind kind) {
  switch (kind) {
    case DiagnosticKind::kReadError:
      return "read-error";
    case DiagnosticKind::kBinaryData:
      return "binary-data";
    case DiagnosticKind::kEmptyRecording:
      return "empty-recording";
    case DiagnosticKind::kByteOrderMark:
      return "byte-order-mark";
    case DiagnosticKind::kMalformedLine:
      return "malformed-line";
    case DiagnosticKind::kUnknownTag:
      return "unknown-tag";
    case DiagnosticKind::kPayloadRefused:
      return "payload-refused";
    case DiagnosticKind::kEmptyMethod:
      return "empty-method";
    case DiagnosticKind::kUnknownMethod:
      return "unknown-method";
    case DiagnosticKind::kArgumentCount:
      return "argument-count";
    case DiagnosticKind::kTimeNotConverted:
      return "time-not-converted";
    case DiagnosticKind::kTimeNotPositive:
      return "time-not-positive";
    case DiagnosticKind::kTimeBackwards:
      return "time-backwards";
    case DiagnosticKind::kTpegFileMissing:
      return "tpeg-file-missing";
    case DiagnosticKind::kPayloadCut:
      return "payload-cut";
    case DiagnosticKind::kTpegFileOutside:
      return "tpeg-file-outside";
    case DiagnosticKind::kValueNotNumber:
      return "value-not-number";
    case DiagnosticKind::kValueOutOfRange:
      return "value-out-of-range";
  }
  return "unknown";
}

const char* SeverityName(Severity severity) {
  return severity == Severity::kError ? "error" : "warning";
}

}  // namespace PelorinCheck
