#include "sim/SocketDirectory.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tessarine/protocol/Sockets.h"

namespace tessarine {
namespace sim {

namespace {

// The names the bridge gives its sockets in the directory.
constexpr const char* SOCKET_NAMES[] = {CONTROL_SOCKET_NAME, DEMUX_SOCKET_NAME};

enum class Peer { Live, Stale, Unknown };

// A connect tells a live server from a socket file left by a killed one. A
// non-blocking connect does not wait when the server's queue is full, which
// also means that it lives.
Peer probe(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return Peer::Unknown;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0) return Peer::Unknown;
    const int result = ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const int error = errno;
    ::close(fd);
    if (result == 0 || error == EAGAIN || error == EINPROGRESS) return Peer::Live;
    return error == ECONNREFUSED ? Peer::Stale : Peer::Unknown;
}

std::string systemError(const std::string& what) { return what + ": " + std::strerror(errno); }

}  // namespace

SocketDirectory::SocketDirectory(const std::string& directory) : directory_(directory) {}

bool SocketDirectory::prepare(std::vector<std::string>& problems) {
    const std::size_t before = problems.size();
    if (::access(directory_.c_str(), W_OK | X_OK) != 0)
        problems.push_back(systemError("socket directory " + directory_ + " is not usable"));
    for (const char* name : SOCKET_NAMES) {
        const std::string path = directory_ + "/" + name;
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0) {
            if (errno != ENOENT) problems.push_back(systemError("cannot examine " + path));
        } else if (!S_ISSOCK(status.st_mode)) {
            problems.push_back(path + " is not a socket; it is left as it is");
        } else if (const Peer peer = probe(path); peer == Peer::Live) {
            problems.push_back(path + " is served by a running process; stop it or choose another --socket-dir");
        } else if (peer == Peer::Unknown) {
            problems.push_back("cannot tell whether a process serves " + path);
        } else if (::unlink(path.c_str()) != 0) {
            problems.push_back(systemError("cannot remove the stale socket " + path));
        }
    }
    return problems.size() == before;
}

bool SocketDirectory::claim(std::vector<std::string>& problems) {
    const std::size_t before = problems.size();
    for (const char* name : SOCKET_NAMES) {
        const std::string path = directory_ + "/" + name;
        struct stat status {};
        if (::lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode))
            files_.push_back({path, status.st_dev, status.st_ino});
        else
            problems.push_back("the bridge could not bind " + path);
    }
    return problems.size() == before;
}

void SocketDirectory::release() {
    for (const File& file : files_) {
        struct stat status {};
        if (::lstat(file.path.c_str(), &status) == 0 && status.st_dev == file.device && status.st_ino == file.inode)
            ::unlink(file.path.c_str());
    }
    files_.clear();
}

}  // namespace sim
}  // namespace tessarine
