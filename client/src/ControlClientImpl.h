#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "CallGate.h"
#include "Connection.h"
#include "EventDispatcher.h"
#include "Expectation.h"
#include "tessarine/client/ControlClient.h"

namespace tessarine {
namespace client {

// The state behind a ControlClient. Lock order: a pass of calls_ (held for
// a whole call), then stateMutex_ (short sections only). Neither is held
// while a callback runs; no reader thread is joined under stateMutex_.
class ControlClient::Impl : private detail::ConnectionSink {
public:
    explicit Impl(ClientOptions options);
    ~Impl() override;

    // A cleared request record.
    static message request(std::int32_t type, std::int32_t code);

    // Sends `record` and waits for the answer that the protocol gives it (or
    // for nothing, when the request has none).
    Result<detail::Answer> call(const message& record, Timeout timeout);
    // As call(), with an explicit expectation; `silenceIsAnswer` turns a
    // time-out into an empty answer (raw requests of unknown shape).
    Result<detail::Answer> call(const message& record, std::optional<detail::Expectation> expected,
                                Timeout timeout, bool silenceIsAnswer);

    // A request that the bridge does not answer.
    Result<void> command(const message& record, Timeout timeout);
    // The one record that answers `record`.
    Result<message> single(const message& record, Timeout timeout);
    // Writes a text into a 255-byte field; texts that the field cannot
    // carry whole are refused rather than cut into another name.
    static std::optional<Error> putText(message& record, std::size_t offset, const std::string& text);
    // -1 is the bridge's "no value".
    static std::optional<std::int32_t> valid(std::int32_t value) {
        return value == -1 ? std::nullopt : std::optional<std::int32_t>(value);
    }

    Result<void> connect(Timeout timeout);
    void disconnect();
    bool connected() const;

    const ClientOptions options;

    // Callbacks, guarded by callbackMutex_. A change replaces the whole set,
    // so an event takes a reference to the current set instead of copying
    // every function.
    struct Callbacks {
        std::function<void(const DownloadComplete&)> downloadComplete;
        std::function<void(const GraphicsSettings&)> graphicsSettings;
        std::function<void(const EndOfMedia&)> endOfMedia;
        std::function<void(const DsmccCommand&)> dsmcc;
        std::function<std::uint8_t(std::int32_t)> appState;
        std::function<void(const Error&)> disconnected;
    };
    template <typename Setter>
    void setCallback(Setter setter) {
        std::lock_guard<std::mutex> lock(callbackMutex_);
        auto next = std::make_shared<Callbacks>(*callbacks_);
        setter(*next);
        callbacks_ = std::move(next);
    }

private:
    using Clock = detail::Clock;

    // ConnectionSink, on the thread that reads the connection.
    void eventArrived(detail::Event event) override;
    void connectionEnded(const Error& reason, bool deliberate) override;

    Clock::time_point deadlineOf(Timeout timeout) const;
    // With a pass of calls_.
    Result<std::shared_ptr<detail::Connection>> ensureConnected(Clock::time_point deadline);
    void dropConnection();
    std::shared_ptr<const Callbacks> currentCallbacks();
    void dispatch(detail::Event event);

    detail::CallGate calls_;
    mutable std::mutex stateMutex_;
    std::shared_ptr<detail::Connection> connection_;  // guarded by stateMutex_

    std::mutex callbackMutex_;
    std::shared_ptr<const Callbacks> callbacks_ = std::make_shared<const Callbacks>();
    // Last member: destroyed (and its thread stopped) first.
    std::unique_ptr<detail::EventDispatcher> dispatcher_;
};

}  // namespace client
}  // namespace tessarine
