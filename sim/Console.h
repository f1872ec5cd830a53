#pragma once

#include <atomic>
#include <functional>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "sim/Simulator.h"

namespace tessarine {
namespace sim {

// The operator's commands: raise notices by hand, ask the client for an
// application state, look at the simulator. Reads a script or a terminal;
// a bad command gets a one-line error and reading goes on.
class Console {
public:
    // Sends the application-state request and returns the client's answer.
    using AppState = std::function<int(int)>;

    Console(Simulator& simulator, AppState appState, std::ostream& out)
        : simulator_(simulator), appState_(std::move(appState)), out_(out) {}

    // Runs one command line; false when it asks to quit.
    bool execute(const std::string& line);
    // Runs every line; true when one of them asked to quit.
    bool runScript(std::istream& in);
    // Reads commands from a terminal until quit, end of input or stop();
    // true unless stop() ended it.
    bool runTerminal(int fd);
    // Ends runScript and runTerminal soon, also while they wait.
    void stop() { stopping_ = true; }
    // Commands that failed: a bad command, or one that could not be carried out.
    int failures() const { return failures_; }

private:
    bool sleepFor(double seconds);
    void help();

    Simulator& simulator_;
    AppState appState_;
    std::ostream& out_;
    std::atomic<bool> stopping_{false};
    std::atomic<int> failures_{0};
};

}  // namespace sim
}  // namespace tessarine
