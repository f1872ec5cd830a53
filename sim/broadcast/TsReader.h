#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

#include "sim/broadcast/TsInput.h"

namespace tessarine::broadcast {

// How a file source is paced: at the stream's own rate from its PCR, or as
// fast as it can be read.
enum class Pace { Pcr, None };

// Parses "pcr" / "none"; false for anything else.
bool parsePace(const std::string& text, Pace& pace);

// Reads a transport stream from a source on a thread of its own and feeds
// it to a TsInput. Sources:
//   a file path    read from its start, and again from its start at its end;
//   "-"            standard input, until it ends;
//   udp://ADDR:PORT datagrams received on that address (a multicast group is
//                  joined); "udp://@ADDR:PORT" and "[v6addr]" are accepted.
// Standard input and UDP are live: the writer sets their pace.
class TsReader {
public:
    explicit TsReader(TsInput& input);
    ~TsReader();
    TsReader(const TsReader&) = delete;
    TsReader& operator=(const TsReader&) = delete;

    // Opens the source and starts reading; false with a reason when the
    // source cannot be opened.
    bool start(const std::string& source, Pace pace, std::string& error);
    void stop();

    // The local UDP port bound (useful with port 0), or 0.
    int boundPort() const { return port_; }
    // True once a source that does not loop has ended.
    bool ended() const { return ended_; }
    const std::string& source() const { return source_; }

private:
    void run();
    bool openUdp(const std::string& address, std::string& error);
    void onPcr(uint16_t pid, uint64_t pcr, uint64_t offset);
    // Paces the bytes fed since the last paced point at the nominal rate.
    void paceAtNominalRate();
    void advance(double seconds);
    void waitUntil(std::chrono::steady_clock::time_point when);

    TsInput& input_;
    std::string source_;
    int fd_ = -1;
    bool ownsFd_ = false;
    bool loops_ = false;
    bool datagrams_ = false;
    bool paced_ = false;
    int port_ = 0;
    std::atomic<bool> ended_{false};

    std::thread thread_;
    std::mutex stopMutex_;
    std::condition_variable stopCv_;
    bool stopping_ = false;

    // Pacing: stream time reached so far and the wall-clock time it maps to;
    // bytes fed, and the offset up to which their time has been accounted.
    std::chrono::steady_clock::time_point wallStart_;
    double streamSeconds_ = 0;
    uint64_t fed_ = 0;
    uint64_t pacedTo_ = 0;
    int pcrPid_ = -1;
    bool havePcr_ = false;
    uint64_t lastPcr_ = 0;
};

}  // namespace tessarine::broadcast
