#pragma once

#include <array>
#include <atomic>
#include <list>
#include <string>
#include <vector>

#include "middlewarefacade/CarouselFacade.h"
#include "middlewarefacade/DemuxFacade.h"
#include "middlewarefacade/DsmCCCommandFacade.h"
#include "middlewarefacade/PropertyFacade.h"
#include "middlewarefacade/SIFacade.h"
#include "middlewarefacade/TunerFacade.h"
#include "middlewarefacade/VersionFacade.h"
#include "middlewarefacade/VideoFacade.h"
#include "support/fakes/CallLog.h"

namespace tessarine {
namespace testing {

// Recording fakes of the host's facades. Each records every call with its
// arguments in `log` and answers from its public fields, which a test sets
// before the adapter is built. release() is recorded; the test owns the fake.
// The listeners the bridge registers are kept, so a test can raise notices.

class VideoFacadeFake final : public middlewarefacade::VideoFacade {
public:
    CallLog log;
    std::array<int, 4> mainBounds{{0, 0, 0, 0}};
    bool openResult = false;
    int openedHandle = 0;
    int duration = -1, currentTime = -1, setTimeResult = -1, mediaBoundsResult = -1;
    bool playResult = false;
    std::array<int, 4> mediaBounds{{0, 0, 0, 0}};
    std::string language3, language5;
    std::list<std::string> languages;
    std::array<int, 8> rates{{-1, -1, -1, -1, -1, -1, -1, -1}};  // answers of getRate9 to getRate16
    ipcutil::Rectangle_t initCrop[2] = {};
    std::atomic<middlewarefacade::GraphicsSettingsListener*> graphicsListener{nullptr};
    std::atomic<middlewarefacade::MediaListener*> mediaListener{nullptr};

    void setMainVideoBounds(int x, int y, int width, int height) override {
        log.record("setMainVideoBounds", x, y, width, height);
    }
    void getMainVideoBounds(int& x, int& y, int& width, int& height) override {
        log.record("getMainVideoBounds");
        x = mainBounds[0], y = mainBounds[1], width = mainBounds[2], height = mainBounds[3];
    }
    bool open(std::string locator, int& handle) override {
        log.record("open", locator, handle);
        handle = openedHandle;
        return openResult;
    }
    int getDuration(int handle) override { return log.record("getDuration", handle), duration; }
    int getCurrentTime(int handle) override { return log.record("getCurrentTime", handle), currentTime; }
    int setCurrentTime(int handle, int first, int second) override {
        return log.record("setCurrentTime", handle, first, second), setTimeResult;
    }
    void addMediaListener(int handle, middlewarefacade::MediaListener* listener) override {
        log.record("addMediaListener", handle, static_cast<const void*>(listener));
        mediaListener.store(listener);
    }
    bool play(int handle) override { return log.record("play", handle), playResult; }
    void stop(int handle) override { log.record("stop", handle); }
    void close(int handle) override { log.record("close", handle); }
    int setMediaBounds(int handle, int x, int y, int width, int height) override {
        return log.record("setMediaBounds", handle, x, y, width, height), mediaBoundsResult;
    }
    void getMediaBounds(int handle, int& x, int& y, int& width, int& height) override {
        log.record("getMediaBounds", handle);
        x = mediaBounds[0], y = mediaBounds[1], width = mediaBounds[2], height = mediaBounds[3];
    }
    std::string getLanguage3() override { return log.record("getLanguage3"), language3; }
    std::list<std::string> getLanguages() override { return log.record("getLanguages"), languages; }
    std::string getLanguage5() override { return log.record("getLanguage5"), language5; }
    void setText6(std::string text) override { log.record("setText6", text); }
    void setFlag7(bool flag) override { log.record("setFlag7", flag); }
    void setMediaFreeze(int handle, bool freeze) override { log.record("setMediaFreeze", handle, freeze); }
    void setFlag8(bool flag) override { log.record("setFlag8", flag); }
    int getRate9() override { return rate(9); }
    int getRate10() override { return rate(10); }
    int getRate11() override { return rate(11); }
    int getRate12() override { return rate(12); }
    int getRate13() override { return rate(13); }
    int getRate14() override { return rate(14); }
    int getRate15() override { return rate(15); }
    int getRate16() override { return rate(16); }
    void reset() override { log.record("reset"); }
    void setBalanceLevel(double level) override { log.record("setBalanceLevel", level); }
    void setMediaBalanceLevel(int handle, double level) override {
        log.record("setMediaBalanceLevel", handle, level);
    }
    void setSoundLevel(double level) override { log.record("setSoundLevel", level); }
    void setMediaSoundLevel(int handle, double level) override { log.record("setMediaSoundLevel", handle, level); }
    void setMute(bool mute) override { log.record("setMute", mute); }
    void setMediaMute(int handle, bool mute) override { log.record("setMediaMute", handle, mute); }
    void setBassLevel(double level) override { log.record("setBassLevel", level); }
    void setMediaBassLevel(int handle, double level) override { log.record("setMediaBassLevel", handle, level); }
    void setTrebleLevel(double level) override { log.record("setTrebleLevel", level); }
    void setMediaTrebleLevel(int handle, double level) override {
        log.record("setMediaTrebleLevel", handle, level);
    }
    void addGraphicsSettingsListener(middlewarefacade::GraphicsSettingsListener* listener) override {
        log.record("addGraphicsSettingsListener", static_cast<const void*>(listener));
        graphicsListener.store(listener);
    }
    void removeGraphicsSettingsListener(middlewarefacade::GraphicsSettingsListener* listener) override {
        log.record("removeGraphicsSettingsListener", static_cast<const void*>(listener));
        graphicsListener.store(nullptr);
    }
    void getInitCropValue(ipcutil::Rectangle_t* first, ipcutil::Rectangle_t* second) override {
        log.record("getInitCropValue");
        *first = initCrop[0];
        *second = initCrop[1];
    }
    void updateGraphicsRegion(int x, int y, int width, int height) override {
        log.record("updateGraphicsRegion", x, y, width, height);
    }
    void reserved42() override { log.record("reserved42"); }
    void release() override { log.record("release"); }

private:
    int rate(int command) {
        log.record(("getRate" + std::to_string(command)).c_str());
        return rates[static_cast<std::size_t>(command - 9)];
    }
};

class PropertyFacadeFake final : public middlewarefacade::PropertyFacade {
public:
    CallLog log;
    std::string value;
    std::list<middlewarefacade::Property_> properties;

