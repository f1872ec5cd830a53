#include "sim/SimTunerFacade.h"

#include "sim/Text.h"

namespace tessarine {
namespace sim {

int SimTunerFacade::getCurrentTransportStreamID() {
    log_.request(Family::Tuner, TUNER_CURRENT_TS_ID, [&] {
        return "transport stream id -> " + std::to_string(settings_.currentTransportStreamId);
    });
    return settings_.currentTransportStreamId;
}

std::list<int> SimTunerFacade::ids(int kind, int parameter) {
    std::list<int> result;
    for (const auto& list : settings_.idLists) {
        if (list.kind == kind && (!list.parameter || *list.parameter == parameter)) {
            result = list.ids;
            break;
        }
    }
    log_.request(Family::Tuner, kind, [&] {
        return "ids (" + std::to_string(parameter) + ") -> " + countText(result, "ids");
    });
    return result;
}

const TunerSettings::Channel* SimTunerFacade::channel(int first, int second) const {
    for (const auto& channel : settings_.channels)
        if (channel.first == first && channel.second == second) return &channel;
    return nullptr;
}

std::string SimTunerFacade::getChannelName(int first, int second) {
    const auto* found = channel(first, second);
    const std::string name = found != nullptr ? found->name : std::string();
    log_.request(Family::Tuner, RequestLog::NO_CODE, [&] {
        return "channel name " + std::to_string(first) + "," + std::to_string(second) + " -> " + quoted(name);
    });
    return name;
}

int SimTunerFacade::getVirtualChannelNumber(int first, int second) {
    const auto* found = channel(first, second);
    const int number = found != nullptr ? found->number : -1;
    log_.request(Family::Tuner, RequestLog::NO_CODE,
                 [&] { return "channel number " + std::to_string(first) + "," + std::to_string(second) + " -> " +
                     std::to_string(number); });
    return number;
}

}  // namespace sim
}  // namespace tessarine
