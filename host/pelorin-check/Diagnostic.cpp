#include "host/pelorin-check/Diagnostic.h"

namespace PelorinCheck {

const char* DiagnosticCode(DiagnosticKind kind) {
  switch (kind) {
    case DiagnosticKind::kOpenFailed:
      return "open-failed";
    case DiagnosticKind::kReadError:
      return "read-error";
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
  }
  return "unknown";
}

const char* SeverityName(Severity severity) {
  return severity == Severity::kError ? "error" : "warning";
}

}  // namespace PelorinCheck
