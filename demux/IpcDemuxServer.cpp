#include "tessarine/IpcDemuxServer.h"

#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "demux/ClientWatch.h"
#include "tessarine/protocol/DemuxCommands.h"
#include "tessarine/protocol/Limits.h"
#include "transport/CaptureTap.h"
#include "transport/Diagnostics.h"
#include "transport/ThreadSupport.h"
#include "transport/UnixSocket.h"

namespace tessarine {

IpcDemuxServer::IpcDemuxServer() : IpcDemuxServer(DEMUX_SOCKET_PATH) {}

IpcDemuxServer::IpcDemuxServer(std::string path) : path_(std::move(path)), watch_(new ClientWatch) {}

IpcDemuxServer::~IpcDemuxServer() {
    stop();
    if (thread_.joinable()) thread_.join();
}

void IpcDemuxServer::setListener(IpcDemuxServerListener* listener) {
    listener_.store(listener);
}

void IpcDemuxServer::setConnectionListener(ConnectionListener* listener) { watch_->setListener(listener); }

void IpcDemuxServer::start() {
    if (running_.load()) return;
    if (thread_.joinable()) thread_.join();  // a thread that ended on an accept failure

    if (!socket_.open(path_, path_.size())) return;
    watch_->resume();
    if (!startThread(thread_, &IpcDemuxServer::run, this)) {
        socket_.closeAll();
        return;
    }
    running_.store(true);
}

void* IpcDemuxServer::run(void* self) {
    if (self != nullptr) static_cast<IpcDemuxServer*>(self)->serve();
    return nullptr;
}

void IpcDemuxServer::serve() {
    running_.store(true);
    while (socket_.accept()) serveClient();
}

void IpcDemuxServer::serveClient() {
    watch_->connected(socket_.client());
    std::int32_t command = 0;
    bool more = true;
    for (;;) {
        capturing_ = CaptureTap::capturing();
        if (!more || !receiveWord(command)) break;
        // A command that failed in the listener is dropped; the stream goes on.
        runGuarded("Demux command failed", [&] { more = handleCommand(command); });
        captureCommand();
    }
    captureCommand();  // a command cut short, as far as it came
    watch_->disconnected(!socket_.interrupted());
    socket_.closeClient();  // the filter state is left as the client set it
}

std::size_t IpcDemuxServer::receive(void* data, std::size_t length) {
    const std::size_t received = unix_socket::receiveAll(socket_.client(), data, length);
    if (capturing_) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        command_.insert(command_.end(), bytes, bytes + received);
    }
    return received;
}

void IpcDemuxServer::captureCommand() {
    if (command_.empty()) return;
    if (CaptureTap::capturing()) CaptureTap::global().record(CaptureTap::SECTIONS, PcapngWriter::INBOUND, command_.data(), command_.size());
    command_.clear();
}

bool IpcDemuxServer::receiveWord(std::int32_t& value) { return receive(&value, sizeof value) == sizeof value; }

bool IpcDemuxServer::receiveValue(std::int32_t& value) {
    const std::size_t received = receive(&value, sizeof value);
    return received == 0 || received == sizeof value;
}

bool IpcDemuxServer::receiveString(std::vector<unsigned char>& bytes) {
    std::int32_t length = 0;
    if (!receiveWord(length)) return false;
    if (length <= 0) return true;  // zero or less is the empty string
    if (length > MAX_FILTER_LENGTH) return false;
    bytes.resize(static_cast<std::size_t>(length));
    return receive(bytes.data(), bytes.size()) == bytes.size();
}

bool IpcDemuxServer::handleCommand(std::int32_t word) {
    IpcDemuxServerListener* listener = listener_.load();
    if (listener == nullptr || protocol::findDemuxCommand(word) == nullptr) return true;  // only the word is consumed
    const auto command = static_cast<std::uint32_t>(word);

    switch (command) {
    case DEMUX_START: listener->start(); break;
    case DEMUX_STOP: listener->stop(); break;
    case DEMUX_CLEAR_TABLE_ID: listener->clear_table_id(); break;
    case DEMUX_CLEAR_POSITIVE_FILTER: listener->clear_positive_filter(); break;
    case DEMUX_CLEAR_LESS_THAN_FILTER: listener->clear_less_than_filter(); break;
    case DEMUX_CLEAR_XOR_FILTER: listener->clear_xor_filter(); break;
    case DEMUX_SET_PID:
    case DEMUX_SET_TABLE_ID: {
        // A value none of which arrives stays at its preset, and the closed
        // connection is noticed at the next command word; a value cut inside
        // is dropped with the connection.
        std::int32_t value = -1;
        if (!receiveValue(value)) return false;
        if (command == DEMUX_SET_PID) listener->set_pid(value);
        else listener->set_table_id(value);
        break;
    }
    case DEMUX_SET_TIME_OUT: {
        std::int32_t value = 0;
        if (!receiveValue(value)) return false;
        listener->set_time_out(value);
        break;
    }
    case DEMUX_SET_POSITIVE_FILTER:
    case DEMUX_SET_GREATER_THAN_FILTER:
    case DEMUX_SET_LESS_THAN_FILTER:
    case DEMUX_SET_XOR_FILTER: {
        std::int32_t value = 0;
        std::vector<unsigned char> first, second, third;
        // A command cut short or over-long is dropped and ends the connection.
        if (!receiveWord(value) || !receiveString(first) || !receiveString(second)) return false;
        if (command == DEMUX_SET_XOR_FILTER) {
            if (!receiveString(third)) return false;
            listener->set_xor_filter(value, first, second, third);
        } else if (command == DEMUX_SET_POSITIVE_FILTER) {
            listener->set_positive_filter(value, first, second);
        } else if (command == DEMUX_SET_GREATER_THAN_FILTER) {
            listener->set_greater_than_filter(value, first, second);
        } else {
            listener->set_less_than_filter(value, first, second);
        }
        break;
    }
    case DEMUX_READ_SECTION: {
        // The client waits for an answer: a read that failed answers empty.
        std::vector<unsigned char> section;
        runGuarded("Demux command failed", [&] { section = listener->read_section(); });
        return sendSection(section);
    }
    default: break;
    }
    return true;
}

bool IpcDemuxServer::sendSection(const std::vector<unsigned char>& section) {
    // The length and the bytes leave in one buffer, not one call per byte.
    const auto length = static_cast<std::int32_t>(section.size());
    std::vector<unsigned char> out(sizeof length + section.size());
    std::memcpy(out.data(), &length, sizeof length);
    if (!section.empty()) std::memcpy(out.data() + sizeof length, section.data(), section.size());
    captureCommand();  // the read comes before its answer
    if (CaptureTap::capturing()) {
        CaptureTap::global().record(CaptureTap::SECTIONS, PcapngWriter::OUTBOUND, out.data(), out.size());
    }

    const std::size_t sent =
        unix_socket::sendAll(socket_.client(), out.data(), out.size(), unix_socket::STALL_LIMIT_MS);
    if (sent == out.size()) return true;
    // One report, and the connection ends: the client's framing is lost, and
    // every further read would fail the same way.
    Diagnostics::systemError(sent < sizeof length ? "Can't send size" : "Can't send data[i]");
    return false;
}

void IpcDemuxServer::stop() {
    if (!running_.load()) return;
    watch_->stop();  // first: the shut-down connection is not reported as a departure
    socket_.interrupt();
    if (thread_.joinable()) thread_.join();
    socket_.closeAll();
    running_.store(false);
}

}  // namespace tessarine
