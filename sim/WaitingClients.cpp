#include "sim/WaitingClients.h"

#include <fstream>
#include <sstream>

namespace tessarine {
namespace sim {

namespace {
// /proc/net/unix: Num RefCount Protocol Flags Type St Inode Path.
constexpr int STATE_FIELD = 5;
constexpr int PATH_FIELD = 7;
// The state of a connection still in the listener's queue.
const char* const CONNECTING = "02";
}  // namespace

int WaitingClients::count(const std::string& socketPath) {
    std::ifstream table("/proc/net/unix");
    int waiting = 0;
    for (std::string line; std::getline(table, line);) {
        std::istringstream fields(line);
        std::string field[PATH_FIELD + 1];
        int read = 0;
        while (read <= PATH_FIELD && fields >> field[read]) ++read;
        if (read > PATH_FIELD && field[PATH_FIELD] == socketPath && field[STATE_FIELD] == CONNECTING) ++waiting;
    }
    return waiting;
}

}  // namespace sim
}  // namespace tessarine
