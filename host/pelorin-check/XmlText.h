#pragma once
// XmlText: makes bytes from a recording (tags, method names, file names)
// safe as XML 1.0 character data and attribute values. Bytes are first
// escaped as for a terminal (control bytes and bytes outside well-formed
// UTF-8 become visible "\xNN"), then the XML specials become entities and
// the two characters XML forbids that UTF-8 allows (U+FFFE, U+FFFF) are
// written out as their bytes. The result is always well-formed. Stateless.

#include <string>

namespace PelorinCheck {

class XmlText {
 public:
  static void AppendEscaped(std::string& out, const std::string& bytes);
  static std::string Escaped(const std::string& bytes);
};

}  // namespace PelorinCheck
