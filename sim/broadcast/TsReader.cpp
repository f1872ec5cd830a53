#include "sim/broadcast/TsReader.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <vector>

namespace tessarine::broadcast {

namespace {

constexpr double PCR_HZ = 27e6;
constexpr uint64_t PCR_WRAP = (1ull << 33) * 300;
// A PCR step beyond this is a discontinuity, not elapsed time.
constexpr double MAX_PCR_STEP = 2.0;
// Bytes that no usable PCR interval covers are read at this nominal rate.
constexpr double NOMINAL_BITRATE = 1e6;
// No PCR interval may claim more than this, faster than any multiplex: a
// clock that barely moves would otherwise read the file at full speed.
constexpr double MAX_BITRATE = 100e6;
// Bytes beyond this without a PCR are paced at the nominal rate at once;
// a stream paced by its PCR has one at least every 100 ms.
constexpr uint64_t MAX_UNPACED_BYTES = 1 << 20;
// A pass over a looping file takes at least this long, whatever the pace,
// so that a loop of a tiny file cannot keep a core busy.
constexpr std::chrono::milliseconds MIN_PASS{10};
// Falling further behind than this restarts the pacing clock.
constexpr double MAX_LAG = 1.0;
constexpr size_t CHUNK = 188 * 7 * 8;
constexpr size_t RTP_HEADER = 12;

std::string errnoText(const std::string& what) { return what + ": " + std::strerror(errno); }

}  // namespace

bool parsePace(const std::string& text, Pace& pace) {
    if (text == "pcr") pace = Pace::Pcr;
    else if (text == "none") pace = Pace::None;
    else return false;
    return true;
}

TsReader::TsReader(TsInput& input) : input_(input) {}

TsReader::~TsReader() { stop(); }

bool TsReader::start(const std::string& source, Pace pace, std::string& error) {
    stop();
    source_ = source;
    ended_ = false;
    loops_ = datagrams_ = paced_ = false;
    port_ = 0;
    if (source == "-") {
        fd_ = STDIN_FILENO;
        ownsFd_ = false;
    } else if (source.rfind("udp://", 0) == 0) {
        if (!openUdp(source.substr(6), error)) return false;
    } else {
        fd_ = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd_ < 0) {
            error = errnoText(source);
            return false;
        }
        ownsFd_ = true;
        struct stat st {};
        loops_ = fstat(fd_, &st) == 0 && S_ISREG(st.st_mode);
        paced_ = loops_ && pace == Pace::Pcr;
    }
    stopping_ = false;
    wallStart_ = std::chrono::steady_clock::now();
    streamSeconds_ = 0;
    pcrPid_ = -1;
    havePcr_ = false;
    fed_ = pacedTo_ = 0;
    if (paced_) input_.setPcrHandler([this](uint16_t pid, uint64_t pcr, uint64_t offset) { onPcr(pid, pcr, offset); });
    else input_.setPcrHandler(nullptr);
    thread_ = std::thread([this] { run(); });
    return true;
}

