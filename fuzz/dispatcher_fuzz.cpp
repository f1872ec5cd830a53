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
#include <list>
#include <string>
#include <thread>

#include "tessarine/IpcServerManager.h"

namespace {

using namespace tessarine;

class Answers : public IpcServerListener {
public:
    void setVideoProperty(video_data&) override {}
    int getVideoProperty(command code) override { return code; }
    void getMainVideoBounds(int& x, int& y, int& w, int& h) override { x = y = w = h = 1; }
    void updateGraphicsRegion(video_region) override {}
    std::string getVideoLanguage(command) override { return std::string(300, 'l'); }
    std::list<std::string> getVideoLanguages() override { return {"deu", std::string(400, 'e')}; }
    std::string getSystemProperty(std::string name) override { return name + name; }
    std::list<system_property> getSystemProperties() override { return {system_property{}, system_property{}}; }
    void setSystemProperty(system_property&) override {}
    void removeSystemProperty(std::string) override {}
    void setVideoAudio(audio_data) override {}
    int getCurrentTransportStreamID() override { return 7; }
    std::list<int> getAllIDs(tuner_data& data) override { return {data.code, data.parameter}; }
    std::string getChannelName(int, int) override { return "name"; }
    int getVirtualChannelNumber(int, int) override { return 3; }
    std::string mountCarousel(std::string name) override { return name; }
    void umountCarousel(std::string) override {}
    void addCarouselListener() override {}
    void removeCarouselListener() override {}
    std::string getSICodingFormat() override { return "dvb"; }
    std::list<program_event> getProgramEvents() override { return {event(), event()}; }
    program_event getProgramEvent() override { return event(); }
    std::list<service> getServices() override { return {service{1, 2, 3, 4, 5, "s"}}; }
    int getCurrentService() override { return 1; }
    std::list<int> getCASystemIds() override { return {0x0b00}; }
    bool isProtectedService() override { return true; }
    std::string getServiceDescription() override { return "description"; }
    std::list<service_component> getServiceComponents(int) override { return {service_component{}}; }
    transport_stream getTransportStream() override { return {}; }
    network getNetwork() override { return {}; }
    std::list<descriptor> getNetworkDescriptors() override { return descriptors(); }
    std::list<descriptor> getTransportStreamDescriptors(int) override { return descriptors(); }
    std::list<descriptor> getServiceDescriptors(int) override { return descriptors(); }
    std::list<descriptor> getProgramEventDescriptors(int, int) override { return descriptors(); }
    std::list<descriptor> getServiceComponentDescriptors(int) override { return descriptors(); }
    std::list<pmt> getPMTs(int) override { return {pmt{}}; }
    bool open(std::string locator, int& handle) override {
        handle = static_cast<int>(locator.size());
        return !locator.empty();
    }
    int getDuration(int handle) override { return handle; }
    int getCurrentTime(int) override { return 0; }
    int setCurrentTime(int, int a, int) override { return a; }
    void addMediaListener(int) override {}
    bool play(int) override { return true; }
    void stop(int) override {}
    void close(int) override {}
    int setMediaBounds(int, int x, int, int, int) override { return x; }
    void getMediaBounds(int, int& x, int&, int&, int&) override { x = 5; }
    void setMediaFreeze(int, bool) override {}
    void setMediaBalanceLevel(int, double) override {}
    void setMediaSoundLevel(int, double) override {}
    void setMediaMute(int, bool) override {}
    void setMediaBassLevel(int, double) override {}
    void setMediaTrebleLevel(int, double) override {}
    int checkVersionFlag(int flag) override { return flag; }

private:
    static program_event event() {
        program_event e;
        e.value1 = 1;
        e.text0 = std::string(300, 't');
        e.bytes1 = {1, 2, 3};
        e.strings2 = {"", "abc"};
        return e;
    }
    static std::list<descriptor> descriptors() {
        descriptor d;
        d.id = 0x48;
        d.data.assign(20, 0x5a);
        return {d, descriptor{}};
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
