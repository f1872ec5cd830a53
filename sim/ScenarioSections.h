#pragma once

#include <cstddef>
#include <vector>

#include "sim/Scenario.h"
#include "sim/SectionSource.h"

namespace tessarine {
namespace sim {

// The scenario's sections, handed out in a round: each read returns the
// next matching section after the one returned last, as a repeating
// carousel of tables would.
class ScenarioSections final : public SectionSource {
public:
    explicit ScenarioSections(std::vector<Section> sections) : sections_(std::move(sections)) {}

    std::vector<unsigned char> next(const SectionFilter& filter) override;

private:
    const std::vector<Section> sections_;
    std::size_t cursor_ = 0;
};

}  // namespace sim
}  // namespace tessarine
