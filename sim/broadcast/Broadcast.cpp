#include "sim/broadcast/Broadcast.h"

#include <sstream>

namespace tessarine::broadcast {

std::string Broadcast::status() const {
    InputCounters c = input_.counters();
    std::ostringstream out;
    out << "ts " << reader_.source() << (reader_.ended() ? " (ended)" : "") << ": packets " << c.packets
        << ", loops " << c.loops << ", table updates " << c.tableUpdates << ", sections " << c.sectionsDelivered
        << " (dropped " << c.sectionsDropped << "), warnings " << c.warnings() << " (sync " << c.syncLosses
        << ", transport " << c.transportErrors << ", tables " << c.tableErrors << ", refused " << c.tablesRefused
        << ", read " << c.readErrors << ")";
    std::string last = input_.lastWarning();
    if (!last.empty()) out << ", last: " << last;
    return out.str();
}

}  // namespace tessarine::broadcast
