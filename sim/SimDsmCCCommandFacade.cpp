#include "sim/SimDsmCCCommandFacade.h"

#include <vector>

#include "sim/Text.h"

namespace tessarine {
namespace sim {

void SimDsmCCCommandFacade::addCommandListener(std::string eventName,
                                               middlewarefacade::DsmCCCommandListener* listener) {
    std::lock_guard<std::mutex> lock(mutex_);
    listeners_.insert({std::move(eventName), listener});
}

void SimDsmCCCommandFacade::removeCommandListener(std::string eventName,
                                                  middlewarefacade::DsmCCCommandListener* listener) {
    std::lock_guard<std::mutex> lock(mutex_);
    listeners_.erase({std::move(eventName), listener});
}

Delivery SimDsmCCCommandFacade::deliver(const std::string& eventName, const ipcutil::DsmCCCommand_t& command) {
    std::vector<middlewarefacade::DsmCCCommandListener*> targets;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& entry : listeners_)
            if (entry.first == eventName) targets.push_back(entry.second);
    }
    if (targets.empty()) return Delivery::NoListener;
    return gate_.pass("stream event " + quoted(eventName), Family::Dsmcc, command.commandCode,
                      eventName + " value " + std::to_string(command.commandValue) + " byte " +
                          std::to_string(command.commandByte) + " text " + quoted(command.commandText),
                      [&] { for (auto* listener : targets) listener->commandReceived(command); });
}

}  // namespace sim
}  // namespace tessarine
