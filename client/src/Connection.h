#pragma once

#include <array>
#include <atomic>
#include <iterator>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <variant>

#include "Expectation.h"
#include "Socket.h"
#include "StreamReader.h"
#include "tessarine/client/Error.h"
#include "tessarine/client/Events.h"
#include "tessarine/FileDescriptor.h"
#include "tessarine/client/Options.h"
#include "tessarine/message.h"

namespace tessarine {
namespace client {
namespace detail {

class Connection;

// The bridge asks for a new application state; the answer goes back on the
// connection that asked, if it still exists.
struct AppStateRequest {
    std::int32_t state = 0;
    std::weak_ptr<Connection> connection;
};

using Event = std::variant<DownloadComplete, GraphicsSettings, EndOfMedia, DsmccCommand, AppStateRequest>;

// The party that waits for answers and receives events; called on the
// connection's reader thread only.
class ConnectionSink {
public:
    virtual ~ConnectionSink() = default;
    // The waiting call's token and expectation, if a call waits.
    virtual std::optional<std::pair<std::uint64_t, Expectation>> pendingCall() = 0;
    virtual void answerArrived(std::uint64_t token, Answer answer) = 0;
    virtual void eventArrived(Event event) = 0;
    // The connection is over; a waiting call fails with `reason`.
    // `deliberate` is true when this side closed it.
    virtual void connectionEnded(const Error& reason, bool deliberate) = 0;
};

// One connection to the control socket and its reader thread, which frames
// the stream into answers and events.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    // Connects and starts the reader. Errors: NotConnected, TimedOut.
    static std::shared_ptr<Connection> open(const ClientOptions& options, ConnectionSink& sink,
                                            Clock::time_point deadline, std::optional<Error>& error);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Sends one whole record; safe from any thread.
    IoStatus send(const message& record, Clock::time_point deadline);
    // False once the reader has seen the end of the stream or a protocol fault.
    bool alive() const { return alive_.load(); }
    // Shuts the socket down and waits for the reader. Not from the reader.
    void close();

private:
    Connection(FileDescriptor fd, const ClientOptions& options, ConnectionSink& sink);

    void run();
    // Each returns the fault that ends the connection, if any.
    std::optional<Error> handle(const message& record, std::optional<message>& next);
    std::optional<Error> handleListHeader(const message& header, std::optional<message>& next);
    std::optional<Error> readList(const Expectation& expected, std::uint64_t token, const message& header,
                                  const message& first);
    // The element counts of each trailing part that `record` announces.
    using TrailingCounts = std::array<std::uint32_t, std::size(protocol::PROGRAM_EVENT_TRAILING)>;
    static TrailingCounts countsOf(const Expectation& expected, const message& record);
    std::optional<Error> readTrailing(const Expectation& expected, const TrailingCounts& counts, Answer& answer);
    // `into` is a byte vector or a string.
    template <typename Bytes>
    std::optional<Error> readBytes(std::size_t count, Bytes& into);
    std::optional<Error> readRecord(message& record, bool insideAnswer);
    void handleDsmcc(const message& record);
    void startDsmcc(std::int32_t count);

    FileDescriptor fd_;
    StreamReader input_;  // the reader thread's only
    ClientOptions options_;
    ConnectionSink& sink_;
    std::mutex sendMutex_;
    std::thread reader_;
    std::atomic<bool> alive_{true};
    std::atomic<bool> closing_{false};
    std::size_t answerBytes_ = 0;  // trailing bytes of the answer being read

    // A chunked DSM-CC command being reassembled (reader thread only).
    struct PartialDsmcc {
        std::int32_t remaining = 0;
        bool started = false;
        DsmccCommand command;
    };
    std::optional<PartialDsmcc> dsmcc_;
};

}  // namespace detail
}  // namespace client
}  // namespace tessarine
