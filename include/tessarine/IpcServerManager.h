#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "ipcutil/DsmCCCommand_t.h"
#include "ipcutil/Rectangle_t.h"
#include "tessarine/ConnectionListener.h"
#include "tessarine/Export.h"
#include "tessarine/IpcDemuxServer.h"
#include "tessarine/IpcDemuxServerListener.h"
#include "tessarine/IpcListener.h"
#include "tessarine/IpcServer.h"
#include "tessarine/IpcServerListener.h"

namespace tessarine {

template <typename Listener>
class FanOut;
struct HubContext;

// The process-wide hub of the control channel. It owns both socket servers,
// consumes every control record, asks its registered IpcServerListeners by
// fixed fan-out rules, answers the client, and sends events and the
// application-state request on the host's behalf.
class TESSARINE_API IpcServerManager : public IpcListener {
public:
    // The single hub, built on first use (which binds both sockets and starts
    // their threads). Safe from any thread; nobody sees a half-built hub.
    static IpcServerManager* getInstance();
    // Deletes the hub, if any: stops both servers and their threads, empties
    // the registries without calling any listener. A later getInstance()
    // builds a new hub that binds both sockets anew.
    static void destroy();

    // Where the next hub puts its sockets ("ipc.socket", "ipcdemux.socket").
    // The default is "/dev/shm", the production location. Takes effect for
    // the next hub built; returns false (and changes nothing) while a hub
    // exists or when a socket path would exceed 107 characters.
    static bool setSocketDirectory(const std::string& directory);
    static std::string socketDirectory();

    // Registries, ordered by address. Adding a present pointer or removing an
    // absent one changes nothing. Listeners are not owned.
    void addIpcServerListener(IpcServerListener* listener);
    void removeIpcServerListener(IpcServerListener* listener);
    void addConnectionListener(ConnectionListener* listener);
    void removeConnectionListener(ConnectionListener* listener);
    // Hands the listener straight to the demux server; no lock, no copy.
    void addIpcDemuxServerListener(IpcDemuxServerListener* listener);
    // Hands the listener to the demux server, which tells it when a section
    // client connects and when it has gone, even while a section read is in
    // progress (IpcDemuxServer::setConnectionListener). A host whose reads
    // wait ends them then. Null: nobody, and nothing is watched.
    void setDemuxConnectionListener(ConnectionListener* listener);

    // IpcListener: the dispatcher and connection events (control server thread).
    void update(message& record) override;
    void update(std::list<message> records) override;
    void clientConnected() override;
    void clientDisconnected() override;

    // Queries: each asks the listeners by its rule under the listener lock.
    // Video, property, tuner and carousel.
    void getMainVideoBounds(int& x, int& y, int& width, int& height);  // until all four set; not preset
    std::string getVideoLanguage(command code);                        // first non-empty
    std::list<std::string> getVideoLanguages();                        // first non-empty
    int getVideoRate(command code);                                    // first valid, asks getVideoProperty
    std::string getSystemProperty(std::string name);                   // first non-empty
    std::list<system_property> getSystemProperties();                  // first non-empty
    int getCurrentTransportStreamID();                                 // first valid
    std::list<int> getAllIDs(tuner_data& data);                        // first non-empty
    std::string getChannelName(int first, int second);                 // first non-empty
    int getVirtualChannelNumber(int first, int second);                // first valid
    std::string mountCarousel(std::string name);                       // first non-empty
    void umountCarousel(std::string name);                             // all

    // Service information.
    std::string getSICodingFormat();                                   // first non-empty
    std::list<program_event> getProgramEvents();                       // first non-empty
    program_event getProgramEvent();                                   // first complete (value1 != -1)
    std::list<service> getServices();                                  // first non-empty
    int getCurrentService();                                           // first valid
    std::list<int> getCASystemIds();                                   // first non-empty
    bool isProtectedService();                                         // first true
    std::string getServiceDescription();                               // first non-empty
    std::list<service_component> getServiceComponents(int id);         // first non-empty
    transport_stream getTransportStream();                             // first complete (value1 != -1)
    network getNetwork();                                              // first complete (value0 != -1)
    std::list<descriptor> getNetworkDescriptors();                     // first non-empty
    std::list<descriptor> getTransportStreamDescriptors(int id);       // first non-empty
    std::list<descriptor> getServiceDescriptors(int id);               // first non-empty
    std::list<descriptor> getProgramEventDescriptors(int first, int second);  // first non-empty
    std::list<descriptor> getServiceComponentDescriptors(int id);      // first non-empty
    std::list<pmt> getPMTs(int id);                                    // first non-empty

