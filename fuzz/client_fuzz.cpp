// A bridge that answers a client's request with arbitrary bytes, then
// closes: whatever it sends, the client must return a value or a typed
// error, never crash, allocate without bound or hang past its time limit.
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "tessarine/client/ControlClient.h"

namespace {

using namespace tessarine::client;
using namespace std::chrono_literals;

constexpr std::size_t RECORD = 1960;

struct FakeBridge {
    FakeBridge() {
        std::string dir = (std::filesystem::temp_directory_path() / "tessarine-fuzz-XXXXXX").string();
        if (::mkdtemp(dir.data()) == nullptr) std::abort();
        path = dir + "/ipc.socket";
        listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        if (::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(listener, 4) != 0) {
            std::abort();
        }
    }

    // Takes one connection, reads the request, answers `data`, closes.
    void answerOnce(const std::uint8_t* data, std::size_t size) const {
        // A call made before the client noticed the last close fails without
        // reconnecting; then nobody comes, and the bridge must not wait forever.
        pollfd ready{listener, POLLIN, 0};
        if (::poll(&ready, 1, 1000) != 1) return;
        const int fd = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0) return;
        unsigned char request[RECORD];
        std::size_t got = 0;
        while (got < RECORD) {
            const ssize_t n = ::recv(fd, request + got, RECORD - got, 0);
            if (n <= 0) break;
            got += static_cast<std::size_t>(n);
        }
        std::size_t sent = 0;
        while (sent < size) {
            const ssize_t n = ::send(fd, data + sent, size - sent, MSG_NOSIGNAL);
            if (n <= 0) break;
            sent += static_cast<std::size_t>(n);
        }
        ::close(fd);
    }

    std::string path;
    int listener = -1;
};

// Short fuzz inputs would never make a whole 1960-byte record, so the input
// is read as segments: a tag byte, a length byte and that many bytes. An even
// tag makes a record (the bytes at its start, zeros after), an odd tag raw
// bytes such as trailing data.
std::string expand(const std::uint8_t* data, std::size_t size) {
    std::string stream;
    std::size_t at = 0;
    while (at + 2 <= size) {
        const std::uint8_t tag = data[at];
        const std::size_t length = std::min<std::size_t>(data[at + 1], size - at - 2);
        const char* bytes = reinterpret_cast<const char*>(data + at + 2);
        if (tag % 2 == 0) {
            std::string record(RECORD, '\0');
            record.replace(0, length, bytes, length);
            stream += record;
        } else {
            stream.append(bytes, length);
        }
        at += 2 + length;
    }
    return stream;
}

// Asks one of the requests whose answers have the most structure.
void ask(ControlClient& client, std::uint8_t which) {
    const Timeout limit = 500ms;
    switch (which % 8) {
        case 0: (void)client.programEvents(limit); break;
        case 1: (void)client.programEvent(limit); break;
        case 2: (void)client.networkDescriptors(limit); break;
        case 3: (void)client.services(limit); break;
        case 4: (void)client.videoLanguages(limit); break;
        case 5: (void)client.systemProperties(limit); break;
        case 6: (void)client.tunerIds(1, 2, limit); break;
        default: (void)client.mediaBounds(3, limit); break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static FakeBridge bridge;
    if (size == 0) return 0;
    // One client for the whole run: each input's call connects anew, as an
    // application's next call after a closed connection would.
    static ControlClient& client = *[] {
        ClientOptions options;
        options.socketPath = bridge.path;
        options.maxListItems = 256;  // keeps a run's memory small; the bounds are what is tested
        options.maxTrailingBytes = 4096;
        options.maxStringsPerList = 256;
        options.maxDsmccChunks = 16;
        auto* made = new ControlClient(options);
        made->onDsmccCommand([](const DsmccCommand&) {});
        made->onAppStateRequest([](std::int32_t state) { return static_cast<std::uint8_t>(state); });
        return made;
    }();
    const std::string answer = expand(data + 1, size - 1);
    std::thread server([&] {
        bridge.answerOnce(reinterpret_cast<const std::uint8_t*>(answer.data()), answer.size());
    });
    ask(client, data[0]);
    server.join();
    // The connection's reader thread goes with the input: a thread that
    // outlived it would make its allocations look leaked to the next check.
    client.disconnect();
    return 0;
}
