#include "tessarine/IpcDemuxServer.h"

#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "tessarine/protocol/DemuxCommands.h"
#include "tessarine/protocol/Limits.h"
#include "transport/Diagnostics.h"
#include "transport/ThreadSupport.h"
#include "transport/UnixSocket.h"

namespace tessarine {

IpcDemuxServer::IpcDemuxServer() : IpcDemuxServer(DEMUX_SOCKET_PATH) {}

IpcDemuxServer::IpcDemuxServer(std::string path) : path_(std::move(path)) {}

IpcDemuxServer::~IpcDemuxServer() {
    stop();
    if (thread_.joinable()) thread_.join();
}

void IpcDemuxServer::setListener(IpcDemuxServerListener* listener) {
    listener_.store(listener);
}

void IpcDemuxServer::start() {
    if (running_.load()) return;
    if (thread_.joinable()) thread_.join();  // a thread that ended on an accept failure

    if (!socket_.open(path_, path_.size())) return;
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
    std::int32_t command = 0;
    bool more = true;
    while (more && receiveWord(command)) {
        // A command that failed in the listener is dropped; the stream goes on.
        runGuarded("Demux command failed", [&] { more = handleCommand(command); });
    }
    socket_.closeClient();  // the filter state is left as the client set it
}

bool IpcDemuxServer::receiveWord(std::int32_t& value) {
    return unix_socket::receiveAll(socket_.client(), &value, sizeof value) == sizeof value;
}

bool IpcDemuxServer::receiveString(std::vector<unsigned char>& bytes) {
    std::int32_t length = 0;
    if (!receiveWord(length)) return false;
    if (length <= 0) return true;  // zero or less is the empty string
    if (length > MAX_FILTER_LENGTH) return false;
    bytes.resize(static_cast<std::size_t>(length));
    return unix_socket::receiveAll(socket_.client(), bytes.data(), bytes.size()) == bytes.size();
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
        // A value that never arrives stays at its preset; the closed
        // connection is noticed at the next command word.
        std::int32_t value = -1;
        receiveWord(value);
        if (command == DEMUX_SET_PID) listener->set_pid(value);
        else listener->set_table_id(value);
        break;
    }
    case DEMUX_SET_TIME_OUT: {
        std::int32_t value = 0;
        receiveWord(value);
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
        sendSection(section);
        break;
    }
    default: break;
    }
    return true;
}

void IpcDemuxServer::sendSection(const std::vector<unsigned char>& section) {
    // The length and the bytes leave in one buffer, not one call per byte.
    const auto length = static_cast<std::int32_t>(section.size());
    std::vector<unsigned char> out(sizeof length + section.size());
    std::memcpy(out.data(), &length, sizeof length);
    if (!section.empty()) std::memcpy(out.data() + sizeof length, section.data(), section.size());

    const std::size_t sent = unix_socket::sendAll(socket_.client(), out.data(), out.size());
    if (sent == out.size()) return;
    if (sent < sizeof length) {
        Diagnostics::systemError("Can't send size");
        return;
    }
    // One report per section byte that did not leave, as per-byte sends would give.
    const int error = errno;
    for (std::size_t i = sent; i < out.size(); ++i) {
        errno = error;
        Diagnostics::systemError("Can't send data[i]");
    }
}

void IpcDemuxServer::stop() {
    if (!running_.load()) return;
    socket_.interrupt();
    if (thread_.joinable()) thread_.join();
    socket_.closeAll();
    running_.store(false);
}

}  // namespace tessarine
