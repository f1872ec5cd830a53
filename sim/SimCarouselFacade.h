#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "middlewarefacade/CarouselFacade.h"
#include "sim/EventGate.h"
#include "sim/RequestLog.h"
#include "sim/Scenario.h"
#include "sim/Scheduler.h"

namespace tessarine {
namespace sim {

// Object carousels: a mount answers the scenario's text and, from then on,
// the carousel's download notices arrive at their times on the scheduler's
// thread, for the listeners registered at that moment. An unmount cancels
// the notices still to come.
class SimCarouselFacade final : public middlewarefacade::CarouselFacade {
public:
    SimCarouselFacade(std::vector<CarouselSettings> carousels, Scheduler& scheduler, EventGate& gate, RequestLog& log)
        : carousels_(std::move(carousels)), scheduler_(scheduler), gate_(gate), log_(log) {}

    // Sends a download notice now. An empty second text uses the one-text notice.
    Delivery notifyDownload(const std::string& first, const std::string& second);

    std::string mount(std::string name) override;
    void umount(std::string name) override;
    void addCarouselListener(middlewarefacade::CarouselListener* listener) override;
    void removeCarouselListener(middlewarefacade::CarouselListener* listener) override;
    void reserved4() override {}
    void release() override {}

private:
    void download(const std::string& name, unsigned generation, const CarouselSettings::Download& download);
    // The carousel's group of download notices, emptied of those queued;
    // called with mutex_ held.
    Scheduler::Group downloadTasks(const std::string& name);

    const std::vector<CarouselSettings> carousels_;
    Scheduler& scheduler_;
    EventGate& gate_;
    RequestLog& log_;

    std::mutex mutex_;
    std::set<middlewarefacade::CarouselListener*> listeners_;
    // Per carousel name: bumped by every mount and unmount, so that notices
    // of an earlier mount are dropped.
    std::map<std::string, unsigned> generations_;
    std::set<std::string> mounted_;
    std::map<std::string, Scheduler::Group> groups_;
};

}  // namespace sim
}  // namespace tessarine
