#pragma once

#include <string>

namespace tessarine {
namespace sim {

struct SimOptions {
    std::string scenarioFile;  // empty: the built-in scenario
    std::string socketDirectory;  // empty: the fixed production paths
    std::string scriptFile;    // empty: the terminal, when standard input is one
    std::string ts;            // empty: the scenario's "ts", if any
    std::string tsPace = "pcr";
    bool quiet = false;
};

// The simulated receiver's life as a host: check the scenario, bring the
// bridge up through the adapter, serve until a signal or quit, tear down.
class SimHost {
public:
    // Exit codes: 0 after a clean stop, 2 for a bad command line, scenario,
    // script, stream source or socket directory (before any socket exists).
    static constexpr int EXIT_BAD_INPUT = 2;
    // A --script ran to its end or quit, but one of its commands failed.
    static constexpr int EXIT_SCRIPT_FAILED = 1;

    static int run(const SimOptions& options);
};

}  // namespace sim
}  // namespace tessarine
