#include "tessarine/client/ControlClient.h"

#include <cstring>

#include "ControlClientImpl.h"
#include "RecordFields.h"
#include "tessarine/TextField.h"

namespace tessarine {
namespace client {

using detail::Answer;
using detail::Expectation;

ControlClient::Impl::Impl(ClientOptions opts)
    : options(std::move(opts)), dispatcher_(std::make_unique<detail::EventDispatcher>()) {}

ControlClient::Impl::~Impl() { dropConnection(); }

message ControlClient::Impl::request(std::int32_t type, std::int32_t code) { return detail::requestRecord(type, code); }

detail::Clock::time_point ControlClient::Impl::deadlineOf(Timeout timeout) const {
    return Clock::now() + timeout.value_or(options.timeout);
}

Result<void> ControlClient::Impl::connect(Timeout timeout) {
    const auto deadline = deadlineOf(timeout);
    detail::CallGate::Pass pass(calls_, deadline);
    if (!pass.granted()) return Error(ErrorCode::TimedOut, "another call kept the client busy past the time limit");
    auto connection = ensureConnected(deadline);
    if (!connection) return connection.error();
    return {};
}

void ControlClient::Impl::disconnect() {
    // Callbacks already under way finish first, so that an application-state
    // answer goes out; before the gate, as a callback may call the client.
    dispatcher_->drain(deadlineOf({}));
    detail::CallGate::Pass pass(calls_, Clock::time_point::max());
    dropConnection();
}

bool ControlClient::Impl::connected() const {
    std::lock_guard<std::mutex> lock(stateMutex_);
    return connection_ && connection_->alive();
}

Result<std::shared_ptr<detail::Connection>> ControlClient::Impl::ensureConnected(Clock::time_point deadline) {
    {
        std::lock_guard<std::mutex> lock(stateMutex_);
        if (connection_ && connection_->alive()) return connection_;
    }
    // A connection that died is cleared up before the next one opens, so
    // at most one reader thread exists at a time.
    dropConnection();
    std::optional<Error> error;
    auto connection = detail::Connection::open(options, *this, deadline, error);
    if (!connection) return *error;
    std::lock_guard<std::mutex> lock(stateMutex_);
    connection_ = connection;
    return connection;
}

void ControlClient::Impl::dropConnection() {
    std::shared_ptr<detail::Connection> connection;
    {
        std::lock_guard<std::mutex> lock(stateMutex_);
        connection.swap(connection_);
    }
    // Joined outside the lock: the reader may be finishing a record.
    if (connection) connection->close();
}

Result<Answer> ControlClient::Impl::call(const message& record, Timeout timeout) {
    return call(record, detail::expectationFor(record.type, record.code), timeout, false);
}

Result<Answer> ControlClient::Impl::call(const message& record, std::optional<Expectation> expected, Timeout timeout,
                                         bool silenceIsAnswer) {
    const auto deadline = deadlineOf(timeout);
    detail::CallGate::Pass pass(calls_, deadline);
    if (!pass.granted()) return Error(ErrorCode::TimedOut, "another call kept the client busy past the time limit");
    auto connection = ensureConnected(deadline);
    if (!connection) return connection.error();

    auto answer = (*connection)->call(record, expected ? &*expected : nullptr, deadline, silenceIsAnswer);
    // A failed call has given the connection up; its reader is joined now.
    if (!answer) dropConnection();
    return answer;
}

Result<void> ControlClient::Impl::command(const message& record, Timeout timeout) {
    auto answer = call(record, std::nullopt, timeout, false);
    if (!answer) return answer.error();
    return {};
}

Result<message> ControlClient::Impl::single(const message& record, Timeout timeout) {
    // The record is handed over as it is read: the answer allocates nothing.
    message taken;
    auto expected = detail::expectationFor(record.type, record.code);
    if (expected && expected->kind == detail::Expectation::Kind::Single) {
        expected->onItem = [&taken](const unsigned char* item) { std::memcpy(taken.bytes(), item, MESSAGE_SIZE); };
    }
    auto answer = call(record, std::move(expected), timeout, false);
    if (!answer) return answer.error();
    if (!answer->records.empty()) return answer->records.front();  // a record with trailing data
    return taken;
}

std::optional<Error> ControlClient::Impl::putText(message& record, std::size_t offset, const std::string& text) {
    if (text.size() > TEXT_FIELD_CHARACTERS || text.find('\0') != std::string::npos) {
        return Error(ErrorCode::InvalidArgument,
                     "a text field holds at most " + std::to_string(TEXT_FIELD_CHARACTERS) + " characters and no NUL");
    }
    writeTextField(record, offset, text);
    return std::nullopt;
}

void ControlClient::Impl::connectionEnded(const Error& reason, bool deliberate) {
    if (!deliberate) {
        dispatcher_->post([this, reason] {
            const auto current = currentCallbacks();
            if (current->disconnected) current->disconnected(reason);
        });
    }
}

void ControlClient::Impl::eventArrived(detail::Event event) {
    dispatcher_->post([this, event = std::move(event)]() mutable { dispatch(std::move(event)); });
}

std::shared_ptr<const ControlClient::Impl::Callbacks> ControlClient::Impl::currentCallbacks() {
    std::lock_guard<std::mutex> lock(callbackMutex_);
    return callbacks_;
}

void ControlClient::Impl::dispatch(detail::Event event) {
    // Runs on the dispatcher thread with no lock held.
    const auto current = currentCallbacks();
    const Callbacks& callbacks = *current;
    if (auto* e = std::get_if<DownloadComplete>(&event)) {
        if (callbacks.downloadComplete) callbacks.downloadComplete(*e);
    } else if (auto* e = std::get_if<GraphicsSettings>(&event)) {
        if (callbacks.graphicsSettings) callbacks.graphicsSettings(*e);
    } else if (auto* e = std::get_if<EndOfMedia>(&event)) {
        if (callbacks.endOfMedia) callbacks.endOfMedia(*e);
    } else if (auto* e = std::get_if<DsmccCommand>(&event)) {
        if (callbacks.dsmcc) callbacks.dsmcc(*e);
    } else if (auto* e = std::get_if<detail::AppStateRequest>(&event)) {
        const std::uint8_t answer = callbacks.appState ? callbacks.appState(e->state) : 0;
        // Answered on the connection that asked; a newer one never saw it.
        if (auto connection = e->connection.lock()) {
            message record = request(MSG_APP_STATE, e->state);
            record.put<std::uint8_t>(RESULT_BYTE_OFFSET, answer);
            connection->send(record, deadlineOf({}));
        }
    }
}

// ---- ControlClient ----

ControlClient::ControlClient(ClientOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {}
ControlClient::~ControlClient() = default;

const ClientOptions& ControlClient::options() const { return impl_->options; }
Result<void> ControlClient::connect(Timeout timeout) { return impl_->connect(timeout); }
void ControlClient::disconnect() { impl_->disconnect(); }
bool ControlClient::connected() const { return impl_->connected(); }

void ControlClient::onDownloadComplete(std::function<void(const DownloadComplete&)> callback) {
    impl_->setCallback([&](Impl::Callbacks& c) { c.downloadComplete = std::move(callback); });
}
void ControlClient::onGraphicsSettings(std::function<void(const GraphicsSettings&)> callback) {
    impl_->setCallback([&](Impl::Callbacks& c) { c.graphicsSettings = std::move(callback); });
}
void ControlClient::onEndOfMedia(std::function<void(const EndOfMedia&)> callback) {
    impl_->setCallback([&](Impl::Callbacks& c) { c.endOfMedia = std::move(callback); });
}
void ControlClient::onDsmccCommand(std::function<void(const DsmccCommand&)> callback) {
    impl_->setCallback([&](Impl::Callbacks& c) { c.dsmcc = std::move(callback); });
}
void ControlClient::onAppStateRequest(std::function<std::uint8_t(std::int32_t)> callback) {
    impl_->setCallback([&](Impl::Callbacks& c) { c.appState = std::move(callback); });
}
void ControlClient::onDisconnected(std::function<void(const Error&)> callback) {
    impl_->setCallback([&](Impl::Callbacks& c) { c.disconnected = std::move(callback); });
}

Result<std::uint8_t> ControlClient::checkVersion(std::int32_t flag, Timeout timeout) {
    auto answer = impl_->single(Impl::request(MSG_VERSION, flag), timeout);
    if (!answer) return answer.error();
    return answer->get<std::uint8_t>(RESULT_BYTE_OFFSET);
}

Result<std::vector<RawFrame>> ControlClient::raw(std::int32_t type, std::int32_t code,
                                                 const std::vector<std::uint8_t>& payload, Timeout timeout) {
    if (payload.size() > MESSAGE_SIZE - PAYLOAD_OFFSET) {
        return Error(ErrorCode::InvalidArgument,
                     "a payload holds at most " + std::to_string(MESSAGE_SIZE - PAYLOAD_OFFSET) + " bytes");
    }
    message record = Impl::request(type, code);
    std::copy(payload.begin(), payload.end(), record.bytes() + PAYLOAD_OFFSET);
    auto expected = detail::expectationFor(type, code);
    const bool known = expected.has_value();
    if (!known) {
        expected = Expectation{};
        expected->kind = Expectation::Kind::Anything;
    }
    auto answer = impl_->call(record, expected, timeout, !known);
    if (!answer) return answer.error();

    auto asFrame = [](const void* data, std::size_t size, bool isRecord) {
        const auto* bytes = static_cast<const std::uint8_t*>(data);
        return RawFrame{isRecord, std::vector<std::uint8_t>(bytes, bytes + size)};
    };
    auto appendTrailing = [&](std::vector<RawFrame>& frames, const detail::TrailingData& data) {
        std::vector<std::uint8_t> bytes;
        for (const auto& list : data.bytes) bytes.insert(bytes.end(), list.begin(), list.end());
        for (const auto& list : data.strings) {
            for (const auto& text : list) {
                const auto length = static_cast<std::uint32_t>(text.size());
                const auto* l = reinterpret_cast<const std::uint8_t*>(&length);
                bytes.insert(bytes.end(), l, l + sizeof length);
                bytes.insert(bytes.end(), text.begin(), text.end());
            }
        }
        frames.push_back(RawFrame{false, std::move(bytes)});
    };

    // Rebuilt in stream order: descriptors interleave their bytes, program
    // events send every record before the first event's data.
    std::vector<RawFrame> frames;
    if (answer->header) frames.push_back(asFrame(answer->header->bytes(), MESSAGE_SIZE, true));
    const bool interleaved = expected->trailing == detail::Trailing::Descriptor;
    for (std::size_t i = 0; i < answer->records.size(); ++i) {
        frames.push_back(asFrame(answer->records[i].bytes(), MESSAGE_SIZE, true));
        if (interleaved && i < answer->trailing.size()) appendTrailing(frames, answer->trailing[i]);
    }
    if (!interleaved) {
        for (const auto& data : answer->trailing) appendTrailing(frames, data);
    }
    return frames;
}

}  // namespace client
}  // namespace tessarine
