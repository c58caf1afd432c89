#include "host/common/LineShape.h"

namespace PelorinTools {

std::string LineShape::MalformedReason() const {
  if (length == 0) return "empty line";
  if (firstBlank == kNoBlank) return "no blank after the time stamp";
  if (firstBlank == 0) return "empty time stamp (the line starts with a blank)";
  if (afterBlank == ' ') return "empty tag (two blanks after the time stamp)";
  return "empty tag (nothing after the time stamp)";
}

bool LineShape::IsBinaryByte(unsigned char byte) {
  return byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r' && byte != '\f' &&
         byte != 0x1b;
}

uint64_t LineShape::BinaryByte() const {
  for (size_t i = 0; i < head.size(); ++i) {
    if (IsBinaryByte(static_cast<unsigned char>(head[i]))) return start + i + 1;
  }
  return 0;
}

std::string LineShape::StopReason() const {
  const uint64_t binary = BinaryByte();
  if (binary != 0) return "binary data at byte " + std::to_string(binary);
  return MalformedReason();
}

}  // namespace PelorinTools
