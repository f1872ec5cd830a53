#pragma once

#include <mutex>
#include <set>
#include <string>
#include <utility>

#include "middlewarefacade/DsmCCCommandFacade.h"
#include "sim/EventGate.h"

namespace tessarine {
namespace sim {

// Stream-event commands, delivered by name to the listeners registered for it.
class SimDsmCCCommandFacade final : public middlewarefacade::DsmCCCommandFacade {
public:
    explicit SimDsmCCCommandFacade(EventGate& gate) : gate_(gate) {}

    // Sends the command to every listener of `eventName`.
    Delivery deliver(const std::string& eventName, const ipcutil::DsmCCCommand_t& command);

    void addCommandListener(std::string eventName, middlewarefacade::DsmCCCommandListener* listener) override;
    void removeCommandListener(std::string eventName, middlewarefacade::DsmCCCommandListener* listener) override;
    void reserved2() override {}
    void release() override {}

private:
    EventGate& gate_;
    std::mutex mutex_;
    std::set<std::pair<std::string, middlewarefacade::DsmCCCommandListener*>> listeners_;
};

}  // namespace sim
}  // namespace tessarine
