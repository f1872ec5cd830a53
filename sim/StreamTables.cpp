#include "sim/StreamTables.h"

#include <initializer_list>

namespace tessarine {
namespace sim {

namespace {

// Sets map[key] to the stream's answer when it has one.
template <typename Map, typename Key, typename Answer>
void overlay(Map& map, const Key& key, Answer answer) {
    if (!answer.empty()) map[key] = std::move(answer);
}

}  // namespace

SiTables withStream(const SiTables& scenario, const broadcast::SiModel& stream) {
    SiTables t = scenario;
    if (auto format = stream.getSICodingFormat(); !format.empty()) t.codingFormat = format;
    if (auto description = stream.getServiceDescription(); !description.empty()) t.serviceDescription = description;
    const int current = stream.getCurrentService();
    if (current != -1) t.currentService = current;
    // Once the current service's PMT is known its CA list is the answer, empty or not.
    if (auto protectedService = stream.isProtectedService()) {
        t.protectedService = *protectedService;
        t.caSystemIds = stream.getCASystemIds();
    }
    if (auto network = stream.getNetwork()) {
        t.network = *network;
        t.networkDescriptors = stream.getNetworkDescriptors();
    }
    if (auto ts = stream.getTransportStream()) {
        t.transportStream = *ts;
        for (int key : {ts->value0, 0, -1})
            overlay(t.transportStreamDescriptors, key, stream.getTransportStreamDescriptors(key));
    }
    if (auto event = stream.getProgramEvent()) t.programEvent = *event;

    auto services = stream.getServices();
    std::list<int> serviceKeys{0, -1};
    for (const auto& service : services) serviceKeys.push_back(service.value0);
    for (int key : serviceKeys) {
        auto components = stream.getServiceComponents(key);
        for (const auto& component : components)
            overlay(t.serviceComponentDescriptors, component.value0,
                    stream.getServiceComponentDescriptors(component.value0));
        overlay(t.serviceComponents, key, std::move(components));
        overlay(t.serviceDescriptors, key, stream.getServiceDescriptors(key));
        overlay(t.pmts, key, stream.getPMTs(key));
    }
    if (!services.empty()) t.services = std::move(services);

    auto events = stream.getProgramEvents();
    for (const auto& event : events) {
        auto descriptors = stream.getProgramEventDescriptors(event.value4, event.value0);
        if (event.value4 == current) {
            overlay(t.programEventDescriptors, std::make_pair(0, event.value0), descriptors);
            overlay(t.programEventDescriptors, std::make_pair(-1, event.value0), descriptors);
        }
        overlay(t.programEventDescriptors, std::make_pair(event.value4, event.value0), std::move(descriptors));
    }
    if (!events.empty()) t.programEvents = std::move(events);
    return t;
}

}  // namespace sim
}  // namespace tessarine
