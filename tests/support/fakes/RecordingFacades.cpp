#include "support/fakes/RecordingFacades.h"

namespace tessarine {
namespace testing {

using namespace middlewarefacade;

namespace {
const void* address(const void* pointer) { return pointer; }
}  // namespace

// ---- Video ----
void VideoFacadeFake::setMainVideoBounds(int x, int y, int width, int height) {
    log.record("setMainVideoBounds", x, y, width, height);
}
void VideoFacadeFake::getMainVideoBounds(int& x, int& y, int& width, int& height) {
    log.record("getMainVideoBounds");
    x = mainBounds[0], y = mainBounds[1], width = mainBounds[2], height = mainBounds[3];
}
bool VideoFacadeFake::open(std::string locator, int& handle) {
    log.record("open", locator, handle);
    handle = openedHandle;
    return openResult;
}
int VideoFacadeFake::getDuration(int handle) { return log.record("getDuration", handle), duration; }
int VideoFacadeFake::getCurrentTime(int handle) { return log.record("getCurrentTime", handle), currentTime; }
int VideoFacadeFake::setCurrentTime(int handle, int first, int second) {
    return log.record("setCurrentTime", handle, first, second), setTimeResult;
}
void VideoFacadeFake::addMediaListener(int handle, MediaListener* listener) {
    log.record("addMediaListener", handle, address(listener));
    mediaListener.store(listener);
}
bool VideoFacadeFake::play(int handle) { return log.record("play", handle), playResult; }
void VideoFacadeFake::stop(int handle) { log.record("stop", handle); }
void VideoFacadeFake::close(int handle) { log.record("close", handle); }
int VideoFacadeFake::setMediaBounds(int handle, int x, int y, int width, int height) {
    return log.record("setMediaBounds", handle, x, y, width, height), mediaBoundsResult;
}
void VideoFacadeFake::getMediaBounds(int handle, int& x, int& y, int& width, int& height) {
    log.record("getMediaBounds", handle);
    x = mediaBounds[0], y = mediaBounds[1], width = mediaBounds[2], height = mediaBounds[3];
}
std::string VideoFacadeFake::getLanguage3() { return log.record("getLanguage3"), language3; }
std::list<std::string> VideoFacadeFake::getLanguages() { return log.record("getLanguages"), languages; }
std::string VideoFacadeFake::getLanguage5() { return log.record("getLanguage5"), language5; }
void VideoFacadeFake::setText6(std::string text) { log.record("setText6", text); }
void VideoFacadeFake::setFlag7(bool flag) { log.record("setFlag7", flag); }
void VideoFacadeFake::setMediaFreeze(int handle, bool freeze) { log.record("setMediaFreeze", handle, freeze); }
void VideoFacadeFake::setFlag8(bool flag) { log.record("setFlag8", flag); }
int VideoFacadeFake::rate(int command) {
    log.record(("getRate" + std::to_string(command)).c_str());
    return rates[static_cast<std::size_t>(command - 9)];
}
int VideoFacadeFake::getRate9() { return rate(9); }
int VideoFacadeFake::getRate10() { return rate(10); }
int VideoFacadeFake::getRate11() { return rate(11); }
int VideoFacadeFake::getRate12() { return rate(12); }
int VideoFacadeFake::getRate13() { return rate(13); }
int VideoFacadeFake::getRate14() { return rate(14); }
int VideoFacadeFake::getRate15() { return rate(15); }
int VideoFacadeFake::getRate16() { return rate(16); }
void VideoFacadeFake::reset() { log.record("reset"); }
void VideoFacadeFake::setBalanceLevel(double level) { log.record("setBalanceLevel", level); }
void VideoFacadeFake::setMediaBalanceLevel(int handle, double level) {
    log.record("setMediaBalanceLevel", handle, level);
}
void VideoFacadeFake::setSoundLevel(double level) { log.record("setSoundLevel", level); }
void VideoFacadeFake::setMediaSoundLevel(int handle, double level) { log.record("setMediaSoundLevel", handle, level); }
void VideoFacadeFake::setMute(bool mute) { log.record("setMute", mute); }
void VideoFacadeFake::setMediaMute(int handle, bool mute) { log.record("setMediaMute", handle, mute); }
void VideoFacadeFake::setBassLevel(double level) { log.record("setBassLevel", level); }
void VideoFacadeFake::setMediaBassLevel(int handle, double level) { log.record("setMediaBassLevel", handle, level); }
void VideoFacadeFake::setTrebleLevel(double level) { log.record("setTrebleLevel", level); }
void VideoFacadeFake::setMediaTrebleLevel(int handle, double level) {
    log.record("setMediaTrebleLevel", handle, level);
}
void VideoFacadeFake::addGraphicsSettingsListener(GraphicsSettingsListener* listener) {
    log.record("addGraphicsSettingsListener", address(listener));
    graphicsListener.store(listener);
}
void VideoFacadeFake::removeGraphicsSettingsListener(GraphicsSettingsListener* listener) {
    log.record("removeGraphicsSettingsListener", address(listener));
    graphicsListener.store(nullptr);
}
void VideoFacadeFake::getInitCropValue(ipcutil::Rectangle_t* first, ipcutil::Rectangle_t* second) {
    log.record("getInitCropValue");
    *first = initCrop[0];
    *second = initCrop[1];
}
void VideoFacadeFake::updateGraphicsRegion(int x, int y, int width, int height) {
    log.record("updateGraphicsRegion", x, y, width, height);
}
void VideoFacadeFake::reserved42() { log.record("reserved42"); }
void VideoFacadeFake::release() { log.record("release"); }

// ---- Property ----
void PropertyFacadeFake::setProperty(std::string name, std::string newValue) {
    log.record("setProperty", name, newValue);
}
std::string PropertyFacadeFake::getProperty(std::string name) { return log.record("getProperty", name), value; }
std::list<Property_> PropertyFacadeFake::getProperties() { return log.record("getProperties"), properties; }
void PropertyFacadeFake::removeProperty(std::string name) { log.record("removeProperty", name); }
void PropertyFacadeFake::reserved4() { log.record("reserved4"); }
void PropertyFacadeFake::release() { log.record("release"); }

// ---- Service information ----
Network_ SIFacadeFake::getNetwork() { return log.record("getNetwork"), network; }
std::list<Descriptors_> SIFacadeFake::getNetworkDescriptors() {
    return log.record("getNetworkDescriptors"), descriptors;
}
TransportStream_ SIFacadeFake::getTransportStream() { return log.record("getTransportStream"), transportStream; }
std::list<Descriptors_> SIFacadeFake::getTransportStreamDescriptors(int id) {
    return log.record("getTransportStreamDescriptors", id), descriptors;
}
std::list<Service_> SIFacadeFake::getServices() { return log.record("getServices"), services; }
int SIFacadeFake::getCurrentService() { return log.record("getCurrentService"), currentService; }
std::list<Descriptors_> SIFacadeFake::getServiceDescriptors(int id) {
    return log.record("getServiceDescriptors", id), descriptors;
}
std::list<ProgramEvent_> SIFacadeFake::getProgramEvents() { return log.record("getProgramEvents"), programEvents; }
ProgramEvent_ SIFacadeFake::getProgramEvent() { return log.record("getProgramEvent"), programEvent; }
std::list<Descriptors_> SIFacadeFake::getProgramEventDescriptors(int first, int second) {
    return log.record("getProgramEventDescriptors", first, second), descriptors;
}
std::list<ServiceComponent_> SIFacadeFake::getServiceComponents(int id) {
    return log.record("getServiceComponents", id), serviceComponents;
}
std::list<Descriptors_> SIFacadeFake::getServiceComponentDescriptors(int id) {
    return log.record("getServiceComponentDescriptors", id), descriptors;
}
std::list<PMT_> SIFacadeFake::getPMTs(int id) { return log.record("getPMTs", id), pmts; }
std::string SIFacadeFake::getSICodingFormat() { return log.record("getSICodingFormat"), codingFormat; }
std::list<int> SIFacadeFake::getCASystemIds() { return log.record("getCASystemIds"), caSystemIds; }
bool SIFacadeFake::isProtectedService() { return log.record("isProtectedService"), protectedService; }
std::string SIFacadeFake::getServiceDescription() { return log.record("getServiceDescription"), description; }
void SIFacadeFake::reserved17() { log.record("reserved17"); }
void SIFacadeFake::release() { log.record("release"); }

// ---- Carousel ----
std::string CarouselFacadeFake::mount(std::string name) { return log.record("mount", name), mountAnswer; }
void CarouselFacadeFake::umount(std::string name) { log.record("umount", name); }
void CarouselFacadeFake::addCarouselListener(CarouselListener* added) {
    log.record("addCarouselListener", address(added));
    listener.store(added);
}
void CarouselFacadeFake::removeCarouselListener(CarouselListener* removed) {
    log.record("removeCarouselListener", address(removed));
    listener.store(nullptr);
}
void CarouselFacadeFake::reserved4() { log.record("reserved4"); }
void CarouselFacadeFake::release() { log.record("release"); }

// ---- Demux ----
void DemuxFacadeFake::start() { log.record("start"); }
void DemuxFacadeFake::stop() { log.record("stop"); }
void DemuxFacadeFake::set_pid(int pid) { log.record("set_pid", pid); }
void DemuxFacadeFake::set_table_id(int tableId) { log.record("set_table_id", tableId); }
void DemuxFacadeFake::set_positive_filter(int value, const std::vector<unsigned char>& first,
                                          const std::vector<unsigned char>& second) {
    log.record("set_positive_filter", value, first, second);
}
void DemuxFacadeFake::set_greater_than_filter(int value, const std::vector<unsigned char>& first,
                                              const std::vector<unsigned char>& second) {
    log.record("set_greater_than_filter", value, first, second);
}
void DemuxFacadeFake::set_less_than_filter(int value, const std::vector<unsigned char>& first,
                                           const std::vector<unsigned char>& second) {
    log.record("set_less_than_filter", value, first, second);
}
void DemuxFacadeFake::set_xor_filter(int value, const std::vector<unsigned char>& first,
                                     const std::vector<unsigned char>& second,
                                     const std::vector<unsigned char>& third) {
    log.record("set_xor_filter", value, first, second, third);
}
void DemuxFacadeFake::set_time_out(long timeout) { log.record("set_time_out", timeout); }
void DemuxFacadeFake::clear_table_id() { log.record("clear_table_id"); }
void DemuxFacadeFake::clear_positive_filter() { log.record("clear_positive_filter"); }
void DemuxFacadeFake::clear_less_than_filter() { log.record("clear_less_than_filter"); }
void DemuxFacadeFake::clear_xor_filter() { log.record("clear_xor_filter"); }
std::vector<unsigned char> DemuxFacadeFake::read_section() { return log.record("read_section"), section; }
void DemuxFacadeFake::reserved14() { log.record("reserved14"); }
void DemuxFacadeFake::release() { log.record("release"); }

// ---- Tuner ----
int TunerFacadeFake::getCurrentTransportStreamID() {
    return log.record("getCurrentTransportStreamID"), transportStreamId;
}
std::list<int> TunerFacadeFake::getIds2() { return log.record("getIds2"), ids; }
std::list<int> TunerFacadeFake::getIds1(int parameter) { return log.record("getIds1", parameter), ids; }
std::string TunerFacadeFake::getChannelName(int first, int second) {
    return log.record("getChannelName", first, second), channelName;
}
int TunerFacadeFake::getVirtualChannelNumber(int first, int second) {
    return log.record("getVirtualChannelNumber", first, second), channelNumber;
}
std::list<int> TunerFacadeFake::getIds3(int parameter) { return log.record("getIds3", parameter), ids; }
std::list<int> TunerFacadeFake::getIds4(int parameter) { return log.record("getIds4", parameter), ids; }
void TunerFacadeFake::reserved7() { log.record("reserved7"); }
void TunerFacadeFake::release() { log.record("release"); }

// ---- DSM-CC command ----
void DsmCCCommandFacadeFake::addCommandListener(std::string eventName, DsmCCCommandListener* added) {
    log.record("addCommandListener", eventName, address(added));
    listener.store(added);
}
void DsmCCCommandFacadeFake::removeCommandListener(std::string eventName, DsmCCCommandListener* removed) {
    log.record("removeCommandListener", eventName, address(removed));
    listener.store(nullptr);
}
void DsmCCCommandFacadeFake::reserved2() { log.record("reserved2"); }
void DsmCCCommandFacadeFake::release() { log.record("release"); }

// ---- Version ----
int VersionFacadeFake::checkVersionFlag(int flag) { return log.record("checkVersionFlag", flag), answer; }

}  // namespace testing
}  // namespace tessarine