    void setProperty(std::string name, std::string newValue) override {
        log.record("setProperty", name, newValue);
    }
    std::string getProperty(std::string name) override { return log.record("getProperty", name), value; }
    std::list<middlewarefacade::Property_> getProperties() override { return log.record("getProperties"), properties; }
    void removeProperty(std::string name) override { log.record("removeProperty", name); }
    void reserved4() override { log.record("reserved4"); }
    void release() override { log.record("release"); }
};

class SIFacadeFake final : public middlewarefacade::SIFacade {
public:
    CallLog log;
    middlewarefacade::Network_ network{};
    middlewarefacade::TransportStream_ transportStream{};
    std::list<middlewarefacade::Service_> services;
    int currentService = -1;
    std::list<middlewarefacade::ProgramEvent_> programEvents;
    middlewarefacade::ProgramEvent_ programEvent{};
    std::list<middlewarefacade::ServiceComponent_> serviceComponents;
    std::list<middlewarefacade::PMT_> pmts;
    std::string codingFormat, description;
    std::list<int> caSystemIds;
    bool protectedService = false;
    std::list<middlewarefacade::Descriptors_> descriptors;  // the answer of every descriptor query

    middlewarefacade::Network_ getNetwork() override { return log.record("getNetwork"), network; }
    std::list<middlewarefacade::Descriptors_> getNetworkDescriptors() override {
        return log.record("getNetworkDescriptors"), descriptors;
    }
    middlewarefacade::TransportStream_ getTransportStream() override {
        return log.record("getTransportStream"), transportStream;
    }
    std::list<middlewarefacade::Descriptors_> getTransportStreamDescriptors(int id) override {
        return log.record("getTransportStreamDescriptors", id), descriptors;
    }
    std::list<middlewarefacade::Service_> getServices() override { return log.record("getServices"), services; }
    int getCurrentService() override { return log.record("getCurrentService"), currentService; }
    std::list<middlewarefacade::Descriptors_> getServiceDescriptors(int id) override {
        return log.record("getServiceDescriptors", id), descriptors;
    }
    std::list<middlewarefacade::ProgramEvent_> getProgramEvents() override {
        return log.record("getProgramEvents"), programEvents;
    }
    middlewarefacade::ProgramEvent_ getProgramEvent() override { return log.record("getProgramEvent"), programEvent; }
    std::list<middlewarefacade::Descriptors_> getProgramEventDescriptors(int first, int second) override {
        return log.record("getProgramEventDescriptors", first, second), descriptors;
    }
    std::list<middlewarefacade::ServiceComponent_> getServiceComponents(int id) override {
        return log.record("getServiceComponents", id), serviceComponents;
    }
    std::list<middlewarefacade::Descriptors_> getServiceComponentDescriptors(int id) override {
        return log.record("getServiceComponentDescriptors", id), descriptors;
    }
    std::list<middlewarefacade::PMT_> getPMTs(int id) override { return log.record("getPMTs", id), pmts; }
    std::string getSICodingFormat() override { return log.record("getSICodingFormat"), codingFormat; }
    std::list<int> getCASystemIds() override { return log.record("getCASystemIds"), caSystemIds; }
    bool isProtectedService() override { return log.record("isProtectedService"), protectedService; }
    std::string getServiceDescription() override { return log.record("getServiceDescription"), description; }
    void reserved17() override { log.record("reserved17"); }
    void release() override { log.record("release"); }
};

class CarouselFacadeFake final : public middlewarefacade::CarouselFacade {
public:
    CallLog log;
    std::string mountAnswer;
    std::atomic<middlewarefacade::CarouselListener*> listener{nullptr};

