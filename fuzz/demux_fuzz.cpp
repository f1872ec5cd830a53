// Writes arbitrary bytes to the section-filter channel as a client would,
// then closes: whatever the command stream, the server must neither crash,
// nor allocate without bound, nor hang, and must accept the next client.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "tessarine/IpcDemuxServer.h"

namespace {

using namespace tessarine;
using Bytes = std::vector<unsigned char>;

// Answers reads with a section built from the last filter seen, so that
// filter arguments flow back out through the socket.
class Echo : public IpcDemuxServerListener {
public:
    void start() override {}
    void stop() override {}
    void set_pid(int) override {}
    void set_table_id(int) override {}
    void set_positive_filter(int, const Bytes& a, const Bytes&) override { last = a; }
    void set_greater_than_filter(int, const Bytes&, const Bytes& b) override { last = b; }
    void set_less_than_filter(int, const Bytes& a, const Bytes& b) override { last = a.size() > b.size() ? a : b; }
    void set_xor_filter(int, const Bytes&, const Bytes&, const Bytes& c) override { last = c; }
    void set_time_out(long) override {}
    void clear_table_id() override {}
    void clear_positive_filter() override { last.clear(); }
    void clear_less_than_filter() override {}
    void clear_xor_filter() override {}
    Bytes read_section() override { return last; }
    Bytes last;
};

struct Channel {
    Channel() {
        std::string dir = (std::filesystem::temp_directory_path() / "tessarine-fuzz-XXXXXX").string();
        if (::mkdtemp(dir.data()) == nullptr) std::abort();
        path = dir + "/ipcdemux.socket";
        server = new IpcDemuxServer(path);
        server->setListener(&echo);
        server->start();
    }
    Echo echo;
    IpcDemuxServer* server;  // lives for the whole run
    std::string path;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Channel channel;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, channel.path.c_str(), sizeof address.sun_path - 1);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) std::abort();
    std::size_t sent = 0;
    while (sent < size) {
        const ssize_t n = ::send(fd, data + sent, size - sent, MSG_NOSIGNAL);
        if (n <= 0) break;
        sent += static_cast<std::size_t>(n);
    }
    ::shutdown(fd, SHUT_WR);
    // Read until the server closes: it must finish this client to serve the next.
    char sink[65536];
    while (::recv(fd, sink, sizeof sink, 0) > 0) {
    }
    ::close(fd);
    return 0;
}
