#include "sim/ScenarioSections.h"

namespace tessarine {
namespace sim {

std::vector<unsigned char> ScenarioSections::next(const SectionFilter& filter) {
    for (std::size_t step = 0; step < sections_.size(); ++step) {
        const Section& section = sections_[(cursor_ + step) % sections_.size()];
        if (filter.pid && *filter.pid != section.pid) continue;
        if (filter.tableId && *filter.tableId != section.data.front()) continue;
        cursor_ = (cursor_ + step + 1) % sections_.size();
        return section.data;
    }
    return {};
}

}  // namespace sim
}  // namespace tessarine
