#pragma once

#include "sim/Scenario.h"
#include "sim/broadcast/SiModel.h"

namespace tessarine {
namespace sim {

// The SI tables answered while a transport stream is read: what the stream
// carries so far, on top of `scenario`, whose values still answer the rest.
// A record the stream carries replaces the scenario's; keyed lists are
// replaced per key. Keys 0 and -1 stand for the current service (and the
// actual transport stream, and all PMTs), as the stream's model answers them.
SiTables withStream(const SiTables& scenario, const broadcast::SiModel& stream);

}  // namespace sim
}  // namespace tessarine
