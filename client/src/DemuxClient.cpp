#include "tessarine/client/DemuxClient.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <mutex>

#include "CallGate.h"
#include "Socket.h"
#include "StreamReader.h"
#include "tessarine/protocol/Codes.h"
#include "tessarine/protocol/Limits.h"

namespace tessarine {
namespace client {

using detail::Clock;
using detail::IoStatus;

namespace {

void appendWord(std::vector<std::uint8_t>& out, std::int32_t word) {
    const std::size_t at = out.size();
    out.resize(at + sizeof word);
    std::memcpy(out.data() + at, &word, sizeof word);
}

}  // namespace

class DemuxClient::Impl {
public:
    // A section arrives with its length in one read.
    explicit Impl(DemuxOptions o) : options(std::move(o)), input_(-1, sizeof(std::int32_t) + options.maxSectionLength) {}
    ~Impl() { closeSocket(); }

    const DemuxOptions options;

    Result<void> connect(Timeout timeout) {
        const auto deadline = deadlineOf(timeout);
        detail::CallGate::Pass pass(calls_, deadline);
        if (!pass.granted()) return busy();
        if (auto error = ensureConnected(deadline)) return *error;
        return {};
    }

    void disconnect() {
        detail::CallGate::Pass pass(calls_, Clock::time_point::max());
        closeSocket();
    }

    // Sends one command with its arguments; with `answer`, reads the section.
    Result<Bytes> exchange(const std::vector<std::uint8_t>& bytes, bool answer, Timeout timeout) {
        const auto deadline = deadlineOf(timeout);
        detail::CallGate::Pass pass(calls_, deadline);
        if (!pass.granted()) return busy();
        if (auto error = ensureConnected(deadline)) return *error;
        IoStatus sent = detail::writeAll(fd_.get(), bytes.data(), bytes.size(), deadline);
        if (sent == IoStatus::Closed) {
            // The bridge never speaks unasked, so only a send finds that it
            // closed the connection since the last call: once more, anew.
            closeSocket();
            if (auto error = ensureConnected(deadline)) return *error;
            sent = detail::writeAll(fd_.get(), bytes.data(), bytes.size(), deadline);
        }
        if (sent != IoStatus::Ok) return fail(sent, "sending a command");
        if (!answer) return Bytes{};

        std::int32_t length = 0;
        const IoStatus status = input_.read(&length, sizeof length, deadline);
        if (status != IoStatus::Ok) return fail(status, "reading a section's length");
        if (length < 0 || static_cast<std::size_t>(length) > options.maxSectionLength) {
            closeSocket();
            return Error(ErrorCode::MalformedAnswer, "section length " + std::to_string(length) + " is out of range");
        }
        Bytes section(static_cast<std::size_t>(length));
        const IoStatus body = input_.read(section.data(), section.size(), deadline);
        if (body != IoStatus::Ok) return fail(body, "reading a section");
        return section;
    }

private:
    Clock::time_point deadlineOf(Timeout timeout) const { return Clock::now() + timeout.value_or(options.timeout); }

    static Error busy() { return Error(ErrorCode::TimedOut, "another call kept the client busy past the time limit"); }

    std::optional<Error> ensureConnected(Clock::time_point deadline) {
        if (fd_.valid()) return std::nullopt;
        fd_ = detail::connectUnix(options.socketPath, deadline);
        input_.reset(fd_.get());
        if (!fd_.valid()) {
            const int cause = errno;
            return Error(cause == ETIMEDOUT ? ErrorCode::TimedOut : ErrorCode::NotConnected,
                         "cannot connect to " + options.socketPath + ": " + std::strerror(cause));
        }
        return std::nullopt;
    }

    Error fail(IoStatus status, const char* during) {
        // Whatever arrives later belongs to this exchange: start afresh.
        closeSocket();
        if (status == IoStatus::TimedOut) return Error(ErrorCode::TimedOut, std::string("time limit reached ") + during);
        return Error(ErrorCode::ConnectionLost, std::string("connection lost ") + during);
    }

    void closeSocket() { fd_.reset(); }

