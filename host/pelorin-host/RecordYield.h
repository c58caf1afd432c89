#pragma once
// RecordYield: what the host can tell, from a record alone, about the one
// item the module makes of it: a TMC message, a service list or an online
// traffic call, or nothing (a tag that nothing handles, an unknown or
// malformed call). It tells "one" or "none" only where it is sure, and
// "maybe" for every key=value payload it does not read the simple way; the
// host then marks the record's end in the private events file. Stateless.

#include <string>

namespace PelorinHost {

enum class ItemKind { kNone, kTmc, kServiceList, kOnlineTraffic };

struct RecordYield {
  enum Count { kNone, kOne, kMaybe };

  ItemKind kind = ItemKind::kNone;  // what the record can yield, by its tag
  Count count = kNone;

  // `payload` as the module cuts it (up to a NUL byte).
  static RecordYield Of(const std::string& tag, const std::string& payload);

  // Arguments of an online traffic call payload ("method:arg1 "arg 2"").
  static size_t CallArguments(const std::string& payload, std::string* method);
};

}  // namespace PelorinHost
