#include "MiddlewareIpc.h"

#include <cstring>
#include <mutex>
#include <string>

#include "binding/RecordConverter.h"
#include "tessarine/IpcServerManager.h"
#include "tessarine/TextField.h"
#include "transport/Diagnostics.h"

using namespace middlewarefacade;
using tessarine::binding::toWire;

namespace {

// The process-wide instance lock and pointer. Statically initialised and
// never destroyed, so getInstance() is safe at any time of the process.
std::mutex instanceLock;
MiddlewareIpc* instance = nullptr;

constexpr int DEFAULT_SCREEN_WIDTH = 1920;
constexpr int DEFAULT_SCREEN_HEIGHT = 1080;
const char* const COMMAND_EVENT_NAME = "nclEditingCommand";

// A bool that arrived as a wire byte may hold any value; read the byte, so
// that any non-zero byte is a real true.
bool wireBool(const bool& field) {
    unsigned char raw;
    std::memcpy(&raw, &field, 1);
    return raw != 0;
}

// Releases a facade (if present) and clears its pointer.
template <typename Facade>
void release(std::atomic<Facade*>& slot) {
    if (Facade* facade = slot.exchange(nullptr)) facade->release();
}

}  // namespace

MiddlewareIpc* MiddlewareIpc::getInstance() {
    std::lock_guard<std::mutex> lock(instanceLock);
    if (instance == nullptr) instance = new MiddlewareIpc(DEFAULT_SCREEN_WIDTH, DEFAULT_SCREEN_HEIGHT);
    return instance;
}

MiddlewareIpc::MiddlewareIpc(int width, int height) {
    tessarine::IpcServerManager* hub = tessarine::IpcServerManager::getInstance();
    hub_.store(hub);
    // Registered before the facades exist: requests meanwhile get defaults.
    hub->addIpcServerListener(this);
    hub->addIpcDemuxServerListener(static_cast<tessarine::IpcDemuxServerListener*>(this));

    if (VideoFacade* video = VideoFacade::createVideoFacade()) {
        video_.store(video);
        video->addGraphicsSettingsListener(static_cast<GraphicsSettingsListener*>(this));
    }
    property_.store(PropertyFacade::createPropertyFacade());
    si_.store(SIFacade::createSIFacade());
    carousel_.store(CarouselFacade::createCarouselFacade());
    demux_.store(DemuxFacade::createDemuxFacade());
    tuner_.store(TunerFacade::createTunerFacade());
    if (DsmCCCommandFacade* dsmcc = DsmCCCommandFacade::createDsmCCCommandFacade()) {
        dsmcc_.store(dsmcc);
        dsmcc->addCommandListener(COMMAND_EVENT_NAME, static_cast<DsmCCCommandListener*>(this));
    }
    version_.store(VersionFacade::createVersionFacade());
    screenWidth_.store(width);
    screenHeight_.store(height);
}

MiddlewareIpc::~MiddlewareIpc() {
    tessarine::Diagnostics::trace("deleting middleware ipc");

    if (tessarine::IpcServerManager* hub = hub_.load()) {
        // No new demux command reaches the adapter from here on; destroy()
        // then stops both servers and joins their threads, so a command in
        // flight on either channel has finished when it returns.
        hub->addIpcDemuxServerListener(nullptr);
        tessarine::IpcServerManager::destroy();
        hub_.store(nullptr);
    }
    {
        std::lock_guard<std::mutex> lock(instanceLock);
        if (instance == this) instance = nullptr;
    }

    if (VideoFacade* video = video_.exchange(nullptr)) {
        video->removeGraphicsSettingsListener(static_cast<GraphicsSettingsListener*>(this));
        video->release();
    }
    if (DsmCCCommandFacade* dsmcc = dsmcc_.exchange(nullptr)) {
        dsmcc->removeCommandListener(COMMAND_EVENT_NAME, static_cast<DsmCCCommandListener*>(this));
        dsmcc->release();
    }
    release(property_);
    release(si_);
    release(carousel_);
    release(demux_);
    release(tuner_);
    // The version facade is used until the process ends: never released.
}

int MiddlewareIpc::sendAppState(int state) {
    tessarine::IpcServerManager* hub = hub_.load();
    return hub ? hub->setApplicationState(state) : 0;
}

