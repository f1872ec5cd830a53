#include "sim/Simulator.h"
#include "sim/WaitingClients.h"

#include <sstream>

#include "sim/ScenarioSections.h"
#include "sim/StreamTables.h"

namespace tessarine {
namespace sim {

namespace {
std::atomic<Simulator*> current{nullptr};
}

void Simulator::install(Simulator* simulator) { current.store(simulator); }
Simulator* Simulator::installed() { return current.load(); }

Simulator::Simulator(const Scenario& scenario, RequestLog& log)
    : scenario_(scenario),
      log_(log),
      gate_(log),
      video_(scenario.video, scenario.media, scheduler_, gate_, log),
      property_(scenario.properties, log),
      si_(scenario.si, log),
      carousel_(scenario.carousels, scheduler_, gate_, log),
      demux_(std::make_unique<ScenarioSections>(scenario.sections), log),
      tuner_(scenario.tuner, log),
      dsmcc_(gate_),
      version_(scenario.versionFlags, log) {}

Simulator::~Simulator() { quiesce(); }

void Simulator::quiesce() {
    gate_.close();
    scheduler_.stop();
    demux_.quiesce();
}

bool Simulator::readStream(const std::string& source, broadcast::Pace pace, std::string& error) {
    broadcast_ = std::make_unique<broadcast::Broadcast>();
    if (!broadcast_->open(source, pace, error)) {
        broadcast_.reset();
        return false;
    }
    demux_.useStream(broadcast_->newFilter());
    log_.note("reading the transport stream " + source);
    refreshSi(0);
    return true;
}

// The SI facade takes a new set of tables when the stream's answers have
// changed; looked at ten times a second, which is well within how often a
// broadcast repeats its tables.
void Simulator::refreshSi(std::uint64_t seen) {
    const std::uint64_t changes = broadcast_->si().changes();
    if (changes != seen) si_.replace(withStream(scenario_.si, broadcast_->si()));
    // A file loops and a datagram source never ends: this is a pipe that closed, worth a line.
    if (broadcast_->reader().ended()) {
        log_.note("the transport stream " + broadcast_->reader().source() + " ended; its last tables stay");
        return;
    }
    scheduler_.after(std::chrono::milliseconds(100), [this, changes] { refreshSi(changes); });
}

void Simulator::watchWaitingClients(const std::string& controlPath) { checkWaitingClients(controlPath, 0); }

void Simulator::checkWaitingClients(const std::string& controlPath, int seen) {
    const int waiting = WaitingClients::count(controlPath);
    if (waiting > seen)
        log_.note("another client is waiting: the bridge serves one application at a time, and answers it when the "
                  "connected one leaves");
    // Twice a second: soon enough for a user wondering why a call hangs.
    scheduler_.after(std::chrono::milliseconds(500), [this, controlPath, waiting] { checkWaitingClients(controlPath, waiting); });
}

void Simulator::clientConnected() {
    {
        std::lock_guard<std::mutex> lock(connectionMutex_);
        connected_ = true;
    }
    gate_.setClient(true);
    connectionChanged_.notify_all();
    log_.note("client connected");
    startTimeline();
}

void Simulator::clientDisconnected() {
    {
        std::lock_guard<std::mutex> lock(connectionMutex_);
        connected_ = false;
    }
    gate_.setClient(false);
    {
        // Queued tasks go now, not at their time: connect and close cycles
        // must not pile them up.
        std::lock_guard<std::mutex> lock(timelineMutex_);
        ++timeline_;
        scheduler_.cancel(timelineTasks_);
    }
    log_.note("client disconnected");
}

bool Simulator::waitForClient(std::chrono::duration<double> patience) {
    std::unique_lock<std::mutex> lock(connectionMutex_);
    return connectionChanged_.wait_for(lock, patience, [this] { return connected_.load(); });
}

void Simulator::startTimeline() {
    std::lock_guard<std::mutex> lock(timelineMutex_);
    const unsigned generation = ++timeline_;
    scheduler_.cancel(timelineTasks_);
    const auto start = Scheduler::Clock::now();
    for (std::size_t i = 0; i < scenario_.streamEvents.size(); ++i) {
        const auto due = start + std::chrono::duration_cast<Scheduler::Clock::duration>(
                                     std::chrono::duration<double>(scenario_.streamEvents[i].at));
        scheduler_.at(due, [this, generation, i, due] { streamEventDue(generation, i, due); }, timelineTasks_);
    }
    for (const auto& change : scenario_.graphics) {
        scheduler_.after(std::chrono::duration<double>(change.at), [this, generation, change] {
            if (timeline_ == generation && video_.changeGraphics(change.first, change.second) == Delivery::NoListener)
                log_.note("graphics change dropped: no graphics listener");
        }, timelineTasks_);
    }
}

void Simulator::streamEventDue(unsigned generation, std::size_t index, Scheduler::Clock::time_point due) {
    if (timeline_ != generation) return;
    const StreamEvent& event = scenario_.streamEvents[index];
    if (dsmcc_.deliver(event.name, event.command) == Delivery::NoListener)
        log_.note("stream event \"" + event.name + "\" dropped: no listener");
    std::lock_guard<std::mutex> lock(timelineMutex_);  // no repeat queued after the client left
    if (event.every && timeline_ == generation) {
        // From the due time, not from now, so that a repeating event keeps its period.
        const auto next = due + std::chrono::duration_cast<Scheduler::Clock::duration>(std::chrono::duration<double>(*event.every));
        scheduler_.at(next, [this, generation, index, next] { streamEventDue(generation, index, next); }, timelineTasks_);
    }
}

std::vector<std::string> Simulator::status() {
    std::vector<std::string> lines;
    lines.push_back(std::string("client: ") + (hasClient() ? "connected" : "not connected"));
    std::ostringstream requests;
    requests << "requests:";
    const auto counts = log_.requestCounts();
    // The application state and stream events go to the client: they count as events.
    for (std::size_t i = 0; i <= static_cast<std::size_t>(Family::Demux); ++i)
        requests << ' ' << RequestLog::name(static_cast<Family>(i)) << ' ' << counts[i];
    lines.push_back(requests.str());
    lines.push_back("events sent: " + std::to_string(log_.eventCount()));
    lines.push_back("notices scheduled: " + std::to_string(scheduler_.queued()));
    for (auto& line : video_.describePlayers()) lines.push_back(std::move(line));
    if (broadcast_) lines.push_back(broadcast_->status());
    return lines;
}

}  // namespace sim
}  // namespace tessarine
