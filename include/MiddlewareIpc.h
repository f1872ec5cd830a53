#pragma once

#include <atomic>
#include <list>
#include <string>
#include <vector>

#include "ipcutil/DsmCCCommand_t.h"
#include "ipcutil/Rectangle_t.h"
#include "middlewarefacade/CarouselFacade.h"
#include "middlewarefacade/CarouselListener.h"
#include "middlewarefacade/DemuxFacade.h"
#include "middlewarefacade/DsmCCCommandFacade.h"
#include "middlewarefacade/DsmCCCommandListener.h"
#include "middlewarefacade/GraphicsSettingsListener.h"
#include "middlewarefacade/MediaListener.h"
#include "middlewarefacade/PropertyFacade.h"
#include "middlewarefacade/SIFacade.h"
#include "middlewarefacade/TunerFacade.h"
#include "middlewarefacade/VersionFacade.h"
#include "middlewarefacade/VideoFacade.h"
#include "tessarine/Export.h"
#include "tessarine/IpcDemuxServerListener.h"
#include "tessarine/IpcServerListener.h"

namespace tessarine {
class IpcServerManager;
}

// The one class through which the host middleware uses the bridge. Its
// single instance brings up both sockets and serves the application from
// the host's facades. The host deletes it with plain `delete`.
//
// The library exports the five host entry points marked below and the
// class's type information (which a host built with -fsanitize=vptr needs);
// the listener operations stay inside it (cmake/tessarine.map).
class TESSARINE_API MiddlewareIpc final : public tessarine::IpcServerListener,
                            public middlewarefacade::CarouselListener,
                            public tessarine::IpcDemuxServerListener,
                            public middlewarefacade::GraphicsSettingsListener,
                            public middlewarefacade::MediaListener,
                            public middlewarefacade::DsmCCCommandListener {
public:
    // The single adapter, built on first use (screen 1920 x 1080) under a
    // process-wide lock. After `delete`, the next call builds a new one.
    TESSARINE_API static MiddlewareIpc* getInstance();

    // Builds the adapter and brings up the bridge; normally called only by
    // getInstance().
    MiddlewareIpc(int width, int height);
    // Tears the bridge down: prints "deleting middleware ipc", destroys the
    // hub (both servers stop; their threads are gone when this returns),
    // unsubscribes from the video and DSM-CC command facades and releases
    // the facades. Afterwards no bridge thread calls the adapter or a facade.
    TESSARINE_API ~MiddlewareIpc();

    MiddlewareIpc(const MiddlewareIpc&) = delete;
    MiddlewareIpc& operator=(const MiddlewareIpc&) = delete;

    // Asks the client to change its application state; returns its answer
    // byte, or 0 when there is no hub, no client, or the client went away.
    TESSARINE_API int sendAppState(int state);
    // Records the screen size.
    TESSARINE_API void setVideoSize(int width, int height);
    // Asks the video facade for the initial crop rectangles; leaves them
    // untouched without one.
    TESSARINE_API void getInitCropValue(ipcutil::Rectangle_t* first, ipcutil::Rectangle_t* second);

    // tessarine::IpcServerListener, in its slot order.
    void setVideoProperty(tessarine::video_data& data) override;
    int getVideoProperty(tessarine::command code) override;
    void getMainVideoBounds(int& x, int& y, int& width, int& height) override;
    void updateGraphicsRegion(tessarine::video_region region) override;
    std::string getVideoLanguage(tessarine::command code) override;
    std::list<std::string> getVideoLanguages() override;
    std::string getSystemProperty(std::string name) override;
    std::list<tessarine::system_property> getSystemProperties() override;
    void setSystemProperty(tessarine::system_property& property) override;
    void removeSystemProperty(std::string name) override;
    void setVideoAudio(tessarine::audio_data data) override;
    int getCurrentTransportStreamID() override;
    std::list<int> getAllIDs(tessarine::tuner_data& data) override;
    std::string getChannelName(int first, int second) override;
    int getVirtualChannelNumber(int first, int second) override;
    std::string mountCarousel(std::string name) override;
    void umountCarousel(std::string name) override;
    void addCarouselListener() override;
    void removeCarouselListener() override;
    std::string getSICodingFormat() override;
    std::list<tessarine::program_event> getProgramEvents() override;
    tessarine::program_event getProgramEvent() override;
    std::list<tessarine::service> getServices() override;
    int getCurrentService() override;
    std::list<int> getCASystemIds() override;
    bool isProtectedService() override;
    std::string getServiceDescription() override;
    std::list<tessarine::service_component> getServiceComponents(int id) override;
    tessarine::transport_stream getTransportStream() override;
    tessarine::network getNetwork() override;
    std::list<tessarine::descriptor> getNetworkDescriptors() override;
    std::list<tessarine::descriptor> getTransportStreamDescriptors(int id) override;
    std::list<tessarine::descriptor> getServiceDescriptors(int id) override;
    std::list<tessarine::descriptor> getProgramEventDescriptors(int first, int second) override;
    std::list<tessarine::descriptor> getServiceComponentDescriptors(int id) override;
    std::list<tessarine::pmt> getPMTs(int id) override;
    bool open(std::string locator, int& handle) override;
    int getDuration(int handle) override;
    int getCurrentTime(int handle) override;
    int setCurrentTime(int handle, int first, int second) override;
    void addMediaListener(int handle) override;
    bool play(int handle) override;
    void stop(int handle) override;
    void close(int handle) override;
    int setMediaBounds(int handle, int x, int y, int width, int height) override;
    void getMediaBounds(int handle, int& x, int& y, int& width, int& height) override;
    void setMediaFreeze(int handle, bool freeze) override;
    void setMediaBalanceLevel(int handle, double level) override;
    void setMediaSoundLevel(int handle, double level) override;
    void setMediaMute(int handle, bool mute) override;
    void setMediaBassLevel(int handle, double level) override;
    void setMediaTrebleLevel(int handle, double level) override;
    int checkVersionFlag(int flag) override;

    // middlewarefacade::MediaListener.
    void endOfMedia(int handle) override;
    // middlewarefacade::CarouselListener.
    void downloadComplete(std::string first) override;
    void downloadComplete(std::string first, std::string second) override;
    // tessarine::IpcDemuxServerListener.
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
    // middlewarefacade::GraphicsSettingsListener.
    void graphicsSettingsChanged(ipcutil::Rectangle_t first, ipcutil::Rectangle_t second) override;
    // middlewarefacade::DsmCCCommandListener.
    void commandReceived(const ipcutil::DsmCCCommand_t& command) override;

private:
    // Written by the host's threads, read by the bridge's: each is read
    // either as null or as a fully built facade.
    std::atomic<int> screenWidth_;
    std::atomic<int> screenHeight_;
    std::atomic<tessarine::IpcServerManager*> hub_{nullptr};
    std::atomic<middlewarefacade::VideoFacade*> video_{nullptr};
    std::atomic<middlewarefacade::PropertyFacade*> property_{nullptr};
    std::atomic<middlewarefacade::SIFacade*> si_{nullptr};
    std::atomic<middlewarefacade::CarouselFacade*> carousel_{nullptr};
    std::atomic<middlewarefacade::DemuxFacade*> demux_{nullptr};
    std::atomic<middlewarefacade::TunerFacade*> tuner_{nullptr};
    std::atomic<middlewarefacade::DsmCCCommandFacade*> dsmcc_{nullptr};
    std::atomic<middlewarefacade::VersionFacade*> version_{nullptr};
};
