#include "Connection.h"

#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "RecordFields.h"

namespace tessarine {
namespace client {
namespace detail {

// Who reads the socket. Answers carry no identifier and one call is on the
// wire at a time, so the calling thread reads its own answer: the kernel
// wakes it when the answer arrives, with no hand-off from another thread.
// Between calls the reader thread delivers events. It sleeps in epoll_wait on
// a one-shot registration of the socket, and a gate, the turn, says who may
// read. A call takes the turn (waiting at most until its deadline while the
// reader finishes a record it began), sends, reads until its answer (passing
// on the events it meets, in stream order), also takes whole records that
// came in the same read as the answer, notes when it ended and lets the turn
// go. It never touches the registration: that costs two system calls per
// call. Instead the first answer of a run of calls spends the one-shot
// registration and wakes the reader, which waits until calls have paused
// for QUIET_BEFORE_WATCHING, takes the turn, reads what has arrived (a
// record it has begun, to its end), re-arms and sleeps. Re-arming reports
// data already waiting, so an event that came meanwhile wakes it at once.
// Whoever finds a fault ends the connection and tells the sink once; close()
// shuts the socket down and wakes the reader wherever it waits.

namespace {

// How long calls must pause before the reader watches the socket again. A
// run of calls closer together than this costs no epoll_ctl at all; an
// event that lands just after an answer waits at most this long.
constexpr auto QUIET_BEFORE_WATCHING = std::chrono::milliseconds(1);
// While calls go on, the reader looks again after 1 ms, then after twice as
// long each time, up to this: a long run of calls wakes it a few hundred
// times a second at first and then about 125 times, not a thousand (each
// wake-up also slows the calls around it: about 5% here when it was every
// millisecond). An event that lands just after the last answer of such a
// run reaches its callback at most this late.
constexpr auto LONGEST_LOOK_AGAIN = std::chrono::milliseconds(8);

// About 130 records: a list or a run of events is read a buffer-full at a
// time. As large as the bridge's largest answer piece, so that each piece
// of a long list costs one recv (with 64 KiB, four).
constexpr std::size_t READ_BUFFER = 256 * 1024;

// What a stream that stops inside an answer means, closed or failed alike.
constexpr const char* MID_ANSWER = "the connection ended in the middle of an answer";

Error malformed(const std::string& detail) { return Error(ErrorCode::MalformedAnswer, detail); }

// Parts of one kind in the layout with the most of them.
constexpr std::size_t partsOf(protocol::TrailingElement kind) {
    std::size_t parts = 0;
    for (const protocol::TrailingPart& part : protocol::PROGRAM_EVENT_TRAILING) parts += part.element == kind ? 1 : 0;
    return parts;
}
static_assert(partsOf(protocol::TrailingElement::Bytes) <= TrailingData::MAX_PARTS &&
                  partsOf(protocol::TrailingElement::Strings) <= TrailingData::MAX_PARTS,
              "an item's trailing data fits its arrays");

// Whether a record of `type` and `code` is an item of the list that
// `expected` awaits, whose header announced `count` items.
bool isItemOf(const Expectation& expected, std::int32_t type, std::int32_t code, std::int32_t count) {
    if (type != expected.type) return false;
    switch (expected.itemCode) {
    case ItemCode::ItemWord:
        return true;
    case ItemCode::Count:
        return code == count;
    case ItemCode::Fixed:
        return code == expected.code;
    }
    return false;
}

}  // namespace

std::shared_ptr<Connection> Connection::open(const ClientOptions& options, ConnectionSink& sink,
                                             Clock::time_point deadline, std::optional<Error>& error) {
    FileDescriptor fd = connectUnix(options.socketPath, deadline);
    if (!fd.valid()) {
        const int cause = errno;
        error = Error(cause == ETIMEDOUT ? ErrorCode::TimedOut : ErrorCode::NotConnected,
                      "cannot connect to " + options.socketPath + ": " + std::strerror(cause));
        return nullptr;
    }
    FileDescriptor watcher(::epoll_create1(EPOLL_CLOEXEC));
    epoll_event interest{};
    interest.events = EPOLLIN | EPOLLONESHOT;
    if (!watcher.valid() || ::epoll_ctl(watcher.get(), EPOLL_CTL_ADD, fd.get(), &interest) != 0) {
        error = Error(ErrorCode::NotConnected, std::string("cannot watch the connection: ") + std::strerror(errno));
        return nullptr;
    }
    std::shared_ptr<Connection> connection(new Connection(std::move(fd), std::move(watcher), options, sink));
    // Started only now, so that the reader can hand out weak references.
    connection->reader_ = std::thread([raw = connection.get()] { raw->run(); });
    return connection;
}

Connection::Connection(FileDescriptor fd, FileDescriptor watcher, const ClientOptions& options,
                       ConnectionSink& sink)
    : fd_(std::move(fd)),
      watcher_(std::move(watcher)),
      options_(options),
      sink_(sink),
      input_(fd_.get(), READ_BUFFER) {}

Connection::~Connection() { close(); }

void Connection::close() {
    giveUp();
    wakeReader();
    if (reader_.joinable() && reader_.get_id() != std::this_thread::get_id()) reader_.join();
}

void Connection::giveUp() {
    closing_ = true;
    alive_ = false;
    ::shutdown(fd_.get(), SHUT_RDWR);
}

void Connection::end(const Error& reason) {
    alive_ = false;
    ::shutdown(fd_.get(), SHUT_RDWR);
    if (!ended_.exchange(true)) sink_.connectionEnded(reason, closing_.load());
}

void Connection::wakeReader() {
    {
        std::lock_guard<std::mutex> lock(parkMutex_);
    }
    parked_.notify_all();
    // The registration may be spent; the shut socket wakes the reader.
    rearm();
}

Clock::time_point Connection::quietAt() const {
    return Clock::time_point(Clock::duration(lastCallEnd_.load())) + QUIET_BEFORE_WATCHING;
}

bool Connection::awaitQuiet() {
    std::unique_lock<std::mutex> lock(parkMutex_);
    Clock::duration lookAgain = QUIET_BEFORE_WATCHING;
    for (;;) {
        if (closing_) return false;
        const Clock::time_point quiet = quietAt();
        const Clock::time_point now = Clock::now();
        if (now >= quiet) return true;
        parked_.wait_until(lock, std::max(quiet, now + lookAgain));
        lookAgain = std::min<Clock::duration>(lookAgain * 2, LONGEST_LOOK_AGAIN);
    }
}

void Connection::rearm() {
    epoll_event interest{};
    interest.events = EPOLLIN | EPOLLONESHOT;
    ::epoll_ctl(watcher_.get(), EPOLL_CTL_MOD, fd_.get(), &interest);
}

IoStatus Connection::send(const message& record, Clock::time_point deadline) {
    std::lock_guard<std::mutex> lock(sendMutex_);
    if (!alive_) return IoStatus::Closed;
    return writeAll(fd_.get(), record.bytes(), MESSAGE_SIZE, deadline);
}

std::optional<Error> Connection::sendRequest(const message& request, Clock::time_point deadline) {
    switch (send(request, deadline)) {
    case IoStatus::Ok:
        return std::nullopt;
    case IoStatus::TimedOut:
        giveUp();
        return Error(ErrorCode::TimedOut, "the bridge did not take the request within the time limit");
    default:
        giveUp();
        return Error(ErrorCode::ConnectionLost, "the request could not be sent: the connection is gone");
    }
}

Result<Answer> Connection::call(const message& request, const Expectation* expected, Clock::time_point deadline,
                                bool silenceIsAnswer) {
    if (!expected) {
        if (auto failure = sendRequest(request, deadline)) return *failure;
        return Answer{};
    }
    const auto late = [&] {
        return Error(ErrorCode::TimedOut,
                     "no answer to " + describeRecord(request.type, request.code) + " within the time limit");
    };
    std::optional<Error> failure;
    std::optional<Answer> answer;
    {
        // The reader may be finishing a record it began; past the deadline
        // it is stuck in the middle of one.
        CallGate::Pass turn(turn_, deadline);
        if (!turn.granted()) {
            giveUp();
            return late();
        }
        deadline_ = deadline;
        failure = sendRequest(request, deadline);
        const bool sent = !failure;
        // The record after a DSM-CC header, seen while looking for a list
        // (rare): kept apart, so that a call carries no record for it.
        std::unique_ptr<message> next;
        while (!failure && !answer) {
            message record;
            if (next) {
                record = *next;
                next.reset();
            } else if (input_.fill(deadline) == IoStatus::TimedOut) {
                // Nothing of an answer has arrived: the framing is intact.
                if (silenceIsAnswer) {
                    answer = Answer{};
                } else {
                    failure = late();
                }
                break;
            } else if ((failure = readRecord(record, false))) {
                break;
            }
            failure = handle(record, next, expected, answer);
        }
        // Whole records that came in the same read as the answer: the
        // socket will not wake the reader for them. (Without a call a unit
        // is one record; a part of one is completed by the reader.)
        while (answer && !failure && input_.buffered() >= MESSAGE_SIZE) {
            message record;
            std::optional<Answer> unexpected;
            if (!(failure = readRecord(record, false))) failure = handle(record, next, nullptr, unexpected);
        }
        deadline_.reset();
        if (failure && failure->code() == ErrorCode::TimedOut) {
            // Cut off in the middle, or a late answer that could be taken for
            // the answer to the next call.
            if (sent) failure = late();
            giveUp();
        } else if (failure) {
            end(*failure);
        }
        lastCallEnd_ = Clock::now().time_since_epoch().count();
    }
    if (answer) return std::move(*answer);
    return *failure;
}

void Connection::run() {
    Error reason(ErrorCode::ConnectionLost, "the bridge closed the connection");
    for (;;) {
        epoll_event ready{};
        const int woken = ::epoll_wait(watcher_.get(), &ready, 1, -1);
        if (woken < 0 && errno == EINTR) continue;
        if (woken < 0) break;
        // The one-shot registration is spent. Woken by an answer (the first
        // of a run of calls), the reader stays off the socket until calls
        // pause, so that they run without re-arming it.
        if (!readWhenQuiet(reason)) break;
    }
    end(reason);
}

bool Connection::readWhenQuiet(Error& reason) {
    for (;;) {
        if (!awaitQuiet()) return false;
        CallGate::Pass turn(turn_, Clock::time_point::max());
        if (!alive_) return false;
        if (Clock::now() < quietAt()) continue;  // a call came in between
        if (auto fault = readArrived()) {
            reason = *fault;
            return false;
        }
        rearm();
        return true;
    }
}

std::optional<Error> Connection::readArrived() {
    std::unique_ptr<message> next;
    std::optional<Answer> unexpected;
    // A deadline long past: only looks. (The end of the stream, or a
    // failure, is left for the read to report.)
    while (next || input_.fill(Clock::time_point{}) != IoStatus::TimedOut) {
        message record;
        if (next) {
            record = *next;
            next.reset();
        } else if (auto fault = readRecord(record, false)) {
            return fault;
        }
        if (auto fault = handle(record, next, nullptr, unexpected)) return fault;
    }
    return std::nullopt;
}

std::optional<Error> Connection::readRecord(message& record, bool insideAnswer) {
    return readPiece(record.bytes(), MESSAGE_SIZE, insideAnswer ? MID_ANSWER : "the bridge closed the connection",
                     insideAnswer ? MID_ANSWER : "the connection failed");
}

const unsigned char* Connection::nextItem(std::optional<Error>& fault) {
    IoStatus status;
    const unsigned char* record = input_.next(MESSAGE_SIZE, deadline_, status);
    fault = faultOf(status, MID_ANSWER, MID_ANSWER);
    return record;
}

std::optional<Error> Connection::readPiece(void* data, std::size_t length, const char* closed, const char* failed) {
    return faultOf(input_.read(data, length, deadline_), closed, failed);
}

std::optional<Error> Connection::faultOf(IoStatus status, const char* closed, const char* failed) {
    switch (status) {
    case IoStatus::Ok:
        return std::nullopt;
    case IoStatus::TimedOut:
        return Error(ErrorCode::TimedOut, "the answer stopped");
    case IoStatus::Closed:
        return Error(ErrorCode::ConnectionLost, closed);
    default:
        return Error(ErrorCode::ConnectionLost, failed);
    }
}

template <typename Bytes>
std::optional<Error> Connection::readBytes(std::size_t count, Bytes& into) {
    if (count > options_.maxTrailingBytes) {
        return malformed("trailing data of " + std::to_string(count) + " bytes exceeds the limit of " +
                         std::to_string(options_.maxTrailingBytes));
    }
    answerBytes_ += count;
    if (answerBytes_ > options_.maxTrailingBytes * CLIENT_ANSWER_TRAILING_ITEMS) {
        return malformed("the answer's trailing data exceeds its limit");
    }
    into.resize(count);
    return count > 0 ? readTrailingPiece(&into[0], count) : std::nullopt;
}

std::optional<Error> Connection::readTrailingPiece(void* data, std::size_t length) {
    const char* const middle = "the connection ended in the middle of trailing data";
    return readPiece(data, length, middle, middle);
}

Connection::TrailingCounts Connection::countOffsets(const Expectation& expected) {
    // Each part's count is a field of the record; the layout says what it counts.
    TrailingCounts offsets{};
    std::size_t i = 0;
    for (const protocol::TrailingPart& part : protocol::trailingParts(expected.trailing)) {
        offsets[i++] = static_cast<std::uint32_t>(protocol::findField(expected.fields, part.count)->offset);
    }
    return offsets;
}

Connection::TrailingCounts Connection::countsOf(const TrailingCounts& offsets, const unsigned char* record) {
    TrailingCounts counts{};
    for (std::size_t i = 0; i < counts.size(); ++i) counts[i] = valueAt<std::uint32_t>(record, offsets[i]);
    return counts;
}

std::optional<Error> Connection::readTrailing(const Expectation& expected, const TrailingCounts& counts,
                                              Answer& answer) {
    if (expected.trailing == Trailing::None) return std::nullopt;
    TrailingData data;
    std::size_t i = 0, byteParts = 0, stringParts = 0;
    for (const protocol::TrailingPart& part : protocol::trailingParts(expected.trailing)) {
        const std::uint32_t count = counts[i++];
        if (part.element == protocol::TrailingElement::Bytes) {
            if (auto fault = readBytes(count, data.bytes[byteParts++])) return fault;
            continue;
        }
        if (count > options_.maxStringsPerList) {
            return malformed("string list of " + std::to_string(count) + " strings exceeds the limit");
        }
        std::vector<std::string>& strings = data.strings[stringParts++];
        for (std::uint32_t s = 0; s < count; ++s) {
            std::uint32_t length = 0;
            if (auto fault = readTrailingPiece(&length, sizeof length)) return fault;
            std::string text;
            if (auto fault = readBytes(length, text)) return fault;
            strings.push_back(std::move(text));
        }
    }
    answer.trailing.push_back(std::move(data));
    return std::nullopt;
}

std::optional<Error> Connection::handle(const message& record, std::unique_ptr<message>& next,
                                       const Expectation* expected, std::optional<Answer>& answer) {
    const auto type = static_cast<std::uint32_t>(record.type);
    if (type > MSG_VERSION) return malformed("unknown record type " + std::to_string(record.type));

    switch (record.type) {
    case MSG_LIST_HEADER:
        return handleListHeader(record, next, expected, answer);
    case MSG_DSMCC:
        handleDsmcc(record);
        return std::nullopt;
    case MSG_APP_STATE:
        sink_.eventArrived(AppStateRequest{record.code, weak_from_this()});
        return std::nullopt;
    default:
        break;
    }
    // Events are told from answers by type and code: no request is answered
    // with these codes.
    if (record.type == MSG_VIDEO && record.code == VIDEO_GRAPHICS_SETTINGS) {
        sink_.eventArrived(
            GraphicsSettings{rectangleAt(record, GRAPHICS_FIRST_OFFSET), rectangleAt(record, GRAPHICS_SECOND_OFFSET)});
        return std::nullopt;
    }
    if (record.type == MSG_CAROUSEL && record.code == CAROUSEL_DOWNLOAD_COMPLETE) {
        sink_.eventArrived(DownloadComplete{textAt(record, FIRST_TEXT_OFFSET), textAt(record, SECOND_TEXT_OFFSET)});
        return std::nullopt;
    }
    if (record.type == MSG_MEDIA && record.code == MEDIA_END_OF_MEDIA) {
        sink_.eventArrived(EndOfMedia{record.get<std::int32_t>(END_OF_MEDIA_HANDLE_OFFSET)});
        return std::nullopt;
    }

    if (expected) {
        const bool matches = expected->kind == Expectation::Kind::Anything ||
                             (expected->kind == Expectation::Kind::Single && expected->type == record.type &&
                              expected->code == record.code);
        if (matches) {
            Answer whole;
            answerBytes_ = 0;
            if (expected->onItem && expected->trailing == Trailing::None) {
                expected->onItem(record.bytes());
                answer = std::move(whole);
                return std::nullopt;
            }
            whole.records.push_back(record);
            if (expected->trailing != Trailing::None) {
                if (auto fault = readTrailing(*expected, countsOf(countOffsets(*expected), record.bytes()), whole)) {
                    return fault;
                }
            }
            answer = std::move(whole);
            return std::nullopt;
        }
    }
    return malformed("unexpected " + describeRecord(record.type, record.code) +
                     (expected ? " while waiting for " + describeRecord(expected->type, expected->code)
                               : " while no call waits"));
}

std::optional<Error> Connection::handleListHeader(const message& header, std::unique_ptr<message>& next,
                                                  const Expectation* expected, std::optional<Answer>& answer) {
    const std::int32_t count = header.code;
    if (count < 0) return malformed("list header with the negative count " + std::to_string(count));
    const bool listAwaited =
        expected && (expected->kind == Expectation::Kind::List || expected->kind == Expectation::Kind::Anything);
    // A DSM-CC header announces at least two chunks.
    const bool couldBeDsmcc =
        static_cast<std::size_t>(count) >= MIN_CHUNK_COUNT && static_cast<std::size_t>(count) <= options_.maxDsmccChunks;

    if (listAwaited && static_cast<std::size_t>(count) <= options_.maxListItems) {
        // A raw request cannot frame a list it does not know: it gets the header.
        if (count == 0 || expected->kind == Expectation::Kind::Anything) {
            answer.emplace();
            answer->header = std::make_unique<const message>(header);
            return std::nullopt;
        }
        // The header alone does not say whether it heads our list or a
        // DSM-CC command's chunks; the record after it does.
        message first;
        if (auto fault = readRecord(first, true)) return fault;
        if (isItemOf(*expected, first.type, first.code, count)) return readList(*expected, header, first, answer);
        if (!couldBeDsmcc) {
            return malformed("list item " + describeRecord(first.type, first.code) + " does not belong to " +
                             describeRecord(expected->type, expected->code));
        }
        startDsmcc(count);
        next = std::make_unique<message>(first);
        return std::nullopt;
    }
    if (couldBeDsmcc) {
        startDsmcc(count);
        return std::nullopt;
    }
    return malformed("list header with count " + std::to_string(count) +
                     (listAwaited ? " beyond the limit" : " while no list is awaited"));
}

std::optional<Error> Connection::readList(const Expectation& expected, const message& header, const message& first,
                                          std::optional<Answer>& result) {
    const auto count = static_cast<std::size_t>(header.code);
    Answer answer;
    answer.header = std::make_unique<const message>(header);
    answerBytes_ = 0;
    // Program events send all records first, then each event's data: only
    // the counts are kept until then.
    std::vector<TrailingCounts> later;
    // Where the counts lie is looked up once, not per item.
    const TrailingCounts offsets = countOffsets(expected);
    // Items are stored (or decoded) as they arrive, never reserved by the
    // announced count, each where it lies in the read buffer, before the next read.
    const auto take = [&](const unsigned char* item) -> std::optional<Error> {
        if (expected.trailing == Trailing::ProgramEvent) later.push_back(countsOf(offsets, item));
        if (expected.onItem) {
            expected.onItem(item);
        } else {
            answer.records.emplace_back();
            std::memcpy(answer.records.back().bytes(), item, MESSAGE_SIZE);
        }
        if (expected.trailing == Trailing::Descriptor) return readTrailing(expected, countsOf(offsets, item), answer);
        return std::nullopt;
    };
    if (auto fault = take(first.bytes())) return fault;
    std::optional<Error> fault;
    for (std::size_t i = 1; i < count; ++i) {
        const unsigned char* item = nextItem(fault);
        if (!item) return fault;
        const auto type = valueAt<std::int32_t>(item, TYPE_OFFSET), code = valueAt<std::int32_t>(item, CODE_OFFSET);
        if (!isItemOf(expected, type, code, header.code)) {
            return malformed("item " + std::to_string(i) + " of a list is " + describeRecord(type, code));
        }
        if ((fault = take(item))) return fault;
    }
    // The items have arrived: their number is no longer only announced.
    answer.trailing.reserve(later.size());
    for (const TrailingCounts& counts : later) {
        if (auto fault = readTrailing(expected, counts, answer)) return fault;
    }
    result = std::move(answer);
    return std::nullopt;
}

void Connection::startDsmcc(std::int32_t count) {
    // A header while another command is incomplete means that one is lost;
    // the bridge serialises commands, so this only follows a fault.
    dsmcc_ = PartialDsmcc{};
    dsmcc_->remaining = count;
}

void Connection::handleDsmcc(const message& record) {
    const std::string text = textAt(record, DSMCC_TEXT_OFFSET, DSMCC_TEXT_SIZE);
    const auto value = record.get<std::int64_t>(DSMCC_VALUE_OFFSET);
    const auto byte = record.get<std::uint8_t>(DSMCC_BYTE_OFFSET);
    if (!dsmcc_) {
        sink_.eventArrived(DsmccCommand{record.code, value, byte, text});
        return;
    }
    if (!dsmcc_->started) {
        dsmcc_->command.code = record.code;
        dsmcc_->command.value = value;
        dsmcc_->command.byte = byte;
        dsmcc_->started = true;
    }
    dsmcc_->command.text += text;
    if (--dsmcc_->remaining == 0) {
        DsmccCommand command = std::move(dsmcc_->command);
        dsmcc_.reset();
        sink_.eventArrived(std::move(command));
    }
}

}  // namespace detail
}  // namespace client
}  // namespace tessarine
