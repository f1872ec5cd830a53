#pragma once

#include <cstdio>
#include <cstring>
#include <list>
#include <mutex>
#include <string>
#include <vector>

#include "tessarine/IpcServerListener.h"
#include "tessarine/TextField.h"

namespace tessarine {
namespace testing {

// A request server for the real hub: answers from the public fields, and
// logs each command it receives as one line, so that a test can check both
// directions of every request.
class StubListener : public IpcServerListener {
public:
    // Answers (set before the client asks).
    int rate = -1, transportStreamId = -1, currentService = -1, versionFlag = 0;
    int openedHandle = -1, duration = -1, currentTime = -1, setTimeResult = -1, boundsResult = -1;
    bool playResult = false, protectedService = false;
    int bounds[4] = {-1, -1, -1, -1};
    int mediaBounds[4] = {-1, -1, -1, -1};
    std::string language, codingFormat, description, mountPoint, propertyValue;
    std::list<std::string> languages;
    std::list<system_property> properties;
    std::list<int> ids, caSystemIds;
    std::list<program_event> events;
    program_event event;
    std::list<service> services;
    std::list<service_component> components;
    std::list<descriptor> descriptors;
    std::list<pmt> pmts;
    transport_stream transportStream;
    network net;

    StubListener() {
        event.value1 = -1;
        transportStream.value1 = -1;
        net.value0 = -1;
    }

    std::vector<std::string> log() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return log_;
    }

