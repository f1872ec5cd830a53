#include "tessarine/IpcServerManager.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "hub/AppStateReply.h"
#include "hub/CarouselRequests.h"
#include "hub/FanOut.h"
#include "hub/HubContext.h"
#include "hub/MediaRequests.h"
#include "hub/PropertyRequests.h"
#include "hub/SiRequests.h"
#include "hub/TunerRequests.h"
#include "hub/VideoRequests.h"
#include "tessarine/FileDescriptor.h"
#include "tessarine/protocol/RecordTypes.h"
#include "tessarine/protocol/Sockets.h"
#include "transport/CaptureTap.h"
#include "transport/Diagnostics.h"

namespace tessarine {

namespace {

// Process-wide, statically initialised before any hub: the listener lock
// guards the instance pointer, the socket directory, both registries and
// every fan-out.
std::mutex listenerLock;
std::atomic<IpcServerManager*> instance{nullptr};

std::string& directory() {
    static std::string path = DEFAULT_SOCKET_DIRECTORY;
    return path;
}

std::string socketPath(const std::string& dir, const char* name) { return dir + "/" + name; }

#ifdef __GLIBC__
// The process's resident set in bytes, from /proc; 0 where it cannot be read.
std::size_t residentBytes() {
    FileDescriptor statm(::open("/proc/self/statm", O_RDONLY | O_CLOEXEC));
    char text[128] = {};
    if (!statm.valid() || ::read(statm.get(), text, sizeof text - 1) <= 0) return 0;
    unsigned long long size = 0, resident = 0;
    if (std::sscanf(text, "%llu %llu", &size, &resident) != 2) return 0;
    return static_cast<std::size_t>(resident) * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

// glibc keeps freed memory for later allocations; after a large answer's
// lists are released that can be hundreds of MiB the process no longer uses.
// A trim makes the next answer fault every page in again (a list of 10 000
// items took three times as long), so it is done only when the resident set
// has grown by more than this since the last one: answers of a like size
// reuse what the previous one left.
constexpr std::size_t TRIM_AFTER_GROWTH = 32u << 20;

// Freeing a block of at least 64 KiB makes glibc merge the thread's small
// freed blocks (its fast bins) into large ones. Without that, the tens of
// thousands of small blocks a list of program events leaves behind made the
// next such list take one and a half to two and a half times as long.
constexpr std::size_t MERGING_BLOCK = 72u << 10;  // above 64 KiB, below the 128 KiB mmap threshold
#endif

void tidyFreedMemory() {
#ifdef __GLIBC__
    auto* block = static_cast<volatile char*>(std::malloc(MERGING_BLOCK));
    if (block != nullptr) {
        block[0] = 0;  // used, so that the pair is not optimised away
        std::free(const_cast<char*>(block));
    }
    static std::atomic<std::size_t> afterLastTrim{0};
    const std::size_t resident = residentBytes();
    if (resident != 0 && resident <= afterLastTrim.load() + TRIM_AFTER_GROWTH) return;
    ::malloc_trim(0);
    afterLastTrim.store(residentBytes());
#endif
}

// TESSARINE_CAPTURE_MAX in bytes; 0 (the default) when unset or not a number.
std::uint64_t captureLimit() {
    const char* text = std::getenv("TESSARINE_CAPTURE_MAX");
    if (text == nullptr) return 0;
    char* end = nullptr;
    const unsigned long long value = std::strtoull(text, &end, 10);
    return end != text && *end == '\0' ? value : 0;
}

}  // namespace

IpcServerManager* IpcServerManager::getInstance() {
    IpcServerManager* hub = instance.load(std::memory_order_acquire);
    if (hub != nullptr) return hub;
    std::lock_guard<std::mutex> lock(listenerLock);
    hub = instance.load(std::memory_order_relaxed);
    if (hub == nullptr) {
        hub = new IpcServerManager(socketPath(directory(), CONTROL_SOCKET_NAME),
                                   socketPath(directory(), DEMUX_SOCKET_NAME));
        instance.store(hub, std::memory_order_release);  // published only when whole
    }
    return hub;
}

void IpcServerManager::destroy() {
    IpcServerManager* hub = nullptr;
    {
        std::lock_guard<std::mutex> lock(listenerLock);
        hub = instance.exchange(nullptr);
    }
    // Not under the lock: stopping waits for the receive thread, which may be
    // waiting for the lock itself.
    delete hub;
}

bool IpcServerManager::setSocketDirectory(const std::string& dir) {
    std::lock_guard<std::mutex> lock(listenerLock);
    if (instance.load() != nullptr) return false;
    if (socketPath(dir, DEMUX_SOCKET_NAME).size() > MAX_SOCKET_PATH_LENGTH) return false;  // the longer of the two
    directory() = dir;
    return true;
}

std::string IpcServerManager::socketDirectory() {
    std::lock_guard<std::mutex> lock(listenerLock);
    return directory();
}

IpcServerManager::IpcServerManager(const std::string& controlPath, const std::string& demuxPath)
    : server_(new IpcServer(this, controlPath.c_str(), static_cast<int>(controlPath.size()))),
      demuxServer_(new IpcDemuxServer(demuxPath)) {
    // Read when the hub is built, so the first connection is in the file.
    const char* capture = std::getenv("TESSARINE_CAPTURE");
    if (capture != nullptr && *capture != '\0') startCapture(capture, captureLimit());
    // A server that fails to start reports it itself; the hub exists regardless.
    server_->start();
    demuxServer_->start();
}

IpcServerManager::~IpcServerManager() {
    // First release host threads waiting for an application-state answer, and
    // let a request being sent finish before its server goes.
    AppStateReply::hubDestroyed();
    server_->stop();       // while server_ is still set: a request being handled uses it
    server_.reset();       // no clientDisconnected()
    demuxServer_.reset();  // ends the demux thread, so a new hub can bind anew
    stopCapture();         // after both servers: their last records are in the file
    std::lock_guard<std::mutex> lock(listenerLock);
    listeners_.clear();
    connectionListeners_.clear();
}

bool IpcServerManager::startCapture(const std::string& path, std::uint64_t maxBytes) {
    return CaptureTap::global().start(path, maxBytes);
}

void IpcServerManager::stopCapture() { CaptureTap::global().stop(); }

FanOut<IpcServerListener> IpcServerManager::requestListeners() { return {listenerLock, listeners_}; }

void IpcServerManager::addIpcServerListener(IpcServerListener* listener) {
    std::lock_guard<std::mutex> lock(listenerLock);
    listeners_.insert(listener);
}

void IpcServerManager::removeIpcServerListener(IpcServerListener* listener) {
    std::lock_guard<std::mutex> lock(listenerLock);
    listeners_.erase(listener);
}

void IpcServerManager::addConnectionListener(ConnectionListener* listener) {
    std::lock_guard<std::mutex> lock(listenerLock);
    connectionListeners_.insert(listener);
}

void IpcServerManager::removeConnectionListener(ConnectionListener* listener) {
    std::lock_guard<std::mutex> lock(listenerLock);
    connectionListeners_.erase(listener);
}

void IpcServerManager::addIpcDemuxServerListener(IpcDemuxServerListener* listener) {
    demuxServer_->setListener(listener);
}

void IpcServerManager::setDemuxConnectionListener(ConnectionListener* listener) {
    demuxServer_->setConnectionListener(listener);
}

void IpcServerManager::clientConnected() {
    FanOut<ConnectionListener>(listenerLock, connectionListeners_).all([](ConnectionListener& listener) {
        listener.clientConnected();
    });
}

void IpcServerManager::clientDisconnected() {
    AppStateReply::connectionEnded();  // a request on this connection gets no answer now
    FanOut<ConnectionListener>(listenerLock, connectionListeners_).all([](ConnectionListener& listener) {
        listener.clientDisconnected();
    });
}

void IpcServerManager::update(std::list<message>) {}

void IpcServerManager::update(message& record) {
    const protocol::RecordType* kind = protocol::findRecordType(record.type);
    if (kind == nullptr || !kind->fromClient) {
        Diagnostics::unknown(protocol::UNKNOWN_TYPE_REPORT, record.type);
        return;
    }
    const protocol::Request* request = protocol::findRequest(record.type, record.code);
    if (request == nullptr) {
        if (kind->unknownCode == protocol::UnknownCode::Logged) {
            Diagnostics::unknown(kind->unknownCodeReport, record.code);
        }
        return;
    }
    const HubContext context{*request, *this, *server_, requestListeners()};
    dispatch(context, record);
    if (context.largeAnswer) tidyFreedMemory();  // the handler has released its lists
}

void IpcServerManager::dispatch(const HubContext& context, message& record) {
    switch (record.type) {
        case MSG_VIDEO: return VideoRequests(context).handleVideo(record);
        case MSG_APP_STATE: return AppStateReply::answer(record.bytes()[RESULT_BYTE_OFFSET]);
        case MSG_PROPERTY: return PropertyRequests(context).handle(record);
        case MSG_AUDIO: return VideoRequests(context).handleAudio(record);
        case MSG_TUNER: return TunerRequests(context).handle(record);
        case MSG_CAROUSEL: return CarouselRequests(context).handle(record);
        case MSG_SI: return SiRequests(context).handle(record);
        case MSG_MEDIA: return MediaRequests(context).handle(record);
        case MSG_VERSION:
            record.bytes()[RESULT_BYTE_OFFSET] = static_cast<unsigned char>(checkVersionFlag(record.code));
            server_->sendMessage(record);
            return;
        default:
            return;
    }
}

}  // namespace tessarine
