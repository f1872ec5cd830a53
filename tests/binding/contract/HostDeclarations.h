#pragma once

// A host's own declaration of the interface it shares with the bridge,
// written from the interface's tables and nothing else: no header of the
// library is included. The library calls these classes by virtual slot and
// the host calls the listener bases the same way, so a slot or field moved
// on either side breaks the tests that use this file.

#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace ipcutil {
struct Rectangle_t {
    int x, y, width, height;
};
struct DsmCCCommand_t {
    int commandCode;
    std::int64_t commandValue;
    unsigned char commandByte;
    std::string commandText;
};
}  // namespace ipcutil

namespace middlewarefacade {

struct Property_ {
    std::string name, value;
};
struct ProgramEvent_ {
    int value0, value1, value2, value3;
    std::string text0, text1, text2;
    int unread;
    int value4, value5, value6;
    std::list<unsigned char> bytes0, bytes1, bytes2;
    std::list<std::string> strings0, strings1, strings2;
};
struct Service_ {
    int value0, value1, value2;
    std::string text0;
    int value3, value4;
    std::string text1;
};
struct ServiceComponent_ {
    int value0, value1, value2, value3, value4, value5;
};
struct PMT_ {
    int value0, value1, value2, value3;
};
struct Descriptors_ {
    unsigned short id;
    std::list<unsigned char> data;
};
struct Network_ {
    std::string text0;
    int value0;
};
struct TransportStream_ {
    int value0, value1;
    std::string text0;
    int unread;
    int value3, value4, value2;
};

class CarouselListener {
public:
    virtual void downloadComplete(std::string first) = 0;
    virtual void downloadComplete(std::string first, std::string second) = 0;

protected:
    ~CarouselListener() = default;
};
class GraphicsSettingsListener {
public:
    virtual void graphicsSettingsChanged(ipcutil::Rectangle_t first, ipcutil::Rectangle_t second) = 0;

protected:
    ~GraphicsSettingsListener() = default;
};
class MediaListener {
public:
    virtual void endOfMedia(int handle) = 0;

protected:
    ~MediaListener() = default;
};
class DsmCCCommandListener {
public:
    virtual void commandReceived(const ipcutil::DsmCCCommand_t& command) = 0;

protected:
    ~DsmCCCommandListener() = default;
};

using Bytes = std::vector<unsigned char>;

class VideoFacade {
public:
    static VideoFacade* createVideoFacade();
    virtual void setMainVideoBounds(int, int, int, int) = 0;
    virtual void getMainVideoBounds(int&, int&, int&, int&) = 0;
    virtual bool open(std::string, int&) = 0;
    virtual int getDuration(int) = 0;
    virtual int getCurrentTime(int) = 0;
    virtual int setCurrentTime(int, int, int) = 0;
    virtual void addMediaListener(int, MediaListener*) = 0;
    virtual bool play(int) = 0;
    virtual void stop(int) = 0;
    virtual void close(int) = 0;
    virtual int setMediaBounds(int, int, int, int, int) = 0;
    virtual void getMediaBounds(int, int&, int&, int&, int&) = 0;
    virtual std::string getLanguage3() = 0;
    virtual std::list<std::string> getLanguages() = 0;
    virtual std::string getLanguage5() = 0;
    virtual void setText6(std::string) = 0;
    virtual void setFlag7(bool) = 0;
    virtual void setMediaFreeze(int, bool) = 0;
    virtual void setFlag8(bool) = 0;
    virtual int getRate9() = 0;
    virtual int getRate10() = 0;
    virtual int getRate11() = 0;
    virtual int getRate12() = 0;
    virtual int getRate13() = 0;
    virtual int getRate14() = 0;
    virtual int getRate15() = 0;
    virtual int getRate16() = 0;
    virtual void reset() = 0;
    virtual void setBalanceLevel(double) = 0;
    virtual void setMediaBalanceLevel(int, double) = 0;
    virtual void setSoundLevel(double) = 0;
    virtual void setMediaSoundLevel(int, double) = 0;
    virtual void setMute(bool) = 0;
    virtual void setMediaMute(int, bool) = 0;
    virtual void setBassLevel(double) = 0;
    virtual void setMediaBassLevel(int, double) = 0;
    virtual void setTrebleLevel(double) = 0;
    virtual void setMediaTrebleLevel(int, double) = 0;
    virtual void addGraphicsSettingsListener(GraphicsSettingsListener*) = 0;
    virtual void removeGraphicsSettingsListener(GraphicsSettingsListener*) = 0;
    virtual void getInitCropValue(ipcutil::Rectangle_t*, ipcutil::Rectangle_t*) = 0;
    virtual void updateGraphicsRegion(int, int, int, int) = 0;
    virtual void hostOnly42() = 0;
    virtual void release() = 0;

protected:
    ~VideoFacade() = default;
};

class PropertyFacade {
public:
    static PropertyFacade* createPropertyFacade();
    virtual void setProperty(std::string, std::string) = 0;
    virtual std::string getProperty(std::string) = 0;
    virtual std::list<Property_> getProperties() = 0;
    virtual void removeProperty(std::string) = 0;
    virtual void hostOnly4() = 0;
    virtual void release() = 0;

protected:
    ~PropertyFacade() = default;
};

class SIFacade {
public:
    static SIFacade* createSIFacade();
    virtual Network_ getNetwork() = 0;
    virtual std::list<Descriptors_> getNetworkDescriptors() = 0;
    virtual TransportStream_ getTransportStream() = 0;
    virtual std::list<Descriptors_> getTransportStreamDescriptors(int) = 0;
    virtual std::list<Service_> getServices() = 0;
    virtual int getCurrentService() = 0;
    virtual std::list<Descriptors_> getServiceDescriptors(int) = 0;
    virtual std::list<ProgramEvent_> getProgramEvents() = 0;
    virtual ProgramEvent_ getProgramEvent() = 0;
    virtual std::list<Descriptors_> getProgramEventDescriptors(int, int) = 0;
    virtual std::list<ServiceComponent_> getServiceComponents(int) = 0;
    virtual std::list<Descriptors_> getServiceComponentDescriptors(int) = 0;
    virtual std::list<PMT_> getPMTs(int) = 0;
    virtual std::string getSICodingFormat() = 0;
    virtual std::list<int> getCASystemIds() = 0;
    virtual bool isProtectedService() = 0;
    virtual std::string getServiceDescription() = 0;
    virtual void hostOnly17() = 0;
    virtual void release() = 0;

protected:
    ~SIFacade() = default;
};

class CarouselFacade {
public:
    static CarouselFacade* createCarouselFacade();
    virtual std::string mount(std::string) = 0;
    virtual void umount(std::string) = 0;
    virtual void addCarouselListener(CarouselListener*) = 0;
    virtual void removeCarouselListener(CarouselListener*) = 0;
    virtual void hostOnly4() = 0;
    virtual void release() = 0;

protected:
    ~CarouselFacade() = default;
};

class DemuxFacade {
public:
    static DemuxFacade* createDemuxFacade();
    virtual void start() = 0;
    virtual void stop() = 0;
    virtual void set_pid(int) = 0;
    virtual void set_table_id(int) = 0;
    virtual void set_positive_filter(int, const Bytes&, const Bytes&) = 0;
    virtual void set_greater_than_filter(int, const Bytes&, const Bytes&) = 0;
    virtual void set_less_than_filter(int, const Bytes&, const Bytes&) = 0;
    virtual void set_xor_filter(int, const Bytes&, const Bytes&, const Bytes&) = 0;
    virtual void set_time_out(long) = 0;
    virtual void clear_table_id() = 0;
    virtual void clear_positive_filter() = 0;
    virtual void clear_less_than_filter() = 0;
    virtual void clear_xor_filter() = 0;
    virtual Bytes read_section() = 0;
    virtual void hostOnly14() = 0;
    virtual void release() = 0;

protected:
    ~DemuxFacade() = default;
};

class TunerFacade {
public:
    static TunerFacade* createTunerFacade();
    virtual int getCurrentTransportStreamID() = 0;
    virtual std::list<int> getIds2() = 0;
    virtual std::list<int> getIds1(int) = 0;
    virtual std::string getChannelName(int, int) = 0;
    virtual int getVirtualChannelNumber(int, int) = 0;
    virtual std::list<int> getIds3(int) = 0;
    virtual std::list<int> getIds4(int) = 0;
    virtual void hostOnly7() = 0;
    virtual void release() = 0;

protected:
    ~TunerFacade() = default;
};

class DsmCCCommandFacade {
public:
    static DsmCCCommandFacade* createDsmCCCommandFacade();
    virtual void addCommandListener(std::string, DsmCCCommandListener*) = 0;
    virtual void removeCommandListener(std::string, DsmCCCommandListener*) = 0;
    virtual void hostOnly2() = 0;
    virtual void release() = 0;

protected:
    ~DsmCCCommandFacade() = default;
};

class VersionFacade {
public:
    static VersionFacade* createVersionFacade();
    virtual int checkVersionFlag(int) = 0;

protected:
    ~VersionFacade() = default;
};

}  // namespace middlewarefacade

// The adapter as the host sees it: the exported entry points, and its size
// (six interface pointers, two ints, nine pointers), which plain `delete`
// hands to the sized deallocation.
class MiddlewareIpc {
public:
    static MiddlewareIpc* getInstance();
    ~MiddlewareIpc();
    int sendAppState(int state);
    void setVideoSize(int width, int height);
    void getInitCropValue(ipcutil::Rectangle_t* first, ipcutil::Rectangle_t* second);

private:
    MiddlewareIpc() = delete;
    alignas(8) unsigned char layout_[6 * 8 + 2 * 4 + 9 * 8];
};

// A test seam of the library, so that the test does not use the production
// socket directory. A host never needs it.
namespace tessarine {
struct IpcServerManager {
    static bool setSocketDirectory(const std::string& directory);
};
}  // namespace tessarine