    void setVideoProperty(video_data& d) override {
        std::string line = "video " + std::to_string(d.code);
        if (d.code == VIDEO_SET_BOUNDS) line += " " + rect(d.bounds.x, d.bounds.y, d.bounds.width, d.bounds.height);
        if (d.code == VIDEO_SET_TEXT_6) line += " " + readTextField(d.text);
        if (d.code == VIDEO_SET_FLAG_7 || d.code == VIDEO_SET_FLAG_8) line += d.flag ? " on" : " off";
        note(line);
    }
    int getVideoProperty(command code) override { return rate == -1 ? -1 : rate + code; }
    void getMainVideoBounds(int& x, int& y, int& w, int& h) override {
        x = bounds[0], y = bounds[1], w = bounds[2], h = bounds[3];
    }
    void updateGraphicsRegion(video_region r) override { note("region " + rect(r.x, r.y, r.width, r.height)); }
    std::string getVideoLanguage(command code) override { return language.empty() ? "" : language + std::to_string(code); }
    std::list<std::string> getVideoLanguages() override { return languages; }
    std::string getSystemProperty(std::string name) override { return propertyValue.empty() ? "" : name + "=" + propertyValue; }
    std::list<system_property> getSystemProperties() override { return properties; }
    void setSystemProperty(system_property& p) override { note("set " + readTextField(p.name) + "=" + readTextField(p.value)); }
    void removeSystemProperty(std::string name) override { note("remove " + name); }
    void setVideoAudio(audio_data d) override {
        note("audio " + std::to_string(d.code) + " " + (d.code == AUDIO_MUTE ? std::string(d.mute ? "on" : "off") : hexOf(d.level)));
    }
    int getCurrentTransportStreamID() override { return transportStreamId; }
    std::list<int> getAllIDs(tuner_data& d) override {
        note("ids " + std::to_string(d.code) + " " + std::to_string(d.parameter));
        return ids;
    }
    std::string getChannelName(int, int) override { return ""; }
    int getVirtualChannelNumber(int, int) override { return -1; }
    std::string mountCarousel(std::string name) override { return mountPoint.empty() ? "" : mountPoint + name; }
    void umountCarousel(std::string name) override { note("umount " + name); }
    void addCarouselListener() override { note("carousel listener on"); }
    void removeCarouselListener() override { note("carousel listener off"); }
    std::string getSICodingFormat() override { return codingFormat; }
    std::list<program_event> getProgramEvents() override { return events; }
    program_event getProgramEvent() override { return event; }
    std::list<service> getServices() override { return services; }
    int getCurrentService() override { return currentService; }
    std::list<int> getCASystemIds() override { return caSystemIds; }
    bool isProtectedService() override { return protectedService; }
    std::string getServiceDescription() override { return description; }
    std::list<service_component> getServiceComponents(int id) override {
        note("components " + std::to_string(id));
        return components;
    }
    transport_stream getTransportStream() override { return transportStream; }
    network getNetwork() override { return net; }
    std::list<descriptor> getNetworkDescriptors() override { return tagged(0); }
    std::list<descriptor> getTransportStreamDescriptors(int id) override { return tagged(id); }
    std::list<descriptor> getServiceDescriptors(int id) override { return tagged(id); }
    std::list<descriptor> getProgramEventDescriptors(int a, int b) override { return tagged(a * 100 + b); }
    std::list<descriptor> getServiceComponentDescriptors(int id) override { return tagged(id); }
    std::list<pmt> getPMTs(int id) override {
        note("pmts " + std::to_string(id));
        return pmts;
    }
    bool open(std::string locator, int& handle) override {
        note("open " + locator);
        if (openedHandle != -1) handle = openedHandle;
        return openedHandle != -1;
    }
    int getDuration(int) override { return duration; }
    int getCurrentTime(int) override { return currentTime; }
    int setCurrentTime(int h, int a, int b) override {
        note("seek " + std::to_string(h) + " " + std::to_string(a) + " " + std::to_string(b));
        return setTimeResult;
    }
    void addMediaListener(int h) override { note("media listener " + std::to_string(h)); }
    bool play(int) override { return playResult; }
    void stop(int h) override { note("stop " + std::to_string(h)); }
    void close(int h) override { note("close " + std::to_string(h)); }
    int setMediaBounds(int h, int x, int y, int w, int hh) override {
        note("media bounds " + std::to_string(h) + " " + rect(x, y, w, hh));
        return boundsResult;
    }
    void getMediaBounds(int, int& x, int& y, int& w, int& h) override {
        x = mediaBounds[0], y = mediaBounds[1], w = mediaBounds[2], h = mediaBounds[3];
    }
    void setMediaFreeze(int h, bool f) override { note("freeze " + std::to_string(h) + (f ? " on" : " off")); }
    void setMediaBalanceLevel(int h, double l) override { level("balance", h, l); }
    void setMediaSoundLevel(int h, double l) override { level("sound", h, l); }
    void setMediaMute(int h, bool m) override { note("mute " + std::to_string(h) + (m ? " on" : " off")); }
    void setMediaBassLevel(int h, double l) override { level("bass", h, l); }
    void setMediaTrebleLevel(int h, double l) override { level("treble", h, l); }
    int checkVersionFlag(int flag) override { return versionFlag == 0 ? 0 : versionFlag + flag; }

    // The exact bit pattern of a double, so a test sees any change.
    static std::string hexOf(double value) {
        unsigned long long bits;
        std::memcpy(&bits, &value, sizeof bits);
        char text[20];
        std::snprintf(text, sizeof text, "%016llx", bits);
        return text;
    }

private:
    static std::string rect(int x, int y, int w, int h) {
        return std::to_string(x) + "," + std::to_string(y) + "," + std::to_string(w) + "," + std::to_string(h);
    }
    void note(std::string line) {
        std::lock_guard<std::mutex> lock(mutex_);
        log_.push_back(std::move(line));
    }
    void level(const char* what, int handle, double value) {
        note(std::string(what) + " " + std::to_string(handle) + " " + hexOf(value));
    }
    // The stub's descriptors, the first one's id replaced by `key`, so a
    // test sees which arguments reached the query.
    std::list<descriptor> tagged(int key) {
        auto list = descriptors;
        if (!list.empty()) list.front().id = static_cast<std::uint16_t>(key);
        return list;
    }

    mutable std::mutex mutex_;
    std::vector<std::string> log_;
};

}  // namespace testing
}  // namespace tessarine
