// A bridge with sample answers, for trying tessarine-cli by hand:
//   sample_bridge DIR     serves DIR/ipc.socket and DIR/ipcdemux.socket
// Every 2 s it sends an end-of-media event; it runs until killed.
#include <cstdio>
#include <thread>

#include "support/RecordingFilter.h"
#include "support/ScriptedListener.h"
#include "tessarine/IpcServerManager.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIR\n", argv[0]);
        return 2;
    }
    using namespace tessarine;
    IpcServerManager::setSocketDirectory(argv[1]);
    static testing::ScriptedListener stub;
    static testing::RecordingFilter section;
    section.section = {0x4e, 0xf0, 0x15, 0x00, 0x01, 0xc1, 0x00, 0x00, 0x00, 0x01, 0x00, 0x01,
                       0x01, 0x4e, 0x00, 0x01, 0x48, 0x65, 0x6c, 0x6c, 0x6f, 0x2e, 0x9a, 0x3b};
    stub.logging = false;  // it runs until killed
    stub.bounds = {0, 0, 1920, 1080};
    stub.languages = {"por", "eng", "spa"};
    stub.text = "pt-BR";  // every text query
    system_property p{};
    writeTextField(p.name, "system.language");
    writeTextField(p.value, "pt-BR");
    system_property q{};
    writeTextField(q.name, "system.screen");
    writeTextField(q.value, "1920x1080");
    stub.properties = {p, q};
    stub.openedHandle = 1;
    stub.yes = true;
    stub.number = 2;  // every integer query: current service, duration, version flag
    service s1;
    s1.value0 = 1, s1.value1 = 0x0441, s1.value2 = 1, s1.text0 = "TV Tessarine HD";
    service s2;
    s2.value0 = 2, s2.value1 = 0x0442, s2.value2 = 1, s2.text0 = "Tessarine News";
    stub.services = {s1, s2};
    program_event e;
    e.value0 = 1, e.value1 = 7, e.value2 = 1700000000, e.value3 = 3600;
    e.text0 = "Evening News", e.text1 = "Headlines of the day";
    e.bytes0 = {0x4e, 0x12};
    e.strings0 = {"por"};
    stub.events = {e};
    descriptor d;
    d.id = 0x48;
    d.data = {0x48, 0x11, 0x01, 0x05, 'T', 'e', 's', 's', 'a', 0x0a, 'T', 'V', ' ', 'T', 'e', 's', 's', 'a', 'r'};
    stub.descriptors = {d};

    auto* hub = IpcServerManager::getInstance();
    hub->addIpcServerListener(&stub);
    hub->addIpcDemuxServerListener(&section);
    for (int handle = 1;; ++handle) {
        std::this_thread::sleep_for(std::chrono::seconds(2));
        hub->endOfMedia(handle);
    }
}
