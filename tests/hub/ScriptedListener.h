#pragma once

#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <string>

#include "support/ControlTestClient.h"
#include "support/EventLog.h"
#include "support/TempDir.h"
#include "tessarine/IpcServerListener.h"
#include "tessarine/IpcServerManager.h"

namespace tessarine {
namespace testing {

// A request listener whose answers a test sets beforehand and whose calls it
// reads from a log ("name arg..."). Defaults are "no answer" for every rule.
class ScriptedListener : public IpcServerListener {
public:
    static constexpr int KEEP = -2;  // bounds values the listener leaves alone

    ScriptedListener() { event.value1 = stream.value1 = net.value0 = -1; }

    int number = -1;                 // every integer query
    bool yes = false;                // every yes/no query
    std::string text;                // every text query
    video_region bounds{KEEP, KEEP, KEEP, KEEP};
    int openedHandle = KEEP;
    std::list<std::string> languages;
    std::list<system_property> properties;
    std::list<int> ids;
    std::list<program_event> events;
    program_event event;
    transport_stream stream;
    network net;
    std::list<service> services;
    std::list<service_component> components;
    std::list<descriptor> descriptors;
    std::list<pmt> pmts;

    // Arguments of the last calls that carry structures, written before the log entry.
    video_data videoData{};
    audio_data audio{};
    system_property property{};
    video_region region{};
    double level = 0;
    EventLog<std::string> calls;

