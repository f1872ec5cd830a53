// Feeds arbitrary records to the hub's dispatcher, with a listener that
// answers every query with non-trivial data, and a client that drains the
// answers: no record may crash the bridge, corrupt memory or stall it.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "support/ScriptedListener.h"
#include "tessarine/IpcServerManager.h"

namespace {

using namespace tessarine;

// Non-trivial answers for every query: long texts, lists, descriptors and
// program events with trailing data.
struct Answers : testing::ScriptedListener {
    Answers() {
        logging = false;
        number = 7;
        yes = true;
        text = std::string(300, 'l');
        bounds = {1, 1, 1, 1};
        openedHandle = 3;
        languages = {"deu", std::string(400, 'e')};
        properties.resize(2);
        ids = {0x0b00, 5};
        program_event full;
        full.value1 = 1;
        full.text0 = std::string(300, 't');
        full.bytes1 = {1, 2, 3};
        full.strings2 = {"", "abc"};
        events = {full, full};
        event = full;
        stream.value1 = net.value0 = 1;  // complete
        services = {service{1, 2, 3, 4, 5, "s"}};
        components.resize(1);
        pmts.resize(1);
        descriptor withData;
        withData.id = 0x48;
        withData.data.assign(20, 0x5a);
        descriptors = {withData, descriptor{}};
    }
};

struct Bridge {
    Bridge() {
        std::string dir = (std::filesystem::temp_directory_path() / "tessarine-fuzz-XXXXXX").string();
        if (::mkdtemp(dir.data()) == nullptr) std::abort();
        IpcServerManager::setSocketDirectory(dir);
        hub = IpcServerManager::getInstance();
        hub->addIpcServerListener(&answers);

        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, (dir + "/ipc.socket").c_str(), sizeof address.sun_path - 1);
        client = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (::connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) std::abort();
        // Drain every answer, so that sends never block on a full buffer.
        drain = std::thread([this] {
            char sink[65536];
            while (::recv(client, sink, sizeof sink, 0) > 0) {
            }
        });
        drain.detach();
        // Give the server time to accept, so that answers are really encoded and sent.
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }

    Answers answers;
    IpcServerManager* hub = nullptr;
    int client = -1;
    std::thread drain;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Bridge bridge;
    tessarine::message record;
    record.clear();
    std::memcpy(record.bytes(), data, std::min(size, tessarine::MESSAGE_SIZE));
    bridge.hub->update(record);
    return 0;
}
