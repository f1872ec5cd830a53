#pragma once

#include <string>

namespace tessarine {
namespace sim {

// Clients queued on a listening Unix socket and not yet accepted. The bridge
// serves one application at a time and a second one waits unseen in the
// backlog; the kernel's socket table is the one place that shows it.
class WaitingClients {
public:
    // How many connections wait on `socketPath`; 0 when it cannot be told.
    static int count(const std::string& socketPath);
};

}  // namespace sim
}  // namespace tessarine
