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

    void setMainVideoBounds(int x, int y, int width, int height) override;
    void getMainVideoBounds(int& x, int& y, int& width, int& height) override;
    bool open(std::string locator, int& handle) override;
    int getDuration(int handle) override;
    int getCurrentTime(int handle) override;
    int setCurrentTime(int handle, int first, int second) override;
    void addMediaListener(int handle, middlewarefacade::MediaListener* listener) override;
    bool play(int handle) override;
    void stop(int handle) override;
    void close(int handle) override;
    int setMediaBounds(int handle, int x, int y, int width, int height) override;
    void getMediaBounds(int handle, int& x, int& y, int& width, int& height) override;
    std::string getLanguage3() override;
    std::list<std::string> getLanguages() override;
    std::string getLanguage5() override;
    void setText6(std::string text) override;
    void setFlag7(bool flag) override;
    void setMediaFreeze(int handle, bool freeze) override;
    void setFlag8(bool flag) override;
    int getRate9() override;
    int getRate10() override;
    int getRate11() override;
    int getRate12() override;
    int getRate13() override;
    int getRate14() override;
    int getRate15() override;
    int getRate16() override;
    void reset() override;
    void setBalanceLevel(double level) override;
    void setMediaBalanceLevel(int handle, double level) override;
    void setSoundLevel(double level) override;
    void setMediaSoundLevel(int handle, double level) override;
    void setMute(bool mute) override;
    void setMediaMute(int handle, bool mute) override;
    void setBassLevel(double level) override;
    void setMediaBassLevel(int handle, double level) override;
    void setTrebleLevel(double level) override;
    void setMediaTrebleLevel(int handle, double level) override;
    void addGraphicsSettingsListener(middlewarefacade::GraphicsSettingsListener* listener) override;
    void removeGraphicsSettingsListener(middlewarefacade::GraphicsSettingsListener* listener) override;
    void getInitCropValue(ipcutil::Rectangle_t* first, ipcutil::Rectangle_t* second) override;
    void updateGraphicsRegion(int x, int y, int width, int height) override;
    void reserved42() override;
    void release() override;

private:
    int rate(int command);
};

class PropertyFacadeFake final : public middlewarefacade::PropertyFacade {
public:
    CallLog log;
    std::string value;
    std::list<middlewarefacade::Property_> properties;

    void setProperty(std::string name, std::string value) override;
    std::string getProperty(std::string name) override;
    std::list<middlewarefacade::Property_> getProperties() override;
    void removeProperty(std::string name) override;
    void reserved4() override;
    void release() override;
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

    middlewarefacade::Network_ getNetwork() override;
    std::list<middlewarefacade::Descriptors_> getNetworkDescriptors() override;
    middlewarefacade::TransportStream_ getTransportStream() override;
    std::list<middlewarefacade::Descriptors_> getTransportStreamDescriptors(int id) override;
    std::list<middlewarefacade::Service_> getServices() override;
    int getCurrentService() override;
    std::list<middlewarefacade::Descriptors_> getServiceDescriptors(int id) override;
    std::list<middlewarefacade::ProgramEvent_> getProgramEvents() override;
    middlewarefacade::ProgramEvent_ getProgramEvent() override;
    std::list<middlewarefacade::Descriptors_> getProgramEventDescriptors(int first, int second) override;
    std::list<middlewarefacade::ServiceComponent_> getServiceComponents(int id) override;
    std::list<middlewarefacade::Descriptors_> getServiceComponentDescriptors(int id) override;
    std::list<middlewarefacade::PMT_> getPMTs(int id) override;
    std::string getSICodingFormat() override;
    std::list<int> getCASystemIds() override;
    bool isProtectedService() override;
    std::string getServiceDescription() override;
    void reserved17() override;
    void release() override;
};

class CarouselFacadeFake final : public middlewarefacade::CarouselFacade {
public:
    CallLog log;
    std::string mountAnswer;
    std::atomic<middlewarefacade::CarouselListener*> listener{nullptr};

    std::string mount(std::string name) override;
    void umount(std::string name) override;
    void addCarouselListener(middlewarefacade::CarouselListener* listener) override;
    void removeCarouselListener(middlewarefacade::CarouselListener* listener) override;
    void reserved4() override;
    void release() override;
};

class DemuxFacadeFake final : public middlewarefacade::DemuxFacade {
public:
    CallLog log;
    std::vector<unsigned char> section;

    void start() override;
    void stop() override;
    void set_pid(int pid) override;
    void set_table_id(int tableId) override;
    void set_positive_filter(int value, const std::vector<unsigned char>& first,
                             const std::vector<unsigned char>& second) override;
    void set_greater_than_filter(int value, const std::vector<unsigned char>& first,
                                 const std::vector<unsigned char>& second) override;
    void set_less_than_filter(int value, const std::vector<unsigned char>& first,
                              const std::vector<unsigned char>& second) override;
    void set_xor_filter(int value, const std::vector<unsigned char>& first, const std::vector<unsigned char>& second,
                        const std::vector<unsigned char>& third) override;
    void set_time_out(long timeout) override;
    void clear_table_id() override;
    void clear_positive_filter() override;
    void clear_less_than_filter() override;
    void clear_xor_filter() override;
    std::vector<unsigned char> read_section() override;
    void reserved14() override;
    void release() override;
};

class TunerFacadeFake final : public middlewarefacade::TunerFacade {
public:
    CallLog log;
    int transportStreamId = -1;
    std::list<int> ids;  // the answer of every identifier list query
    std::string channelName;
    int channelNumber = -1;

    int getCurrentTransportStreamID() override;
    std::list<int> getIds2() override;
    std::list<int> getIds1(int parameter) override;
    std::string getChannelName(int first, int second) override;
    int getVirtualChannelNumber(int first, int second) override;
    std::list<int> getIds3(int parameter) override;
    std::list<int> getIds4(int parameter) override;
    void reserved7() override;
    void release() override;
};

class DsmCCCommandFacadeFake final : public middlewarefacade::DsmCCCommandFacade {
public:
    CallLog log;
    std::atomic<middlewarefacade::DsmCCCommandListener*> listener{nullptr};

    void addCommandListener(std::string eventName, middlewarefacade::DsmCCCommandListener* listener) override;
    void removeCommandListener(std::string eventName, middlewarefacade::DsmCCCommandListener* listener) override;
    void reserved2() override;
    void release() override;
};

class VersionFacadeFake final : public middlewarefacade::VersionFacade {
public:
    CallLog log;
    int answer = 0;

    int checkVersionFlag(int flag) override;
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
