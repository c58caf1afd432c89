#include "host/common/LineShape.h"

namespace PelorinTools {

std::string LineShape::MalformedReason() const {
  if (length == 0) return "empty line";
  if (firstBlank == kNoBlank) return "no blank after the time stamp";
  if (firstBlank == 0) return "empty time stamp (the line starts with a blank)";
  if (afterBlank == ' ') return "empty tag (two blanks after the time stamp)";
  return "empty tag (nothing after the time stamp)";
}

}  // namespace PelorinTools