int MiddlewareIpc::checkVersionFlag(int flag) {
    VersionFacade* version = version_.load();
    return version ? version->checkVersionFlag(flag) : 0;
}

// ---- Video, graphics, audio, property, tuner ----

void MiddlewareIpc::setVideoSize(int width, int height) {
    screenWidth_.store(width);
    screenHeight_.store(height);
}

void MiddlewareIpc::getInitCropValue(ipcutil::Rectangle_t* first, ipcutil::Rectangle_t* second) {
    if (VideoFacade* video = video_.load()) video->getInitCropValue(first, second);
}

void MiddlewareIpc::setVideoProperty(tessarine::video_data& data) {
    VideoFacade* video = video_.load();
    if (video == nullptr) return;
    switch (data.code) {
    case tessarine::VIDEO_SET_BOUNDS:
        video->setMainVideoBounds(data.bounds.x, data.bounds.y, data.bounds.width, data.bounds.height);
        break;
    case tessarine::VIDEO_RESET: video->reset(); break;
    case tessarine::VIDEO_SET_TEXT_6: video->setText6(tessarine::readTextField(data.text)); break;
    case tessarine::VIDEO_SET_FLAG_7: video->setFlag7(wireBool(data.flag)); break;
    case tessarine::VIDEO_SET_FLAG_8: video->setFlag8(wireBool(data.flag)); break;
    default: break;  // the other commands carry nothing for the video facade
    }
}

int MiddlewareIpc::getVideoProperty(tessarine::command code) {
    // Commands 9 to 16 are answered by the eight consecutive rate queries.
    static constexpr int (VideoFacade::*rates[])() = {
        &VideoFacade::getRate9,  &VideoFacade::getRate10, &VideoFacade::getRate11, &VideoFacade::getRate12,
        &VideoFacade::getRate13, &VideoFacade::getRate14, &VideoFacade::getRate15, &VideoFacade::getRate16};
    VideoFacade* video = video_.load();
    if (video == nullptr || code < tessarine::VIDEO_GET_RATE_9 || code > tessarine::VIDEO_GET_RATE_16) return -1;
    return (video->*rates[code - tessarine::VIDEO_GET_RATE_9])();
}

void MiddlewareIpc::getMainVideoBounds(int& x, int& y, int& width, int& height) {
    if (VideoFacade* video = video_.load()) {
        video->getMainVideoBounds(x, y, width, height);
    } else {
        x = y = width = height = -1;
    }
}

void MiddlewareIpc::updateGraphicsRegion(tessarine::video_region region) {
    tessarine::Diagnostics::trace(" >>> graphics region update <<< ");
    tessarine::Diagnostics::trace("region = {" + std::to_string(region.x) + "," + std::to_string(region.y) + "," +
                                  std::to_string(region.width) + "," + std::to_string(region.height) + "}");
    if (VideoFacade* video = video_.load()) video->updateGraphicsRegion(region.x, region.y, region.width, region.height);
}

std::string MiddlewareIpc::getVideoLanguage(tessarine::command code) {
    VideoFacade* video = video_.load();
    if (video == nullptr) return {};
    if (code == tessarine::VIDEO_GET_LANGUAGE_3) return video->getLanguage3();
    if (code == tessarine::VIDEO_GET_LANGUAGE_5) return video->getLanguage5();
    return {};
}

std::list<std::string> MiddlewareIpc::getVideoLanguages() {
    VideoFacade* video = video_.load();
    return video ? video->getLanguages() : std::list<std::string>{};
}

std::string MiddlewareIpc::getSystemProperty(std::string name) {
    PropertyFacade* property = property_.load();
    return property ? property->getProperty(name) : std::string{};
}

std::list<tessarine::system_property> MiddlewareIpc::getSystemProperties() {
    PropertyFacade* property = property_.load();
    return property ? toWire(property->getProperties()) : std::list<tessarine::system_property>{};
}

void MiddlewareIpc::setSystemProperty(tessarine::system_property& property) {
    if (PropertyFacade* facade = property_.load())
        facade->setProperty(tessarine::readTextField(property.name), tessarine::readTextField(property.value));
}

void MiddlewareIpc::removeSystemProperty(std::string name) {
    if (PropertyFacade* property = property_.load()) property->removeProperty(name);
}

