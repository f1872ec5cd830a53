#include "transport/CaptureTap.h"

#include <chrono>

#include "transport/Diagnostics.h"
#include "transport/ThreadSupport.h"

namespace tessarine {

namespace {

// Room kept for the closing statistics, so that they fit under the limit.
constexpr std::uint64_t CLOSING_RESERVE = 512;
// Big enough for the longest piece: a section, or a filter command.
constexpr std::uint32_t SNAP_LENGTH = 262144;

std::uint64_t nowMicros() {
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(
                                          std::chrono::system_clock::now().time_since_epoch())
                                          .count());
}

}  // namespace

std::atomic<bool> CaptureTap::globalActive_{false};

CaptureTap::CaptureTap(std::size_t queueBytes) : queueLimit_(queueBytes), active_(ownActive_) {}

CaptureTap::CaptureTap(Global, std::size_t queueBytes) : queueLimit_(queueBytes), active_(globalActive_) {}

CaptureTap& CaptureTap::global() {
    static CaptureTap tap(Global{}, DEFAULT_QUEUE_BYTES);
    return tap;
}

CaptureTap::~CaptureTap() { stop(); }

bool CaptureTap::start(const std::string& path, std::uint64_t maxBytes) {
    std::lock_guard<std::mutex> control(control_);
    if (writer_.joinable()) {
        if (active_.load()) {
            Diagnostics::failure(("Can't capture to " + path).c_str(), "a capture is running");
            return false;
        }
        writer_.join();  // a capture that ended at its limit: its writer has finished
    }
    // A later capture to the same file in this process (a bridge built anew)
    // adds a section instead of replacing the earlier ones; the limit covers them all.
    if (!file_.open(path, path == path_)) {
        Diagnostics::systemError(("Can't capture to " + path).c_str());
        return false;
    }
    std::vector<unsigned char> header;
    PcapngWriter::addSectionHeader(header);
    PcapngWriter::addInterface(header, PcapngWriter::LINKTYPE_CONTROL, SNAP_LENGTH, "control");
    PcapngWriter::addInterface(header, PcapngWriter::LINKTYPE_SECTIONS, SNAP_LENGTH, "sections");
    if (!file_.write(header)) {
        Diagnostics::systemError(("Can't capture to " + path).c_str());
        file_.close();
        return false;
    }
    path_ = path;
    maxBytes_ = maxBytes == 0 ? DEFAULT_MAX_BYTES : maxBytes;
    packets_ = 0;
    endNote_.clear();
    {
        std::lock_guard<std::mutex> hold(lock_);
        stopping_ = false;
        dropped_[CONTROL] = dropped_[SECTIONS] = 0;
    }
    if (!startThread(writer_, &CaptureTap::writeLoop, this)) {
        file_.close();
        return false;
    }
    active_.store(true);
    return true;
}

void CaptureTap::stop() {
    std::lock_guard<std::mutex> control(control_);
    if (!writer_.joinable()) return;
    active_.store(false);
    {
        std::lock_guard<std::mutex> hold(lock_);
        stopping_ = true;
    }
    wake_.notify_one();
    writer_.join();
}

void CaptureTap::record(Channel channel, std::uint32_t direction, const void* data, std::size_t length) {
    if (!active_.load(std::memory_order_relaxed)) return;
    const std::uint64_t micros = nowMicros();
    std::lock_guard<std::mutex> hold(lock_);
    if (stopping_) return;
    if (queuedBytes_ + length > queueLimit_) {
        ++dropped_[channel];
        return;
    }
    const auto* bytes = static_cast<const unsigned char*>(data);
    queue_.push_back({micros, channel, direction, std::vector<unsigned char>(bytes, bytes + length)});
    queuedBytes_ += length;
    // A busy channel wakes the writer once the queue is half full, so that a
    // burst is written before it fills the queue; a quiet one waits for the interval.
    if (!wakeRequested_ && queuedBytes_ >= queueLimit_ / 2) {
        wakeRequested_ = true;
        wake_.notify_one();
    }
}

std::uint64_t CaptureTap::dropped() const {
    std::lock_guard<std::mutex> hold(lock_);
    return dropped_[CONTROL] + dropped_[SECTIONS];
}

void CaptureTap::writeLoop() {
    std::vector<Entry> batch;
    std::unique_lock<std::mutex> hold(lock_);
    for (;;) {
        wake_.wait_for(hold, WRITE_INTERVAL, [this] { return stopping_ || wakeRequested_; });
        batch.swap(queue_);
        queuedBytes_ = 0;
        wakeRequested_ = false;
        const bool stopping = stopping_;
        hold.unlock();
        const bool goOn = writeEntries(batch);
        batch.clear();
        hold.lock();
        if (!goOn || stopping) break;
    }
    hold.unlock();
    writeClosing(endNote_.empty() ? "capture stopped" : endNote_);
}

bool CaptureTap::writeEntries(std::vector<Entry>& entries) {
    std::vector<unsigned char> out;
    bool full = false;
    for (const Entry& entry : entries) {
        if (file_.bytesWritten() + out.size() + PcapngWriter::packetSize(entry.bytes.size()) + CLOSING_RESERVE >
            maxBytes_) {
            full = true;
            break;
        }
        PcapngWriter::addPacket(out, entry.channel, entry.micros,
                                entry.direction, entry.bytes.data(), entry.bytes.size());
        ++packets_;
    }
    if (!out.empty() && !file_.write(out)) {
        Diagnostics::systemError(("Can't write capture " + path_).c_str());
        endNote_ = "capture stopped: the file could not be written";
        active_.store(false);
        return false;
    }
    if (full) {
        endNote_ = "capture stopped at its limit of " + std::to_string(maxBytes_) + " bytes";
        active_.store(false);
        return false;
    }
    return true;
}

void CaptureTap::writeClosing(const std::string& note) {
    std::uint64_t dropped[2];
    {
        std::lock_guard<std::mutex> hold(lock_);
        dropped[CONTROL] = dropped_[CONTROL];
        dropped[SECTIONS] = dropped_[SECTIONS];
        queue_.clear();
        queuedBytes_ = 0;
    }
    const std::uint64_t total = dropped[CONTROL] + dropped[SECTIONS];
    const std::string summary = note + "; " + std::to_string(packets_) + " records written, " +
                                std::to_string(total) + " dropped";
    std::vector<unsigned char> out;
    const std::uint64_t micros = nowMicros();
    PcapngWriter::addStatistics(out, CONTROL, micros, dropped[CONTROL], summary);
    PcapngWriter::addStatistics(out, SECTIONS, micros, dropped[SECTIONS], std::string());
    file_.write(out);  // a failure has been reported already, or is the same as before
    file_.close();
    Diagnostics::failure(("Capture " + path_).c_str(), summary);
}

}  // namespace tessarine