    void setVideoProperty(video_data& d) override { videoData = d; log("setVideoProperty", d.code); }
    int getVideoProperty(command c) override { return log("getVideoProperty", c), number; }
    void getMainVideoBounds(int& x, int& y, int& w, int& h) override { write(x, y, w, h), log("getMainVideoBounds"); }
    void updateGraphicsRegion(video_region r) override { region = r, log("updateGraphicsRegion"); }
    std::string getVideoLanguage(command c) override { return log("getVideoLanguage", c), text; }
    std::list<std::string> getVideoLanguages() override { return log("getVideoLanguages"), languages; }
    std::string getSystemProperty(std::string n) override { return log("getSystemProperty " + n), text; }
    std::list<system_property> getSystemProperties() override { return log("getSystemProperties"), properties; }
    void setSystemProperty(system_property& p) override { property = p, log("setSystemProperty"); }
    void removeSystemProperty(std::string n) override { log("removeSystemProperty " + n); }
    void setVideoAudio(audio_data a) override { audio = a, log("setVideoAudio", a.code); }
    int getCurrentTransportStreamID() override { return log("getCurrentTransportStreamID"), number; }
    std::list<int> getAllIDs(tuner_data& d) override { return log("getAllIDs", d.code, d.parameter), ids; }
    std::string getChannelName(int a, int b) override { return log("getChannelName", a, b), text; }
    int getVirtualChannelNumber(int a, int b) override { return log("getVirtualChannelNumber", a, b), number; }
    std::string mountCarousel(std::string n) override { return log("mountCarousel " + n), text; }
    void umountCarousel(std::string n) override { log("umountCarousel " + n); }
    void addCarouselListener() override { log("addCarouselListener"); }
    void removeCarouselListener() override { log("removeCarouselListener"); }
    std::string getSICodingFormat() override { return log("getSICodingFormat"), text; }
    std::list<program_event> getProgramEvents() override { return log("getProgramEvents"), events; }
    program_event getProgramEvent() override { return log("getProgramEvent"), event; }
    std::list<service> getServices() override { return log("getServices"), services; }
    int getCurrentService() override { return log("getCurrentService"), number; }
    std::list<int> getCASystemIds() override { return log("getCASystemIds"), ids; }
    bool isProtectedService() override { return log("isProtectedService"), yes; }
    std::string getServiceDescription() override { return log("getServiceDescription"), text; }
    std::list<service_component> getServiceComponents(int i) override { return log("getServiceComponents", i), components; }
    transport_stream getTransportStream() override { return log("getTransportStream"), stream; }
    network getNetwork() override { return log("getNetwork"), net; }
    std::list<descriptor> getNetworkDescriptors() override { return log("getNetworkDescriptors"), descriptors; }
    std::list<descriptor> getTransportStreamDescriptors(int i) override { return log("getTransportStreamDescriptors", i), descriptors; }
    std::list<descriptor> getServiceDescriptors(int i) override { return log("getServiceDescriptors", i), descriptors; }
    std::list<descriptor> getProgramEventDescriptors(int a, int b) override { return log("getProgramEventDescriptors", a, b), descriptors; }
    std::list<descriptor> getServiceComponentDescriptors(int i) override { return log("getServiceComponentDescriptors", i), descriptors; }
    std::list<pmt> getPMTs(int i) override { return log("getPMTs", i), pmts; }
    bool open(std::string l, int& h) override { if (openedHandle != KEEP) h = openedHandle; return log("open " + l), yes; }
    int getDuration(int h) override { return log("getDuration", h), number; }
    int getCurrentTime(int h) override { return log("getCurrentTime", h), number; }
    int setCurrentTime(int h, int a, int b) override { return log("setCurrentTime", h, a, b), number; }
    void addMediaListener(int h) override { log("addMediaListener", h); }
    bool play(int h) override { return log("play", h), yes; }
    void stop(int h) override { log("stop", h); }
    void close(int h) override { log("close", h); }
    int setMediaBounds(int h, int x, int y, int w, int ht) override { return log("setMediaBounds", h, x, y, w, ht), number; }
    void getMediaBounds(int h, int& x, int& y, int& w, int& ht) override { write(x, y, w, ht), log("getMediaBounds", h); }
    void setMediaFreeze(int h, bool f) override { log("setMediaFreeze", h, f); }
    void setMediaBalanceLevel(int h, double l) override { level = l, log("setMediaBalanceLevel", h); }
    void setMediaSoundLevel(int h, double l) override { level = l, log("setMediaSoundLevel", h); }
    void setMediaMute(int h, bool m) override { log("setMediaMute", h, m); }
    void setMediaBassLevel(int h, double l) override { level = l, log("setMediaBassLevel", h); }
    void setMediaTrebleLevel(int h, double l) override { level = l, log("setMediaTrebleLevel", h); }
    int checkVersionFlag(int f) override { return log("checkVersionFlag", f), number; }

private:
    template <typename... Args>
    void log(std::string entry, Args... args) {
        ((entry += " " + std::to_string(static_cast<long long>(args))), ...);
        calls.push(entry);
    }
    void write(int& x, int& y, int& w, int& h) const {
        for (auto [out, value] : {std::pair<int*, int>{&x, bounds.x}, {&y, bounds.y}, {&w, bounds.width}, {&h, bounds.height}})
            if (value != KEEP) *out = value;
    }
};

// A hub on sockets in a private directory, destroyed after each test.
class HubTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(IpcServerManager::setSocketDirectory(dir.path()));
        hub = IpcServerManager::getInstance();
    }
    void TearDown() override { IpcServerManager::destroy(); }

    std::unique_ptr<ControlTestClient> connect() {
        return std::make_unique<ControlTestClient>(dir.file("ipc.socket"));
    }
    // Sends a request and returns the answer; a test fails rather than hangs.
    message ask(ControlTestClient& client, const message& request) {
        EXPECT_TRUE(client.send(request));
        auto answer = client.receive();
        EXPECT_TRUE(answer.has_value());
        return answer.value_or(makeRecord(-1, -1));
    }
    // The header and items of a list answer.
    std::vector<message> askList(ControlTestClient& client, const message& request) {
        const message header = ask(client, request);
        EXPECT_EQ(header.type, MSG_LIST_HEADER);
        std::vector<message> items;
        for (int i = 0; i < header.code; ++i) items.push_back(client.receive().value_or(makeRecord(-1, -1)));
        return items;
    }

    TempDir dir;
    IpcServerManager* hub = nullptr;
    ScriptedListener pair[2];  // pair[0] has the lower address, so it is asked first
    ScriptedListener& lower = pair[0];
    ScriptedListener& upper = pair[1];
};

}  // namespace testing
}  // namespace tessarine