void MiddlewareIpc::setVideoAudio(tessarine::audio_data data) {
    VideoFacade* video = video_.load();
    if (video == nullptr) return;
    switch (data.code) {
    case tessarine::AUDIO_SOUND_LEVEL: video->setSoundLevel(data.level); break;
    case tessarine::AUDIO_BALANCE_LEVEL: video->setBalanceLevel(data.level); break;
    case tessarine::AUDIO_BASS_LEVEL: video->setBassLevel(data.level); break;
    case tessarine::AUDIO_TREBLE_LEVEL: video->setTrebleLevel(data.level); break;
    case tessarine::AUDIO_MUTE: video->setMute(wireBool(data.mute)); break;
    default: break;  // unknown selectors change nothing
    }
}

int MiddlewareIpc::getCurrentTransportStreamID() {
    TunerFacade* tuner = tuner_.load();
    return tuner ? tuner->getCurrentTransportStreamID() : -1;
}

std::list<int> MiddlewareIpc::getAllIDs(tessarine::tuner_data& data) {
    TunerFacade* tuner = tuner_.load();
    if (tuner == nullptr) return {};
    switch (data.code) {
    case tessarine::TUNER_IDS_1: return tuner->getIds1(data.parameter);
    case tessarine::TUNER_IDS_2: return tuner->getIds2();  // takes no parameter, even when one is sent
    case tessarine::TUNER_IDS_3: return tuner->getIds3(data.parameter);
    case tessarine::TUNER_IDS_4: return tuner->getIds4(data.parameter);
    default: return {};
    }
}

void MiddlewareIpc::graphicsSettingsChanged(ipcutil::Rectangle_t first, ipcutil::Rectangle_t second) {
    screenWidth_.store(second.width);
    screenHeight_.store(second.height);
    if (tessarine::IpcServerManager* hub = hub_.load()) hub->changeGraphicsSettings(first, second);
}

// ---- Carousel and DSM-CC ----

std::string MiddlewareIpc::mountCarousel(std::string name) {
    CarouselFacade* carousel = carousel_.load();
    return carousel ? carousel->mount(name) : std::string{};
}

void MiddlewareIpc::umountCarousel(std::string name) {
    if (CarouselFacade* carousel = carousel_.load()) carousel->umount(name);
}

void MiddlewareIpc::addCarouselListener() {
    if (CarouselFacade* carousel = carousel_.load()) carousel->addCarouselListener(static_cast<CarouselListener*>(this));
}

void MiddlewareIpc::removeCarouselListener() {
    if (CarouselFacade* carousel = carousel_.load())
        carousel->removeCarouselListener(static_cast<CarouselListener*>(this));
}

void MiddlewareIpc::downloadComplete(std::string first) {
    static_cast<CarouselListener*>(this)->downloadComplete(first, std::string());
}

void MiddlewareIpc::downloadComplete(std::string first, std::string second) {
    if (tessarine::IpcServerManager* hub = hub_.load()) hub->downloadComplete(first, second);
}

void MiddlewareIpc::commandReceived(const ipcutil::DsmCCCommand_t& command) {
    tessarine::IpcServerManager* hub = hub_.load();
    if (hub == nullptr) return;
    // A copy: the middleware may reuse its command once this returns.
    ipcutil::DsmCCCommand_t copy{command.commandCode, command.commandValue, command.commandByte, command.commandText};
    hub->sendDsmCCCommand(copy);
}

// ---- Service information ----

std::string MiddlewareIpc::getSICodingFormat() {
    SIFacade* si = si_.load();
    return si ? si->getSICodingFormat() : std::string{};
}

std::list<tessarine::program_event> MiddlewareIpc::getProgramEvents() {
    SIFacade* si = si_.load();
    return si ? toWire(si->getProgramEvents()) : std::list<tessarine::program_event>{};
}

tessarine::program_event MiddlewareIpc::getProgramEvent() {
    SIFacade* si = si_.load();
    return si ? toWire(si->getProgramEvent()) : tessarine::program_event{};
}

std::list<tessarine::service> MiddlewareIpc::getServices() {
    SIFacade* si = si_.load();
    return si ? toWire(si->getServices()) : std::list<tessarine::service>{};
}

int MiddlewareIpc::getCurrentService() {
    SIFacade* si = si_.load();
    return si ? si->getCurrentService() : -1;
}

