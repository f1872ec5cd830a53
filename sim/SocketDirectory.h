#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tessarine {
namespace sim {

// The bridge's two socket files in the simulator's socket directory. The
// bridge itself replaces whatever is at its paths; the simulator looks
// first, so that it never takes over another server's sockets nor deletes
// a file that is not a socket, and confirms afterwards that the bridge
// could bind them.
class SocketDirectory {
public:
    explicit SocketDirectory(const std::string& directory);

    // Before the bridge starts: every path must be absent, or a socket that
    // no process serves any longer (a stale one, removed here). Otherwise
    // false, with one line per problem in `problems`.
    bool prepare(std::vector<std::string>& problems);
    // After the bridge started: true when both paths are sockets, which
    // only its binds made; they are remembered for release().
    bool claim(std::vector<std::string>& problems);
    // Removes the remembered files that are still the same ones.
    void release();

private:
    struct File {
        std::string path;
        dev_t device = 0;
        ino_t inode = 0;
    };
    std::string directory_;
    std::vector<File> files_;
};

}  // namespace sim
}  // namespace tessarine
