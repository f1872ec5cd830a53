#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "sim/broadcast/RepeatGate.h"
#include "sim/broadcast/SiModel.h"

struct dvbpsi_s;

namespace tessarine::broadcast {

// What the input has seen so far. Every warning is counted under one kind.
struct InputCounters {
    uint64_t bytes = 0;
    uint64_t packets = 0;
    uint64_t syncLosses = 0;       // runs of bytes skipped to find packet sync
    uint64_t bytesSkipped = 0;
    uint64_t transportErrors = 0;  // packets flagged by the transport error indicator, or malformed
    uint64_t tableErrors = 0;      // sections refused: CRC, continuity, malformed
    uint64_t tablesRefused = 0;    // sub-tables beyond the decoder limit
    uint64_t readErrors = 0;
    uint64_t sectionsDelivered = 0;
    uint64_t sectionsDropped = 0;  // a filter's queue was full
    uint64_t loops = 0;            // a file source started again from its beginning
    uint64_t tableUpdates = 0;     // table versions taken into the SI

    uint64_t warnings() const { return syncLosses + transportErrors + tableErrors + tablesRefused + readErrors; }
};

// Receives the whole sections of one PID, CRC included, on the input thread.
class SectionSink {
public:
    // Returns false when the section could not be kept (queue full).
    virtual bool offer(const uint8_t* section, size_t length) = 0;

protected:
    ~SectionSink() = default;
};

// Turns a byte stream into TS packets and hands them on: PSI/SI tables to
// the SI model through libdvbpsi's table decoders, whole sections of the
// PIDs that sinks asked for to those sinks. Bytes between packets that are
// not in sync are skipped and counted. Memory stays bounded: at most one
// packet of carried-over bytes, one decoder per table the stream announces
// (up to a limit), one section assembler per subscribed PID.
class TsInput {
public:
    explicit TsInput(SiModel& model);
    ~TsInput();
    TsInput(const TsInput&) = delete;
    TsInput& operator=(const TsInput&) = delete;

    // Feeds the next bytes of the stream; called on one thread at a time.
    void feed(const uint8_t* data, size_t length);
    // The stream jumps (a file starts again): decoders start afresh so that
    // the jump is not taken for damage. The SI model keeps what it knows.
    void restart();

    // Called for every PCR with its PID, its value in 27 MHz ticks and the
    // offset in the stream (bytes fed before its packet).
    using PcrHandler = std::function<void(uint16_t pid, uint64_t pcr, uint64_t offset)>;
    void setPcrHandler(PcrHandler handler);

    void subscribe(uint16_t pid, SectionSink* sink);
    void unsubscribe(SectionSink* sink);

    InputCounters counters() const;
    std::string lastWarning() const;
    void countLoop();
    void countReadError(const std::string& what);

    // Limits that keep a hostile stream from growing memory.
    static constexpr size_t MAX_PROGRAMS = 256;
    static constexpr size_t MAX_SUBTABLES = 1024;

    // Internal: the libdvbpsi callbacks reach the input through these.
    struct Decoders;
    void warn(uint64_t InputCounters::*counter, const std::string& what);
    void deliverSection(uint16_t pid, const uint8_t* section, size_t length);

private:
    void handlePacket(const uint8_t* packet, uint64_t offset);

    SiModel& model_;
    std::unique_ptr<Decoders> decoders_;
    std::vector<uint8_t> pending_;
    uint64_t consumed_ = 0;  // bytes fed before pending_[0]
    bool synced_ = false;
    bool skipping_ = false;
    PcrHandler pcrHandler_;

    struct RawPid;
    mutable std::mutex routeMutex_;  // guards raw_ and delivery to sinks
    std::map<uint16_t, std::unique_ptr<RawPid>> raw_;
    // Which PIDs have sinks, read without the lock for every packet: a
    // subscription takes effect from about the packet after it.
    std::array<std::atomic<bool>, PID_COUNT> routed_{};

    mutable std::mutex countersMutex_;
    InputCounters counters_;
    std::string lastWarning_;
};

}  // namespace tessarine::broadcast
