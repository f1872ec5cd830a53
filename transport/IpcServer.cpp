#include "tessarine/IpcServer.h"

#include <sys/socket.h>

#include <cerrno>

#include "transport/CaptureTap.h"
#include "transport/Diagnostics.h"
#include "transport/ThreadSupport.h"
#include "transport/UnixSocket.h"

namespace tessarine {

namespace {

void tap(std::uint32_t direction, const unsigned char* data, std::size_t length) {
    if (CaptureTap::capturing()) CaptureTap::global().record(CaptureTap::CONTROL, direction, data, length);
}

}  // namespace

IpcServer::IpcServer(IpcListener* listener, const char* path, int length)
    : listener_(listener),
      pathValid_(path != nullptr && length >= 0 && static_cast<std::size_t>(length) <= MAX_SOCKET_PATH_LENGTH),
      path_(pathValid_ ? path : ""),
      pathLength_(pathValid_ ? length : 0) {}

IpcServer::~IpcServer() {
    stop();
    if (thread_.joinable()) thread_.join();
}

void IpcServer::start() {
    if (running_.load()) return;
    if (thread_.joinable()) thread_.join();  // a thread that ended on an accept failure
    if (!pathValid_) {
        FileDescriptor probe = unix_socket::create();  // the socket comes first, then the path check
        if (probe.valid()) Diagnostics::systemError("Invalid file name or file name is too big");
        return;
    }
    if (!socket_.open(path_, static_cast<std::size_t>(pathLength_))) return;
    running_.store(true);
    if (!startThread(thread_, &IpcServer::run, this)) {
        socket_.closeAll();
        running_.store(false);
    }
}

void* IpcServer::run(void* self) {
    if (self != nullptr) static_cast<IpcServer*>(self)->serve();
    return nullptr;
}

void IpcServer::serve() {
    running_.store(true);
    while (socket_.accept()) {
        unix_socket::setSendBuffer(socket_.client(), unix_socket::CONTROL_SEND_BUFFER);
        {
            std::lock_guard<std::mutex> send(sendLock_);
            dropped_.store(false);
        }
        if (!serveClient()) return;
    }
}

bool IpcServer::serveClient() {
    if (listener_ != nullptr) listener_->clientConnected();

    message buffer;
    buffer.clear();
    for (;;) {
        const std::size_t received = unix_socket::receiveAll(socket_.client(), buffer.bytes(), MESSAGE_SIZE);
        // Requests still queued from a dropped client would only fail again.
        if (dropped_.load()) break;
        // Taken before the listener writes its answer into the same record.
        if (received > 0) tap(PcapngWriter::INBOUND, buffer.bytes(), received);
        // A record cut short by the peer's close is still delivered, with the
        // previous record's tail; the next receive then ends the connection.
        if (received > 0 && listener_ != nullptr) deliver(buffer);
        if (received < MESSAGE_SIZE) break;
    }

    if (socket_.interrupted()) return false;  // stop() closes the descriptor; nothing is reported
    if (listener_ != nullptr) {
        buffer.type = MSG_VIDEO;
        buffer.code = VIDEO_RESET;  // the consumers reset video when the client goes
        deliver(buffer);
    }
    closeClient();
    if (listener_ != nullptr) listener_->clientDisconnected();
    return true;
}

void IpcServer::deliver(message& record) {
    runGuarded("Request failed", [&] { listener_->update(record); });
}

void IpcServer::closeClient() {
    std::lock_guard<std::mutex> send(sendLock_);  // no send may hold the descriptor being closed
    socket_.closeClient();
}

std::size_t IpcServer::writeToClient(const unsigned char* data, std::size_t length) {
    const int fd = socket_.client();
    const std::size_t sent = unix_socket::sendAll(fd, data, length, unix_socket::STALL_LIMIT_MS);
    if (sent < length && fd >= 0) {
        // The stream may be cut inside a record, so the connection cannot go
        // on: shut it down, and the receive thread ends it as for a departed client.
        const int error = errno;
        dropped_.store(true);
        ::shutdown(fd, SHUT_RDWR);
        errno = error;
    }
    return sent;
}

bool IpcServer::sendMessage(message& record) {
    std::lock_guard<std::mutex> send(sendLock_);
    tap(PcapngWriter::OUTBOUND, record.bytes(), MESSAGE_SIZE);
    if (writeToClient(record.bytes(), MESSAGE_SIZE) == MESSAGE_SIZE) return true;
    Diagnostics::systemError("Can't send message");
    return false;
}

bool IpcServer::sendMessage(const void* data, unsigned int length) {
    std::lock_guard<std::mutex> send(sendLock_);
    tap(PcapngWriter::OUTBOUND, static_cast<const unsigned char*>(data), length);
    if (writeToClient(static_cast<const unsigned char*>(data), length) == length) return true;
    Diagnostics::systemError("Can't send raw message");
    return false;
}

bool IpcServer::send(const SendBatch& batch) {
    if (batch.empty()) return true;
    std::lock_guard<std::mutex> send(sendLock_);
    return sendLocked(batch);
}

bool IpcServer::sendLocked(const SendBatch& batch) {
    if (CaptureTap::capturing()) {
        std::size_t start = 0;  // one captured block per record or piece of trailing data
        for (const SendBatch::Piece& piece : batch.pieces_) {
            tap(PcapngWriter::OUTBOUND, batch.bytes_.data() + start, piece.end - start);
            start = piece.end;
        }
    }
    const std::size_t sent = writeToClient(batch.bytes_.data(), batch.bytes_.size());
    if (sent == batch.bytes_.size()) return true;
    // One report, for the piece that did not leave whole: the rest of the
    // answer is not attempted on a connection that failed.
    for (const SendBatch::Piece& piece : batch.pieces_) {
        if (piece.end <= sent) continue;
        Diagnostics::systemError(piece.raw ? "Can't send raw message" : "Can't send message");
        break;
    }
    return false;
}

void IpcServer::stop() {
    if (!running_.load()) return;
    // Shutting the sockets down wakes the thread in accept or a receive; a
    // send blocked on a stalled client fails and releases the send lock.
    socket_.interrupt();
    if (thread_.joinable()) thread_.join();  // no lock held: the thread may be sending
    std::lock_guard<std::mutex> send(sendLock_);
    socket_.closeAll();
    running_.store(false);
}

}  // namespace tessarine
