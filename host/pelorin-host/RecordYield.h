#pragma once
// RecordYield: the one item the module makes of a record, told from the
// record alone: a TMC message, a service list or an online traffic call, or
// nothing (a tag that nothing handles, a payload that breaks the key=value
// grammar or names an unknown key, an unknown call or one with the wrong
// number of arguments). It reads payloads by the module's grammar, so that
// counting items tells which record each came from. Stateless.

#include <string>
#include <string_view>

namespace PelorinHost {

enum class ItemKind { kNone, kTmc, kServiceList, kOnlineTraffic };

struct RecordYield {
  ItemKind kind = ItemKind::kNone;  // by the tag
  bool yields = false;

  // `payload` as the module cuts it (up to a NUL byte).
  static RecordYield Of(std::string_view tag, std::string_view payload);

  // Arguments of an online traffic call payload ("method:arg1 "arg 2"").
  static size_t CallArguments(std::string_view payload, std::string_view* method);
};

}  // namespace PelorinHost