bool TsReader::openUdp(const std::string& address, std::string& error) {
    std::string target = address.empty() || address[0] != '@' ? address : address.substr(1);
    size_t colon = target.rfind(':');
    if (colon == std::string::npos) {
        error = "udp source needs ADDR:PORT";
        return false;
    }
    std::string host = target.substr(0, colon), service = target.substr(colon + 1);
    if (host.size() >= 2 && host.front() == '[' && host.back() == ']') host = host.substr(1, host.size() - 2);
    addrinfo hints{};
    hints.ai_socktype = SOCK_DGRAM;
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
    addrinfo* info = nullptr;
    if (int rc = getaddrinfo(host.empty() ? nullptr : host.c_str(), service.c_str(), &hints, &info); rc != 0) {
        error = "udp source " + address + ": " + gai_strerror(rc);
        return false;
    }
    fd_ = ::socket(info->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    bool ok = fd_ >= 0;
    if (ok) {
        int one = 1, buffer = 1 << 20;
        setsockopt(fd_, SOL_SOCKET, SO_REUSEADDR, &one, sizeof(one));
        setsockopt(fd_, SOL_SOCKET, SO_RCVBUF, &buffer, sizeof(buffer));
        ok = ::bind(fd_, info->ai_addr, info->ai_addrlen) == 0;
    }
    // A group address is joined on the default interface.
    if (ok && info->ai_family == AF_INET) {
        auto* in = reinterpret_cast<sockaddr_in*>(info->ai_addr);
        if (IN_MULTICAST(ntohl(in->sin_addr.s_addr))) {
            ip_mreq request{};
            request.imr_multiaddr = in->sin_addr;
            request.imr_interface.s_addr = htonl(INADDR_ANY);
            ok = setsockopt(fd_, IPPROTO_IP, IP_ADD_MEMBERSHIP, &request, sizeof(request)) == 0;
        }
    } else if (ok && info->ai_family == AF_INET6) {
        auto* in6 = reinterpret_cast<sockaddr_in6*>(info->ai_addr);
        if (IN6_IS_ADDR_MULTICAST(&in6->sin6_addr)) {
            ipv6_mreq request{};
            request.ipv6mr_multiaddr = in6->sin6_addr;
            ok = setsockopt(fd_, IPPROTO_IPV6, IPV6_JOIN_GROUP, &request, sizeof(request)) == 0;
        }
    }
    freeaddrinfo(info);
    if (!ok) {
        error = errnoText("udp source " + address);
        if (fd_ >= 0) ::close(fd_);
        fd_ = -1;
        return false;
    }
    sockaddr_storage local{};
    socklen_t length = sizeof(local);
    if (getsockname(fd_, reinterpret_cast<sockaddr*>(&local), &length) == 0)
        port_ = ntohs(local.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6*>(&local)->sin6_port
                                                  : reinterpret_cast<sockaddr_in*>(&local)->sin_port);
    ownsFd_ = true;
    datagrams_ = true;
    return true;
}

void TsReader::stop() {
    if (thread_.joinable()) {
        {
            std::lock_guard<std::mutex> lock(stopMutex_);
            stopping_ = true;
        }
        stopCv_.notify_all();
        thread_.join();
    }
    input_.setPcrHandler(nullptr);
    if (ownsFd_ && fd_ >= 0) ::close(fd_);
    fd_ = -1;
    ownsFd_ = false;
}

void TsReader::run() {
    std::vector<uint8_t> buffer(datagrams_ ? 65536 : CHUNK);
    uint64_t bytesThisPass = 0;
    auto passStart = std::chrono::steady_clock::now();
    auto stopping = [this] {
        std::lock_guard<std::mutex> lock(stopMutex_);
        return stopping_;
    };
    while (!stopping()) {
        // A regular file (the looping kind) is always readable: only a pipe
        // or a socket is polled, woken regularly to notice stop().
        int ready = 1;
        if (!loops_) {
            pollfd p{fd_, POLLIN, 0};
            ready = ::poll(&p, 1, 100);
            if (ready == 0 || (ready < 0 && errno == EINTR)) continue;
        }
        ssize_t n = ready < 0 ? -1 : ::read(fd_, buffer.data(), buffer.size());
        if (n < 0) {
            if (errno == EINTR || errno == EAGAIN) continue;
            input_.countReadError(errnoText("reading " + source_));
            if (datagrams_) continue;
            break;
        }
        if (n == 0 && datagrams_) {  // an empty datagram, not the end: anyone may send one
            input_.countReadError("empty datagram ignored");
            continue;
        }
        if (n == 0) {
            if (!loops_ || bytesThisPass == 0 || ::lseek(fd_, 0, SEEK_SET) != 0) break;
            bytesThisPass = 0;
            input_.countLoop();
            input_.restart();
            if (paced_) paceAtNominalRate();  // the bytes after the pass's last PCR
            waitUntil(passStart + MIN_PASS);
            passStart = std::chrono::steady_clock::now();
            continue;
        }
        bytesThisPass += static_cast<uint64_t>(n);
        const uint8_t* data = buffer.data();
        size_t length = static_cast<size_t>(n);
        // RTP-wrapped TS: a version-2 header in front of whole packets.
        if (datagrams_ && length > RTP_HEADER && (data[0] & 0xC0) == 0x80 && data[RTP_HEADER] == 0x47 &&
            (length - RTP_HEADER) % 188 == 0) {
            data += RTP_HEADER;
            length -= RTP_HEADER;
        }
        input_.feed(data, length);
        fed_ += length;
        if (paced_ && (pcrPid_ < 0 || fed_ - pacedTo_ > MAX_UNPACED_BYTES)) paceAtNominalRate();
    }
    ended_ = !stopping();
}

// Follows the first PID that carries a PCR; each step of its clock is the
// time of the bytes since the previous one, and must pass on the wall clock
// too. Bytes that no usable step covers (before the first PCR, across a
// discontinuity or a loop) take their time at the nominal rate.
void TsReader::onPcr(uint16_t pid, uint64_t pcr, uint64_t offset) {
    if (pcrPid_ < 0) pcrPid_ = pid;
    if (pid != pcrPid_) return;
    const double step = static_cast<double>((pcr + PCR_WRAP - lastPcr_) % PCR_WRAP) / PCR_HZ;
    const bool usable = havePcr_ && step > 0 && step <= MAX_PCR_STEP;
    havePcr_ = true;
    lastPcr_ = pcr;
    const double bits = static_cast<double>(offset - pacedTo_) * 8;
    pacedTo_ = offset;
    advance(usable ? std::max(step, bits / MAX_BITRATE) : bits / NOMINAL_BITRATE);
}

void TsReader::paceAtNominalRate() {
    const uint64_t bytes = fed_ - pacedTo_;
    pacedTo_ = fed_;
    havePcr_ = false;  // the next PCR starts a new interval
    advance(static_cast<double>(bytes) * 8 / NOMINAL_BITRATE);
}

void TsReader::waitUntil(std::chrono::steady_clock::time_point when) {
    std::unique_lock<std::mutex> lock(stopMutex_);
    stopCv_.wait_until(lock, when, [this] { return stopping_; });
}

void TsReader::advance(double seconds) {
    streamSeconds_ += seconds;
    auto due = wallStart_ + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                                std::chrono::duration<double>(streamSeconds_));
    auto now = std::chrono::steady_clock::now();
    if (now - due > std::chrono::duration<double>(MAX_LAG)) {
        wallStart_ += now - due;
        return;
    }
    waitUntil(due);
}

}  // namespace tessarine::broadcast
