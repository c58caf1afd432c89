#pragma once
// ServiceList: a complete TMC service list as a traffic-data listener
// receives it: the entries in payload order, shared with the producer.

#include <memory>
#include <vector>

#include "asi/navigation/trafficinfo/sTIServiceListEntry.h"

namespace Quillan {

using ServiceListEntries =
    std::vector<std::shared_ptr<asi::navigation::trafficinfo::sTIServiceListEntry>>;
using ServiceList = std::shared_ptr<ServiceListEntries>;

}  // namespace Quillan