    // Media players.
    bool open(std::string locator, int& handle);                       // first true
    int getDuration(int handle);                                       // first valid
    int getCurrentTime(int handle);                                    // first valid
    int setCurrentTime(int handle, int first, int second);             // first valid
    void addMediaListener(int handle);                                 // all
    bool play(int handle);                                             // first true
    void stop(int handle);                                             // all
    void close(int handle);                                            // all
    int setMediaBounds(int handle, int x, int y, int width, int height);       // first valid
    void getMediaBounds(int handle, int& x, int& y, int& width, int& height);  // all
    void setMediaFreeze(int handle, bool freeze);                      // all
    void setMediaBalanceLevel(int handle, double level);               // all
    void setMediaSoundLevel(int handle, double level);                 // all
    void setMediaMute(int handle, bool mute);                          // all
    void setMediaBassLevel(int handle, double level);                  // all
    void setMediaTrebleLevel(int handle, double level);                // all

    int checkVersionFlag(int flag);                                    // first true (non-zero)

    // Events to the client, from any thread; true when sent. Lost when no
    // client is connected.
    bool downloadComplete(std::string first, std::string second);
    bool changeGraphicsSettings(ipcutil::Rectangle_t first, ipcutil::Rectangle_t second);
    bool endOfMedia(int handle);
    // One record, or a header and chunks for texts above 1920 characters;
    // calls are serialised. True when the last record was sent.
    bool sendDsmCCCommand(ipcutil::DsmCCCommand_t command);
    // How many of the events above reached the client whole since this hub
    // was built. The listener operations through which a host raises events
    // return nothing, so this is how the host learns what went out.
    std::uint64_t eventsSent() const;

    // Asks the client to change its application state and waits for its
    // answer byte. Returns 0 at once when the request cannot be sent, and 0
    // when the client disconnects or the hub is destroyed while waiting.
    // Overlapping calls are serialised. Never call it from a listener
    // operation or the control server's thread.
    int setApplicationState(int state);

    // Copies every record, command word, filter and section of both channels
    // into a pcapng file at `path`, at most `maxBytes` bytes (0: 64 MiB), from
    // a writer thread of its own; serving never waits for the file. A hub
    // built with TESSARINE_CAPTURE=FILE in the environment starts one itself
    // (TESSARINE_CAPTURE_MAX: the limit in bytes). False, with a line on
    // stderr, when the file cannot be created or a capture is running.
    bool startCapture(const std::string& path, std::uint64_t maxBytes = 0);
    // Ends the capture: the file gets its closing statistics (records
    // dropped, if any, also on stderr). The hub's destruction ends it too.
    void stopCapture();

    virtual ~IpcServerManager();

    IpcServerManager(const IpcServerManager&) = delete;
    IpcServerManager& operator=(const IpcServerManager&) = delete;

private:
    IpcServerManager(const std::string& controlPath, const std::string& demuxPath);

    // The request listeners under the process-wide listener lock: every
    // query and broadcast goes through this, by one of its rules.
    FanOut<IpcServerListener> requestListeners();
    // Counts an event that was sent; returns `sent`.
    bool counted(bool sent);
    // Hands a known record to its request family.
    void dispatch(const HubContext& context, message& record);

    std::unique_ptr<IpcServer> server_;
    std::unique_ptr<IpcDemuxServer> demuxServer_;
    std::set<IpcServerListener*> listeners_;
    std::set<ConnectionListener*> connectionListeners_;
    std::mutex dsmccLock_;  // the records of two DSM-CC commands never interleave
    std::atomic<std::uint64_t> eventsSent_{0};
};

}  // namespace tessarine
