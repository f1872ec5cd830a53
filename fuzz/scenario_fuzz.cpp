// Parses arbitrary bytes as a scenario file, as tessarine-sim reads one:
// whatever the document (deep nesting, huge numbers, odd UTF-8, wrong
// types anywhere), parsing must end with a scenario or a list of problems,
// never crash, recurse without bound or throw.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "sim/Scenario.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<tessarine::sim::ScenarioProblem> problems;
    tessarine::sim::Scenario::parse(std::string(reinterpret_cast<const char*>(data), size), problems);
    for (const auto& problem : problems) (void)problem.describe();  // every report can be written
    return 0;
}