    std::string mount(std::string name) override { return log.record("mount", name), mountAnswer; }
    void umount(std::string name) override { log.record("umount", name); }
    void addCarouselListener(middlewarefacade::CarouselListener* added) override {
        log.record("addCarouselListener", static_cast<const void*>(added));
        listener.store(added);
    }
    void removeCarouselListener(middlewarefacade::CarouselListener* removed) override {
        log.record("removeCarouselListener", static_cast<const void*>(removed));
        listener.store(nullptr);
    }
    void reserved4() override { log.record("reserved4"); }
    void release() override { log.record("release"); }
};

class DemuxFacadeFake final : public middlewarefacade::DemuxFacade {
public:
    using Bytes = std::vector<unsigned char>;
    CallLog log;
    std::vector<unsigned char> section;

    void start() override { log.record("start"); }
    void stop() override { log.record("stop"); }
    void set_pid(int pid) override { log.record("set_pid", pid); }
    void set_table_id(int tableId) override { log.record("set_table_id", tableId); }
    void set_positive_filter(int value, const Bytes& first, const Bytes& second) override {
        log.record("set_positive_filter", value, first, second);
    }
    void set_greater_than_filter(int value, const Bytes& first, const Bytes& second) override {
        log.record("set_greater_than_filter", value, first, second);
    }
    void set_less_than_filter(int value, const Bytes& first, const Bytes& second) override {
        log.record("set_less_than_filter", value, first, second);
    }
    void set_xor_filter(int value, const Bytes& first, const Bytes& second, const Bytes& third) override {
        log.record("set_xor_filter", value, first, second, third);
    }
    void set_time_out(long timeout) override { log.record("set_time_out", timeout); }
    void clear_table_id() override { log.record("clear_table_id"); }
    void clear_positive_filter() override { log.record("clear_positive_filter"); }
    void clear_less_than_filter() override { log.record("clear_less_than_filter"); }
    void clear_xor_filter() override { log.record("clear_xor_filter"); }
    std::vector<unsigned char> read_section() override { return log.record("read_section"), section; }
    void reserved14() override { log.record("reserved14"); }
    void release() override { log.record("release"); }
};

class TunerFacadeFake final : public middlewarefacade::TunerFacade {
public:
    CallLog log;
    int transportStreamId = -1;
    std::list<int> ids;  // the answer of every identifier list query
    std::string channelName;
    int channelNumber = -1;

    int getCurrentTransportStreamID() override {
        return log.record("getCurrentTransportStreamID"), transportStreamId;
    }
    std::list<int> getIds2() override { return log.record("getIds2"), ids; }
    std::list<int> getIds1(int parameter) override { return log.record("getIds1", parameter), ids; }
    std::string getChannelName(int first, int second) override {
        return log.record("getChannelName", first, second), channelName;
    }
    int getVirtualChannelNumber(int first, int second) override {
        return log.record("getVirtualChannelNumber", first, second), channelNumber;
    }
    std::list<int> getIds3(int parameter) override { return log.record("getIds3", parameter), ids; }
    std::list<int> getIds4(int parameter) override { return log.record("getIds4", parameter), ids; }
    void reserved7() override { log.record("reserved7"); }
    void release() override { log.record("release"); }
};

class DsmCCCommandFacadeFake final : public middlewarefacade::DsmCCCommandFacade {
public:
    CallLog log;
    std::atomic<middlewarefacade::DsmCCCommandListener*> listener{nullptr};

    void addCommandListener(std::string eventName, middlewarefacade::DsmCCCommandListener* added) override {
        log.record("addCommandListener", eventName, static_cast<const void*>(added));
        listener.store(added);
    }
    void removeCommandListener(std::string eventName, middlewarefacade::DsmCCCommandListener* removed) override {
        log.record("removeCommandListener", eventName, static_cast<const void*>(removed));
        listener.store(nullptr);
    }
    void reserved2() override { log.record("reserved2"); }
    void release() override { log.record("release"); }
};

class VersionFacadeFake final : public middlewarefacade::VersionFacade {
public:
    CallLog log;
    int answer = 0;

    int checkVersionFlag(int flag) override { return log.record("checkVersionFlag", flag), answer; }
};

// One fake of each facade.
struct FakeFacades {
    VideoFacadeFake video;
    PropertyFacadeFake property;
    SIFacadeFake si;
    CarouselFacadeFake carousel;
    DemuxFacadeFake demux;
    TunerFacadeFake tuner;
    DsmCCCommandFacadeFake dsmcc;
    VersionFacadeFake version;
};

}  // namespace testing
}  // namespace tessarine