std::list<int> MiddlewareIpc::getCASystemIds() {
    SIFacade* si = si_.load();
    return si ? si->getCASystemIds() : std::list<int>{};
}

bool MiddlewareIpc::isProtectedService() {
    SIFacade* si = si_.load();
    return si ? si->isProtectedService() : false;
}

std::string MiddlewareIpc::getServiceDescription() {
    SIFacade* si = si_.load();
    return si ? si->getServiceDescription() : std::string{};
}

std::list<tessarine::service_component> MiddlewareIpc::getServiceComponents(int id) {
    SIFacade* si = si_.load();
    return si ? toWire(si->getServiceComponents(id)) : std::list<tessarine::service_component>{};
}

tessarine::transport_stream MiddlewareIpc::getTransportStream() {
    SIFacade* si = si_.load();
    return si ? toWire(si->getTransportStream()) : tessarine::transport_stream{};
}

tessarine::network MiddlewareIpc::getNetwork() {
    SIFacade* si = si_.load();
    return si ? toWire(si->getNetwork()) : tessarine::network{};
}

std::list<tessarine::descriptor> MiddlewareIpc::getNetworkDescriptors() {
    SIFacade* si = si_.load();
    return si ? toWire(si->getNetworkDescriptors()) : std::list<tessarine::descriptor>{};
}

std::list<tessarine::descriptor> MiddlewareIpc::getTransportStreamDescriptors(int id) {
    SIFacade* si = si_.load();
    return si ? toWire(si->getTransportStreamDescriptors(id)) : std::list<tessarine::descriptor>{};
}

std::list<tessarine::descriptor> MiddlewareIpc::getServiceDescriptors(int id) {
    SIFacade* si = si_.load();
    return si ? toWire(si->getServiceDescriptors(id)) : std::list<tessarine::descriptor>{};
}

std::list<tessarine::descriptor> MiddlewareIpc::getProgramEventDescriptors(int first, int second) {
    SIFacade* si = si_.load();
    return si ? toWire(si->getProgramEventDescriptors(first, second)) : std::list<tessarine::descriptor>{};
}

std::list<tessarine::descriptor> MiddlewareIpc::getServiceComponentDescriptors(int id) {
    SIFacade* si = si_.load();
    return si ? toWire(si->getServiceComponentDescriptors(id)) : std::list<tessarine::descriptor>{};
}

std::list<tessarine::pmt> MiddlewareIpc::getPMTs(int id) {
    SIFacade* si = si_.load();
    return si ? toWire(si->getPMTs(id)) : std::list<tessarine::pmt>{};
}

std::string MiddlewareIpc::getChannelName(int first, int second) {
    TunerFacade* tuner = tuner_.load();
    return tuner ? tuner->getChannelName(first, second) : std::string{};
}

int MiddlewareIpc::getVirtualChannelNumber(int first, int second) {
    TunerFacade* tuner = tuner_.load();
    return tuner ? tuner->getVirtualChannelNumber(first, second) : -1;
}

// ---- Media players ----

bool MiddlewareIpc::open(std::string locator, int& handle) {
    VideoFacade* video = video_.load();
    return video ? video->open(locator, handle) : false;
}

int MiddlewareIpc::getDuration(int handle) {
    VideoFacade* video = video_.load();
    return video ? video->getDuration(handle) : -1;
}

int MiddlewareIpc::getCurrentTime(int handle) {
    VideoFacade* video = video_.load();
    return video ? video->getCurrentTime(handle) : -1;
}

int MiddlewareIpc::setCurrentTime(int handle, int first, int second) {
    VideoFacade* video = video_.load();
    return video ? video->setCurrentTime(handle, first, second) : -1;
}

void MiddlewareIpc::addMediaListener(int handle) {
    if (VideoFacade* video = video_.load()) video->addMediaListener(handle, static_cast<MediaListener*>(this));
}

bool MiddlewareIpc::play(int handle) {
    VideoFacade* video = video_.load();
    return video ? video->play(handle) : false;
}

void MiddlewareIpc::stop(int handle) {
    if (VideoFacade* video = video_.load()) video->stop(handle);
}

void MiddlewareIpc::close(int handle) {
    if (VideoFacade* video = video_.load()) video->close(handle);
}

