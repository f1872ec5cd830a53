#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace tessarine {
namespace testing {

// What a shell command wrote on its standard output, and how it exited
// (-1 when it did not exit by itself).
struct CommandRun {
    int exitCode = -1;
    std::string out;
};

inline CommandRun runCommand(const std::string& command) {
    CommandRun run;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return run;
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) run.out.append(buffer, n);
    const int status = ::pclose(pipe);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

}  // namespace testing
}  // namespace tessarine
