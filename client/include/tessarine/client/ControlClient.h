#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tessarine/client/Error.h"
#include "tessarine/client/Events.h"
#include "tessarine/client/Export.h"
#include "tessarine/client/Options.h"
#include "tessarine/client/Rectangle.h"
#include "tessarine/client/Result.h"
#include "tessarine/client/ServiceInformation.h"
#include "tessarine/client/SystemProperty.h"

namespace tessarine {
namespace client {

// One piece of what the bridge sent back to a raw request: a whole 1960-byte
// record, or the trailing bytes that followed one.
struct RawFrame {
    bool isRecord = true;
    std::vector<std::uint8_t> bytes;
};

// A client of the bridge's control channel.
//
// Calls: every call returns a Result; nothing is thrown. The protocol has no
// request identifiers, so the calls of one client are serialised: a call
// waits for the one before it to finish (that wait counts against its time
// limit). Use several clients for parallel calls only if the bridge serves
// several (it serves one at a time).
//
// Time limits: each call takes an optional Timeout; without one the
// client's default (ClientOptions::timeout) applies. A call that runs out of
// time fails with TimedOut and closes the connection, since a late answer
// could otherwise be taken for the answer to a later call.
//
// Connection: the first call connects. A lost connection fails the waiting
// call with ConnectionLost; the next call connects again, so a restarted
// bridge needs no restart of the application.
//
// Events: the callbacks run on the client's event thread, one at a time, in
// arrival order, with no lock of the library held, so they may call the
// client. Events arrive only while connected (connect() connects without a
// call). Do not destroy the client from one of its callbacks.
class TESSARINE_CLIENT_API ControlClient {
public:
    explicit ControlClient(ClientOptions options = {});
    ~ControlClient();
    ControlClient(const ControlClient&) = delete;
    ControlClient& operator=(const ControlClient&) = delete;

    const ClientOptions& options() const;

    // Connects now (calls connect on their own when needed).
    Result<void> connect(Timeout timeout = {});
    // Closes the connection once the events already received have reached
    // their callbacks and any application-state answer has been sent
    // (waiting at most the time limit; from a callback, at once).
    void disconnect();
    bool connected() const;

    // ---- Events (callbacks may be set or replaced at any time) ----
    void onDownloadComplete(std::function<void(const DownloadComplete&)> callback);
    void onGraphicsSettings(std::function<void(const GraphicsSettings&)> callback);
    void onEndOfMedia(std::function<void(const EndOfMedia&)> callback);
    void onDsmccCommand(std::function<void(const DsmccCommand&)> callback);
    // The bridge asks the application to enter `state` and waits for the
    // returned byte. Without a callback the client answers 0 (not handled).
    void onAppStateRequest(std::function<std::uint8_t(std::int32_t state)> callback);
    // The connection ended without this client closing it.
    void onDisconnected(std::function<void(const Error&)> callback);

    // ---- Version ----
    // The bridge's verdict on `flag`: non-zero when it supports it.
    Result<std::uint8_t> checkVersion(std::int32_t flag, Timeout timeout = {});

    // ---- Main video and graphics ----
    Result<void> setVideoBounds(const Rectangle& bounds, Timeout timeout = {});
    // Fields the bridge leaves unknown are -1.
    Result<Rectangle> videoBounds(Timeout timeout = {});
    Result<void> resetVideo(Timeout timeout = {});
    // `which` is 3 or 5, the two language queries of the bridge.
    Result<std::string> videoLanguage(std::int32_t which, Timeout timeout = {});
    Result<std::vector<std::string>> videoLanguages(Timeout timeout = {});
    Result<void> setVideoText(const std::string& text, Timeout timeout = {});
    // `which` is 7 or 8, the two video flags.
    Result<void> setVideoFlag(std::int32_t which, bool flag, Timeout timeout = {});
    // `which` is 9 to 16; empty when the bridge has no value.
    Result<std::optional<std::int32_t>> videoRate(std::int32_t which, Timeout timeout = {});
    Result<void> applyGraphicsSettings(Timeout timeout = {});
    Result<void> updateGraphicsRegion(const Rectangle& region, Timeout timeout = {});

    // ---- System properties ----
    // Empty when the bridge knows no (or an empty) value.
    Result<std::optional<std::string>> systemProperty(const std::string& name, Timeout timeout = {});
    Result<std::vector<SystemProperty>> systemProperties(Timeout timeout = {});
    Result<void> setSystemProperty(const std::string& name, const std::string& value, Timeout timeout = {});
    Result<void> removeSystemProperty(const std::string& name, Timeout timeout = {});

    // ---- Audio of the main video ----
    Result<void> setSoundLevel(double level, Timeout timeout = {});
    Result<void> setBalanceLevel(double level, Timeout timeout = {});
    Result<void> setBassLevel(double level, Timeout timeout = {});
    Result<void> setTrebleLevel(double level, Timeout timeout = {});
    Result<void> setMute(bool mute, Timeout timeout = {});

