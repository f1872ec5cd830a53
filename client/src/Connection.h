#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <iterator>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <variant>

#include "CallGate.h"
#include "Expectation.h"
#include "Socket.h"
#include "StreamReader.h"
#include "tessarine/client/Error.h"
#include "tessarine/client/Events.h"
#include "tessarine/FileDescriptor.h"
#include "tessarine/client/Options.h"
#include "tessarine/client/Result.h"
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

// The party that receives events and hears of the connection's end; called
// on whichever thread holds the connection's reading turn.
class ConnectionSink {
public:
    virtual ~ConnectionSink() = default;
    virtual void eventArrived(Event event) = 0;
    // The connection is over (told once). `deliberate` is true when this
    // side gave it up or closed it.
    virtual void connectionEnded(const Error& reason, bool deliberate) = 0;
};

// One connection to the control socket, read by whoever holds its reading
// turn: the calling thread while a call waits for its answer, otherwise the
// connection's reader thread (see Connection.cpp). Either frames the stream
// into answers and events in the same way.
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
    // Sends `request` and reads on this thread until the answer that
    // `expected` describes (none: only sends), passing events on as they
    // come. A failure gives the connection up (it cannot be used again),
    // except that with `silenceIsAnswer` a deadline that passes before any
    // answer began gives an empty answer and keeps it. One call at a time.
    Result<Answer> call(const message& request, const Expectation* expected, Clock::time_point deadline,
                        bool silenceIsAnswer);
    // False once the connection has ended or been given up.
    bool alive() const { return alive_.load(); }
    // Shuts the socket down and waits for the reader. Not from the reader.
    void close();

private:
    Connection(FileDescriptor fd, FileDescriptor watcher, const ClientOptions& options, ConnectionSink& sink);

    void run();
    // The reader thread's part: everything that has arrived, no more.
    std::optional<Error> readArrived();
    // Waits until no call has ended for QUIET_BEFORE_WATCHING (or the
    // connection is closing); false when closing.
    bool awaitQuiet();
    // Reads what has arrived and re-arms, once calls have paused; false
    // when the connection is over (`reason` says why, when it failed here).
    bool readWhenQuiet(Error& reason);
    // When calls will have paused for QUIET_BEFORE_WATCHING, if no other ends.
    Clock::time_point quietAt() const;
    // Wakes the reader wherever it waits (closing).
    void wakeReader();
    // Arms the reader thread's one-shot registration of the socket again.
    void rearm();
    // The connection is over: no one reads it again; the sink hears once.
    void end(const Error& reason);
    // This side gives the connection up: nobody reads it again, and its end
    // is told as deliberate.
    void giveUp();
    // Gives the connection up when the request does not go out whole.
    std::optional<Error> sendRequest(const message& request, Clock::time_point deadline);
    // Each returns the fault that ends the connection, if any. `expected`
    // is the awaited answer (null when no call waits), completed into `answer`.
    std::optional<Error> handle(const message& record, std::unique_ptr<message>& next, const Expectation* expected,
                                std::optional<Answer>& answer);
    std::optional<Error> handleListHeader(const message& header, std::unique_ptr<message>& next,
                                          const Expectation* expected, std::optional<Answer>& answer);
    std::optional<Error> readList(const Expectation& expected, const message& header, const message& first,
                                  std::optional<Answer>& answer);
    // The element counts of each trailing part that `record` announces, read
    // at the offsets of the count fields (looked up once per answer).
    using TrailingCounts = std::array<std::uint32_t, std::size(protocol::PROGRAM_EVENT_TRAILING)>;
    static TrailingCounts countOffsets(const Expectation& expected);
    static TrailingCounts countsOf(const TrailingCounts& offsets, const unsigned char* record);
    std::optional<Error> readTrailing(const Expectation& expected, const TrailingCounts& counts, Answer& answer);
    // `into` is a byte vector or a string.
    template <typename Bytes>
    std::optional<Error> readBytes(std::size_t count, Bytes& into);
    std::optional<Error> readTrailingPiece(void* data, std::size_t length);
    std::optional<Error> readRecord(message& record, bool insideAnswer);
    // The next record of an answer where it lies in the read buffer (valid
    // until the next read), or null and the fault.
    const unsigned char* nextItem(std::optional<Error>& fault);
    // Exactly `length` bytes; the texts say what a closed or failed stream means here.
    std::optional<Error> readPiece(void* data, std::size_t length, const char* closed, const char* failed);
    static std::optional<Error> faultOf(IoStatus status, const char* closed, const char* failed);
    void handleDsmcc(const message& record);
    void startDsmcc(std::int32_t count);

    FileDescriptor fd_;
    FileDescriptor watcher_;  // epoll: the reader thread waits on it
    ClientOptions options_;
    ConnectionSink& sink_;
    std::mutex sendMutex_;
    std::thread reader_;
    std::atomic<bool> alive_{true};
    std::atomic<bool> closing_{false};
    std::atomic<bool> ended_{false};
    // When the last call ended (steady clock ticks); the reader re-arms its
    // registration only once calls have paused.
    std::atomic<Clock::rep> lastCallEnd_{0};
    std::mutex parkMutex_;
    std::condition_variable parked_;

    // Whoever holds the turn owns everything below.
    CallGate turn_;
    StreamReader input_;
    std::optional<Clock::time_point> deadline_;  // a call's; the reader waits without one
    std::size_t answerBytes_ = 0;                // trailing bytes of the answer being read
    // A chunked DSM-CC command being reassembled.
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
