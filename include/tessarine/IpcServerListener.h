#pragma once

#include <list>
#include <string>

#include "tessarine/Export.h"
#include "tessarine/audio_data.h"
#include "tessarine/command.h"
#include "tessarine/descriptor.h"
#include "tessarine/network.h"
#include "tessarine/pmt.h"
#include "tessarine/program_event.h"
#include "tessarine/service.h"
#include "tessarine/service_component.h"
#include "tessarine/system_property.h"
#include "tessarine/transport_stream.h"
#include "tessarine/tuner_data.h"
#include "tessarine/video_data.h"
#include "tessarine/video_region.h"

namespace tessarine {

// A party that serves control requests (in this system the middleware
// adapter). The hub asks every registered listener by a fixed fan-out rule,
// noted per operation. The 53 operations are in their binary slot order; no
// destructor is among them. Operations run with the hub's listener lock
// held: they must not call hub operations that take it.
class TESSARINE_API IpcServerListener {
public:
    virtual void setVideoProperty(video_data& data) = 0;                         // 0  all
    virtual int getVideoProperty(command code) = 0;                              // 1  first valid
    virtual void getMainVideoBounds(int& x, int& y, int& width, int& height) = 0; // 2  until all four set
    virtual void updateGraphicsRegion(video_region region) = 0;                  // 3  all
    virtual std::string getVideoLanguage(command code) = 0;                      // 4  first non-empty
    virtual std::list<std::string> getVideoLanguages() = 0;                      // 5  first non-empty
    virtual std::string getSystemProperty(std::string name) = 0;                 // 6  first non-empty
    virtual std::list<system_property> getSystemProperties() = 0;                // 7  first non-empty
    virtual void setSystemProperty(system_property& property) = 0;               // 8  all
    virtual void removeSystemProperty(std::string name) = 0;                     // 9  all
    virtual void setVideoAudio(audio_data data) = 0;                             // 10 all
    virtual int getCurrentTransportStreamID() = 0;                               // 11 first valid
    virtual std::list<int> getAllIDs(tuner_data& data) = 0;                      // 12 first non-empty
    virtual std::string getChannelName(int first, int second) = 0;               // 13 first non-empty
    virtual int getVirtualChannelNumber(int first, int second) = 0;              // 14 first valid
    virtual std::string mountCarousel(std::string name) = 0;                     // 15 first non-empty
    virtual void umountCarousel(std::string name) = 0;                           // 16 all
    virtual void addCarouselListener() = 0;                                      // 17 all
    virtual void removeCarouselListener() = 0;                                   // 18 all
    virtual std::string getSICodingFormat() = 0;                                 // 19 first non-empty
    virtual std::list<program_event> getProgramEvents() = 0;                     // 20 first non-empty
    virtual program_event getProgramEvent() = 0;                                 // 21 first complete
    virtual std::list<service> getServices() = 0;                                // 22 first non-empty
    virtual int getCurrentService() = 0;                                         // 23 first valid
    virtual std::list<int> getCASystemIds() = 0;                                 // 24 first non-empty
    virtual bool isProtectedService() = 0;                                       // 25 first true
    virtual std::string getServiceDescription() = 0;                             // 26 first non-empty
    virtual std::list<service_component> getServiceComponents(int id) = 0;       // 27 first non-empty
    virtual transport_stream getTransportStream() = 0;                           // 28 first complete
    virtual network getNetwork() = 0;                                            // 29 first complete
    virtual std::list<descriptor> getNetworkDescriptors() = 0;                   // 30 first non-empty
    virtual std::list<descriptor> getTransportStreamDescriptors(int id) = 0;     // 31 first non-empty
    virtual std::list<descriptor> getServiceDescriptors(int id) = 0;             // 32 first non-empty
    virtual std::list<descriptor> getProgramEventDescriptors(int first, int second) = 0;  // 33 first non-empty
    virtual std::list<descriptor> getServiceComponentDescriptors(int id) = 0;    // 34 first non-empty
    virtual std::list<pmt> getPMTs(int id) = 0;                                  // 35 first non-empty
    virtual bool open(std::string locator, int& handle) = 0;                     // 36 first true
    virtual int getDuration(int handle) = 0;                                     // 37 first valid
    virtual int getCurrentTime(int handle) = 0;                                  // 38 first valid
    virtual int setCurrentTime(int handle, int first, int second) = 0;           // 39 first valid
    virtual void addMediaListener(int handle) = 0;                               // 40 all
    virtual bool play(int handle) = 0;                                           // 41 first true
    virtual void stop(int handle) = 0;                                           // 42 all
    virtual void close(int handle) = 0;                                          // 43 all
    virtual int setMediaBounds(int handle, int x, int y, int width, int height) = 0;      // 44 first valid
    virtual void getMediaBounds(int handle, int& x, int& y, int& width, int& height) = 0; // 45 all
    virtual void setMediaFreeze(int handle, bool freeze) = 0;                    // 46 all
    virtual void setMediaBalanceLevel(int handle, double level) = 0;             // 47 all
    virtual void setMediaSoundLevel(int handle, double level) = 0;               // 48 all
    virtual void setMediaMute(int handle, bool mute) = 0;                        // 49 all
    virtual void setMediaBassLevel(int handle, double level) = 0;                // 50 all
    virtual void setMediaTrebleLevel(int handle, double level) = 0;              // 51 all
    virtual int checkVersionFlag(int flag) = 0;                                  // 52 first true

protected:
    ~IpcServerListener() = default;
};

}  // namespace tessarine
