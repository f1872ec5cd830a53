#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "sim/EventGate.h"
#include "sim/RequestLog.h"
#include "sim/Scenario.h"
#include "sim/Scheduler.h"
#include "sim/SimCarouselFacade.h"
#include "sim/SimDemuxFacade.h"
#include "sim/SimDsmCCCommandFacade.h"
#include "sim/SimPropertyFacade.h"
#include "sim/SimSIFacade.h"
#include "sim/SimTunerFacade.h"
#include "sim/SimVersionFacade.h"
#include "sim/SimVideoFacade.h"
#include "sim/broadcast/Broadcast.h"
#include "tessarine/ConnectionListener.h"

namespace tessarine {
namespace sim {

// The simulated receiver: the eight facades built from a scenario, the
// thread that raises their notices, and the scenario's timeline of stream
// events and graphics changes, which starts anew whenever a client connects.
class Simulator final : public ConnectionListener {
public:
    Simulator(const Scenario& scenario, RequestLog& log);
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    // The simulator whose facades the factory functions hand out.
    static void install(Simulator* simulator);
    static Simulator* installed();

    SimVideoFacade& video() { return video_; }
    SimPropertyFacade& property() { return property_; }
    SimSIFacade& si() { return si_; }
    SimCarouselFacade& carousel() { return carousel_; }
    SimDemuxFacade& demux() { return demux_; }
    SimTunerFacade& tuner() { return tuner_; }
    SimDsmCCCommandFacade& dsmcc() { return dsmcc_; }
    SimVersionFacade& version() { return version_; }

    // Answers SI and section filters from a transport stream as well: opens
    // `source` and starts reading it. Call before the bridge exists; false
    // with a reason when the source cannot be opened.
    bool readStream(const std::string& source, broadcast::Pace pace, std::string& error);

    // ConnectionListener: the timeline runs while a client is connected.
    void clientConnected() override;
    void clientDisconnected() override;
    bool hasClient() const { return connected_.load(); }
    // True once a client is connected; false when `patience` runs out first.
    bool waitForClient(std::chrono::duration<double> patience);
    // Logs when an application connects to `controlPath` while another is
    // served: it waits, unanswered, until the first one leaves.
    void watchWaitingClients(const std::string& controlPath);
    // How the bridge tells which notices went out (EventGate::countSentWith).
    void countSentWith(std::function<std::uint64_t()> sent) { gate_.countSentWith(std::move(sent)); }

    // Stops every notice to the bridge and the simulator's thread. After it
    // the bridge can be deleted while the facades still exist.
    void quiesce();

    // Connection, counts of requests per family and of events, players, and
    // the stream's counters when one is read.
    std::vector<std::string> status();

private:
    void startTimeline();
    void streamEventDue(unsigned generation, std::size_t index, Scheduler::Clock::time_point due);
    void refreshSi(std::uint64_t seen);
    void checkWaitingClients(const std::string& controlPath, int seen);

    const Scenario& scenario_;
    RequestLog& log_;
    EventGate gate_;
    Scheduler scheduler_;
    // Before the facades: the stream's filter in demux_ leaves the stream
    // when the facade goes.
    std::unique_ptr<broadcast::Broadcast> broadcast_;
    SimVideoFacade video_;
    SimPropertyFacade property_;
    SimSIFacade si_;
    SimCarouselFacade carousel_;
    SimDemuxFacade demux_;
    SimTunerFacade tuner_;
    SimDsmCCCommandFacade dsmcc_;
    SimVersionFacade version_;

    std::mutex connectionMutex_;
    std::condition_variable connectionChanged_;
    std::atomic<bool> connected_{false};
    // Bumped by every connection and disconnection: timeline tasks of an
    // earlier connection see a different number and do nothing. The mutex
    // makes the bump, the cancelling of queued tasks and a repeat's
    // rescheduling one step each.
    std::mutex timelineMutex_;
    std::atomic<unsigned> timeline_{0};
    // The timeline's queued tasks, dropped when the client leaves.
    const Scheduler::Group timelineTasks_ = scheduler_.newGroup();
};

}  // namespace sim
}  // namespace tessarine