    detail::CallGate calls_;
    FileDescriptor fd_;
    detail::StreamReader input_;
};

namespace {

std::vector<std::uint8_t> commandWord(std::int32_t command) {
    std::vector<std::uint8_t> out;
    appendWord(out, command);
    return out;
}

std::vector<std::uint8_t> withValue(std::int32_t command, std::int32_t value) {
    auto out = commandWord(command);
    appendWord(out, value);
    return out;
}

std::optional<Error> appendStrings(std::vector<std::uint8_t>& out,
                                   std::initializer_list<const std::vector<std::uint8_t>*> strings) {
    for (const auto* bytes : strings) {
        if (bytes->size() > static_cast<std::size_t>(MAX_FILTER_LENGTH)) {
            return Error(ErrorCode::InvalidArgument,
                         "a filter byte string holds at most " + std::to_string(MAX_FILTER_LENGTH) + " bytes");
        }
        appendWord(out, static_cast<std::int32_t>(bytes->size()));
        out.insert(out.end(), bytes->begin(), bytes->end());
    }
    return std::nullopt;
}

}  // namespace

DemuxClient::DemuxClient(DemuxOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {}
DemuxClient::~DemuxClient() = default;

const DemuxOptions& DemuxClient::options() const { return impl_->options; }
Result<void> DemuxClient::connect(Timeout timeout) { return impl_->connect(timeout); }
void DemuxClient::disconnect() { impl_->disconnect(); }

namespace {

// A command is done once sent; only its failure matters.
Result<void> sent(Result<DemuxClient::Bytes> result) {
    if (!result) return result.error();
    return {};
}

}  // namespace

Result<void> DemuxClient::start(Timeout t) { return sent(impl_->exchange(commandWord(DEMUX_START), false, t)); }
Result<void> DemuxClient::stop(Timeout t) { return sent(impl_->exchange(commandWord(DEMUX_STOP), false, t)); }
Result<void> DemuxClient::setPid(std::int32_t pid, Timeout t) {
    return sent(impl_->exchange(withValue(DEMUX_SET_PID, pid), false, t));
}
Result<void> DemuxClient::setTableId(std::int32_t tableId, Timeout t) {
    return sent(impl_->exchange(withValue(DEMUX_SET_TABLE_ID, tableId), false, t));
}
Result<void> DemuxClient::setTimeOut(std::int32_t timeOut, Timeout t) {
    return sent(impl_->exchange(withValue(DEMUX_SET_TIME_OUT, timeOut), false, t));
}
Result<void> DemuxClient::clearTableId(Timeout t) {
    return sent(impl_->exchange(commandWord(DEMUX_CLEAR_TABLE_ID), false, t));
}
Result<void> DemuxClient::clearPositiveFilter(Timeout t) {
    return sent(impl_->exchange(commandWord(DEMUX_CLEAR_POSITIVE_FILTER), false, t));
}
Result<void> DemuxClient::clearLessThanFilter(Timeout t) {
    return sent(impl_->exchange(commandWord(DEMUX_CLEAR_LESS_THAN_FILTER), false, t));
}
Result<void> DemuxClient::clearXorFilter(Timeout t) {
    return sent(impl_->exchange(commandWord(DEMUX_CLEAR_XOR_FILTER), false, t));
}

Result<void> DemuxClient::setPositiveFilter(std::int32_t argument, const Bytes& first, const Bytes& second, Timeout t) {
    auto bytes = withValue(DEMUX_SET_POSITIVE_FILTER, argument);
    if (auto error = appendStrings(bytes, {&first, &second})) return *error;
    return sent(impl_->exchange(bytes, false, t));
}
Result<void> DemuxClient::setGreaterThanFilter(std::int32_t argument, const Bytes& first, const Bytes& second,
                                               Timeout t) {
    auto bytes = withValue(DEMUX_SET_GREATER_THAN_FILTER, argument);
    if (auto error = appendStrings(bytes, {&first, &second})) return *error;
    return sent(impl_->exchange(bytes, false, t));
}
Result<void> DemuxClient::setLessThanFilter(std::int32_t argument, const Bytes& first, const Bytes& second, Timeout t) {
    auto bytes = withValue(DEMUX_SET_LESS_THAN_FILTER, argument);
    if (auto error = appendStrings(bytes, {&first, &second})) return *error;
    return sent(impl_->exchange(bytes, false, t));
}
Result<void> DemuxClient::setXorFilter(std::int32_t argument, const Bytes& first, const Bytes& second,
                                       const Bytes& third, Timeout t) {
    auto bytes = withValue(DEMUX_SET_XOR_FILTER, argument);
    if (auto error = appendStrings(bytes, {&first, &second, &third})) return *error;
    return sent(impl_->exchange(bytes, false, t));
}

Result<DemuxClient::Bytes> DemuxClient::readSection(Timeout t) {
    return impl_->exchange(commandWord(DEMUX_READ_SECTION), true, t);
}

}  // namespace client
}  // namespace tessarine
