#pragma once

#include <CLI/CLI.hpp>

#include "Context.h"

namespace cli {

// Runs the tool's sub-commands one line at a time over one connection, so
// that settings made by one command are still there for the next (the bridge
// resets video when its client leaves) and events are printed as they come.
// Lines come from the terminal through libedit (history, completion of
// sub-commands) or, when stdin is not a terminal, plainly from stdin.
class Shell {
public:
    Shell(CLI::App& app, Context& context) : app_(app), context_(context) {}

    // Returns the exit code of the last command.
    int run();

private:
    bool readLine(std::string& line);
    void execute(const std::string& line);

    CLI::App& app_;
    Context& context_;
    bool terminal_ = false;
};

}  // namespace cli
