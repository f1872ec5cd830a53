#pragma once

// No GoogleTest here: the dispatcher fuzzer uses this listener too.
#include <cstdio>
#include <cstring>
#include <list>
#include <string>
#include <type_traits>

#include "support/EventLog.h"
#include "tessarine/IpcServerListener.h"
#include "tessarine/TextField.h"

namespace tessarine {
namespace testing {

// A request listener whose answers a test sets beforehand and whose calls it
// reads from a log, one entry per call: "operation arg arg ..." (integers and
// bools in decimal, doubles as their bit pattern, so any change shows).
// Defaults are "no answer" for every fan-out rule.
class ScriptedListener : public IpcServerListener {
public:
    static constexpr int KEEP = -2;  // bounds values and handles the listener leaves alone

    ScriptedListener() { event.value1 = stream.value1 = net.value0 = -1; }

    int number = -1;                 // every integer query
    bool yes = false;                // every yes/no query
    std::string text;                // every text query
    video_region bounds{KEEP, KEEP, KEEP, KEEP};  // video and media bounds
    int openedHandle = KEEP;
    std::list<std::string> languages;
    std::list<system_property> properties;
    std::list<int> ids;              // tuner and CA system identifiers
    std::list<program_event> events;
    program_event event;
    transport_stream stream;
    network net;
    std::list<service> services;
    std::list<service_component> components;
    std::list<descriptor> descriptors;
    std::list<pmt> pmts;

    EventLog<std::string> calls;
    bool logging = true;             // a fuzzer turns it off: its log would grow without end

    static std::string hexOf(double value) {
        unsigned long long bits;
        std::memcpy(&bits, &value, sizeof bits);
        char digits[20];
        std::snprintf(digits, sizeof digits, "%016llx", bits);
        return digits;
    }

    void setVideoProperty(video_data& d) override {
        if (d.code == VIDEO_SET_BOUNDS) return log("setVideoProperty", d.code, d.bounds.x, d.bounds.y, d.bounds.width, d.bounds.height);
        if (d.code == VIDEO_SET_TEXT_6) return log("setVideoProperty", d.code, readTextField(d.text));
        if (d.code == VIDEO_SET_FLAG_7 || d.code == VIDEO_SET_FLAG_8) return log("setVideoProperty", d.code, byteOf(d.flag));
        log("setVideoProperty", d.code);
    }
    int getVideoProperty(command c) override { return log("getVideoProperty", c), number; }
    void getMainVideoBounds(int& x, int& y, int& w, int& h) override { write(x, y, w, h), log("getMainVideoBounds"); }
    void updateGraphicsRegion(video_region r) override { log("updateGraphicsRegion", r.x, r.y, r.width, r.height); }
    std::string getVideoLanguage(command c) override { return log("getVideoLanguage", c), text; }
    std::list<std::string> getVideoLanguages() override { return log("getVideoLanguages"), languages; }
    std::string getSystemProperty(std::string n) override { return log("getSystemProperty", n), text; }
    std::list<system_property> getSystemProperties() override { return log("getSystemProperties"), properties; }
    void setSystemProperty(system_property& p) override { log("setSystemProperty", readTextField(p.name), readTextField(p.value)); }
    void removeSystemProperty(std::string n) override { log("removeSystemProperty", n); }
    void setVideoAudio(audio_data a) override {
        a.code == AUDIO_MUTE ? log("setVideoAudio", a.code, byteOf(a.mute)) : log("setVideoAudio", a.code, a.level);
    }
    int getCurrentTransportStreamID() override { return log("getCurrentTransportStreamID"), number; }
    std::list<int> getAllIDs(tuner_data& d) override { return log("getAllIDs", d.code, d.parameter), ids; }
    std::string getChannelName(int a, int b) override { return log("getChannelName", a, b), text; }
    int getVirtualChannelNumber(int a, int b) override { return log("getVirtualChannelNumber", a, b), number; }
    std::string mountCarousel(std::string n) override { return log("mountCarousel", n), text; }
    void umountCarousel(std::string n) override { log("umountCarousel", n); }
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
    bool open(std::string l, int& h) override { if (openedHandle != KEEP) h = openedHandle; return log("open", l), yes; }
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
    void setMediaBalanceLevel(int h, double l) override { log("setMediaBalanceLevel", h, l); }
    void setMediaSoundLevel(int h, double l) override { log("setMediaSoundLevel", h, l); }
    void setMediaMute(int h, bool m) override { log("setMediaMute", h, m); }
    void setMediaBassLevel(int h, double l) override { log("setMediaBassLevel", h, l); }
    void setMediaTrebleLevel(int h, double l) override { log("setMediaTrebleLevel", h, l); }
    int checkVersionFlag(int f) override { return log("checkVersionFlag", f), number; }

private:
    // The byte as it came off the wire: reading a bool that holds 2 is undefined.
    static int byteOf(const bool& flag) {
        unsigned char byte;
        std::memcpy(&byte, &flag, 1);
        return byte;
    }
    template <typename T>
    static std::string field(const T& value) {
        if constexpr (std::is_floating_point_v<T>) return hexOf(value);
        else if constexpr (std::is_convertible_v<T, std::string>) return value;
        else return std::to_string(static_cast<long long>(value));
    }
    template <typename... Args>
    void log(std::string entry, const Args&... args) {
        if (!logging) return;
        ((entry += " " + field(args)), ...);
        calls.push(entry);
    }
    void write(int& x, int& y, int& w, int& h) const {
        for (auto [out, value] : {std::pair<int*, int>{&x, bounds.x}, {&y, bounds.y}, {&w, bounds.width}, {&h, bounds.height}})
            if (value != KEEP) *out = value;
    }
};

}  // namespace testing
}  // namespace tessarine
