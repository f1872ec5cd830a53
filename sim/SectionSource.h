#pragma once

#include <optional>
#include <vector>

namespace tessarine {
namespace sim {

// The section filter as the application last set it.
struct SectionFilter {
    std::optional<int> pid;
    std::optional<int> tableId;
};

// Where the simulated demultiplexer takes its sections from: the scenario's
// list, or a source that reads a broadcast. Called on the section-filter
// channel's thread.
class SectionSource {
public:
    virtual ~SectionSource() = default;
    // The next section that passes `filter`, or no bytes when there is none.
    virtual std::vector<unsigned char> next(const SectionFilter& filter) = 0;
};

}  // namespace sim
}  // namespace tessarine
