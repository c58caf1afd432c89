#pragma once
// ConfiguredEvents: which events file the module will open, read from the
// storage root's quillan/Pelorin.cfg as the module reads its "eventsFile"
// key (key=value lines, keys in any letter case, blanks around both
// removed, "#" and "//" lines are comments, the later line wins; the
// default "/fs/sda0/quillan/events"). The path is the module's own, before
// the storage mapping. Stateless; main thread.

#include <string>

namespace PelorinHost {

class ConfiguredEvents {
 public:
  static std::string PathIn(const std::string& storageRoot);
  // The value of "eventsFile" in the text of a configuration file; empty
  // when there is none.
  static std::string FromText(const std::string& text);
};

}  // namespace PelorinHost