    // ---- Tuner ----
    Result<std::optional<std::int32_t>> currentTransportStreamId(Timeout timeout = {});
    // Identifiers of `kind` (1 to 4) for `parameter`.
    Result<std::vector<std::int32_t>> tunerIds(std::int32_t kind, std::int32_t parameter, Timeout timeout = {});

    // ---- Object carousels ----
    // The mount point, or empty when the carousel could not be mounted.
    Result<std::optional<std::string>> mountCarousel(const std::string& name, Timeout timeout = {});
    Result<void> unmountCarousel(const std::string& name, Timeout timeout = {});
    // Asks for (or stops) download-complete events.
    Result<void> addCarouselListener(Timeout timeout = {});
    Result<void> removeCarouselListener(Timeout timeout = {});

    // ---- Media players (handles come from openMedia) ----
    // The new player's handle, or empty when it could not be opened.
    // The locator holds at most 1943 characters.
    Result<std::optional<std::int32_t>> openMedia(const std::string& locator, Timeout timeout = {});
    Result<std::optional<std::int32_t>> mediaDuration(std::int32_t handle, Timeout timeout = {});
    Result<std::optional<std::int32_t>> mediaCurrentTime(std::int32_t handle, Timeout timeout = {});
    Result<std::optional<std::int32_t>> setMediaCurrentTime(std::int32_t handle, std::int32_t first,
                                                            std::int32_t second, Timeout timeout = {});
    // Asks for end-of-media events of this player.
    Result<void> addMediaListener(std::int32_t handle, Timeout timeout = {});
    Result<bool> playMedia(std::int32_t handle, Timeout timeout = {});
    Result<void> closeMedia(std::int32_t handle, Timeout timeout = {});
    Result<void> stopMedia(std::int32_t handle, Timeout timeout = {});
    Result<std::optional<std::int32_t>> setMediaBounds(std::int32_t handle, const Rectangle& bounds,
                                                       Timeout timeout = {});
    // Fields the bridge leaves unknown are -1.
    Result<Rectangle> mediaBounds(std::int32_t handle, Timeout timeout = {});
    Result<void> setMediaFreeze(std::int32_t handle, bool freeze, Timeout timeout = {});
    Result<void> setMediaBalanceLevel(std::int32_t handle, double level, Timeout timeout = {});
    Result<void> setMediaSoundLevel(std::int32_t handle, double level, Timeout timeout = {});
    Result<void> setMediaMute(std::int32_t handle, bool mute, Timeout timeout = {});
    Result<void> setMediaBassLevel(std::int32_t handle, double level, Timeout timeout = {});
    Result<void> setMediaTrebleLevel(std::int32_t handle, double level, Timeout timeout = {});

    // ---- Service information ----
    Result<std::string> siCodingFormat(Timeout timeout = {});
    Result<std::vector<ProgramEvent>> programEvents(Timeout timeout = {});
    // Empty when there is no current event.
    Result<std::optional<ProgramEvent>> programEvent(Timeout timeout = {});
    Result<std::vector<Descriptor>> programEventDescriptors(std::int32_t first, std::int32_t second,
                                                            Timeout timeout = {});
    Result<std::vector<std::int32_t>> caSystemIds(Timeout timeout = {});
    Result<bool> isProtectedService(Timeout timeout = {});
    Result<std::vector<Service>> services(Timeout timeout = {});
    Result<std::optional<std::int32_t>> currentService(Timeout timeout = {});
    Result<std::string> serviceDescription(Timeout timeout = {});
    Result<std::vector<ServiceComponent>> serviceComponents(std::int32_t service, Timeout timeout = {});
    Result<std::vector<Descriptor>> serviceComponentDescriptors(std::int32_t component, Timeout timeout = {});
    Result<std::optional<TransportStream>> transportStream(Timeout timeout = {});
    Result<std::vector<Descriptor>> transportStreamDescriptors(std::int32_t transportStream, Timeout timeout = {});
    Result<std::optional<Network>> network(Timeout timeout = {});
    Result<std::vector<Descriptor>> networkDescriptors(Timeout timeout = {});
    Result<std::vector<Pmt>> pmts(std::int32_t service, Timeout timeout = {});

    // ---- Debugging ----
    // Sends a record of any type and code whose bytes from 12 on are
    // `payload` (at most 1948 bytes) and returns what comes back. A request
    // the bridge answers is framed as that answer; for any other the first
    // record that is not an event is taken, and silence until the time limit
    // is an empty answer.
    Result<std::vector<RawFrame>> raw(std::int32_t type, std::int32_t code, const std::vector<std::uint8_t>& payload,
                                      Timeout timeout = {});

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace client
}  // namespace tessarine