int MiddlewareIpc::setMediaBounds(int handle, int x, int y, int width, int height) {
    VideoFacade* video = video_.load();
    return video ? video->setMediaBounds(handle, x, y, width, height) : -1;
}

void MiddlewareIpc::getMediaBounds(int handle, int& x, int& y, int& width, int& height) {
    if (VideoFacade* video = video_.load()) video->getMediaBounds(handle, x, y, width, height);
}

void MiddlewareIpc::setMediaFreeze(int handle, bool freeze) {
    if (VideoFacade* video = video_.load()) video->setMediaFreeze(handle, wireBool(freeze));
}

void MiddlewareIpc::setMediaBalanceLevel(int handle, double level) {
    if (VideoFacade* video = video_.load()) video->setMediaBalanceLevel(handle, level);
}

void MiddlewareIpc::setMediaSoundLevel(int handle, double level) {
    if (VideoFacade* video = video_.load()) video->setMediaSoundLevel(handle, level);
}

void MiddlewareIpc::setMediaMute(int handle, bool mute) {
    if (VideoFacade* video = video_.load()) video->setMediaMute(handle, wireBool(mute));
}

void MiddlewareIpc::setMediaBassLevel(int handle, double level) {
    if (VideoFacade* video = video_.load()) video->setMediaBassLevel(handle, level);
}

void MiddlewareIpc::setMediaTrebleLevel(int handle, double level) {
    if (VideoFacade* video = video_.load()) video->setMediaTrebleLevel(handle, level);
}

void MiddlewareIpc::endOfMedia(int handle) {
    if (tessarine::IpcServerManager* hub = hub_.load()) hub->endOfMedia(handle);
}

// ---- Demux filter: forwarded unchanged ----

void MiddlewareIpc::start() {
    if (DemuxFacade* demux = demux_.load()) demux->start();
}

void MiddlewareIpc::stop() {
    if (DemuxFacade* demux = demux_.load()) demux->stop();
}

void MiddlewareIpc::set_pid(int pid) {
    if (DemuxFacade* demux = demux_.load()) demux->set_pid(pid);
}

void MiddlewareIpc::set_table_id(int tableId) {
    if (DemuxFacade* demux = demux_.load()) demux->set_table_id(tableId);
}

void MiddlewareIpc::set_positive_filter(int value, const std::vector<unsigned char>& first,
                                        const std::vector<unsigned char>& second) {
    if (DemuxFacade* demux = demux_.load()) demux->set_positive_filter(value, first, second);
}

void MiddlewareIpc::set_greater_than_filter(int value, const std::vector<unsigned char>& first,
                                            const std::vector<unsigned char>& second) {
    if (DemuxFacade* demux = demux_.load()) demux->set_greater_than_filter(value, first, second);
}

void MiddlewareIpc::set_less_than_filter(int value, const std::vector<unsigned char>& first,
                                         const std::vector<unsigned char>& second) {
    if (DemuxFacade* demux = demux_.load()) demux->set_less_than_filter(value, first, second);
}

void MiddlewareIpc::set_xor_filter(int value, const std::vector<unsigned char>& first,
                                   const std::vector<unsigned char>& second, const std::vector<unsigned char>& third) {
    if (DemuxFacade* demux = demux_.load()) demux->set_xor_filter(value, first, second, third);
}

void MiddlewareIpc::set_time_out(long timeout) {
    if (DemuxFacade* demux = demux_.load()) demux->set_time_out(timeout);
}

void MiddlewareIpc::clear_table_id() {
    if (DemuxFacade* demux = demux_.load()) demux->clear_table_id();
}

void MiddlewareIpc::clear_positive_filter() {
    if (DemuxFacade* demux = demux_.load()) demux->clear_positive_filter();
}

void MiddlewareIpc::clear_less_than_filter() {
    if (DemuxFacade* demux = demux_.load()) demux->clear_less_than_filter();
}

void MiddlewareIpc::clear_xor_filter() {
    if (DemuxFacade* demux = demux_.load()) demux->clear_xor_filter();
}

std::vector<unsigned char> MiddlewareIpc::read_section() {
    std::vector<unsigned char> section;
    if (DemuxFacade* demux = demux_.load()) section = demux->read_section();
    return section;
}
