#include "sim/SimSIFacade.h"

#include "sim/Text.h"

namespace tessarine {
namespace sim {

namespace {

// The entry for `key`, or an empty list.
template <typename Map, typename Key>
typename Map::mapped_type lookup(const Map& map, const Key& key) {
    auto it = map.find(key);
    return it == map.end() ? typename Map::mapped_type{} : it->second;
}

std::string idText(int id) { return "(" + std::to_string(id) + ")"; }

}  // namespace

SimSIFacade::SimSIFacade(SiTables tables, RequestLog& log)
    : log_(log), tables_(std::make_shared<const SiTables>(std::move(tables))) {}

void SimSIFacade::replace(SiTables tables) {
    auto next = std::make_shared<const SiTables>(std::move(tables));
    std::lock_guard<std::mutex> lock(mutex_);
    tables_ = std::move(next);
}

std::shared_ptr<const SiTables> SimSIFacade::tables() {
    std::lock_guard<std::mutex> lock(mutex_);
    return tables_;
}

std::string SimSIFacade::getSICodingFormat() {
    auto result = tables()->codingFormat;
    log_.request(Family::Si, SI_CODING_FORMAT, [&] { return "coding format -> " + quoted(result); });
    return result;
}

std::list<middlewarefacade::ProgramEvent_> SimSIFacade::getProgramEvents() {
    auto result = tables()->programEvents;
    log_.request(Family::Si, SI_PROGRAM_EVENTS, [&] { return "program events -> " + countText(result, "events"); });
    return result;
}

middlewarefacade::ProgramEvent_ SimSIFacade::getProgramEvent() {
    auto result = tables()->programEvent;
    log_.request(Family::Si, SI_PROGRAM_EVENT, [&] {
        return "program event -> " + (result.value1 == -1 ? std::string("none") : quoted(result.text0));
    });
    return result;
}

std::list<middlewarefacade::Descriptors_> SimSIFacade::getProgramEventDescriptors(int first, int second) {
    auto result = lookup(tables()->programEventDescriptors, std::make_pair(first, second));
    log_.request(Family::Si, SI_EVENT_DESCRIPTORS, [&] {
        return "program event descriptors (" + std::to_string(first) + "," + std::to_string(second) + ") -> " +
               countText(result, "descriptors");
    });
    return result;
}

std::list<int> SimSIFacade::getCASystemIds() {
    auto result = tables()->caSystemIds;
    log_.request(Family::Si, SI_CA_SYSTEM_IDS, [&] { return "CA system ids -> " + countText(result, "ids"); });
    return result;
}

bool SimSIFacade::isProtectedService() {
    const bool result = tables()->protectedService;
    log_.request(Family::Si, SI_PROTECTED_SERVICE, [&] {
        return std::string("protected -> ") + (result ? "yes" : "no");
    });
    return result;
}

std::list<middlewarefacade::Service_> SimSIFacade::getServices() {
    auto result = tables()->services;
    log_.request(Family::Si, SI_SERVICES, [&] { return "services -> " + countText(result, "services"); });
    return result;
}

int SimSIFacade::getCurrentService() {
    const int result = tables()->currentService;
    log_.request(Family::Si, SI_CURRENT_SERVICE, [&] { return "current service -> " + std::to_string(result); });
    return result;
}

std::string SimSIFacade::getServiceDescription() {
    auto result = tables()->serviceDescription;
    log_.request(Family::Si, SI_SERVICE_DESCRIPTION, [&] { return "service description -> " + quoted(result); });
    return result;
}

std::list<middlewarefacade::ServiceComponent_> SimSIFacade::getServiceComponents(int id) {
    auto result = lookup(tables()->serviceComponents, id);
    log_.request(Family::Si, SI_SERVICE_COMPONENTS, [&] {
        return "service components " + idText(id) + " -> " + countText(result, "components");
    });
    return result;
}

std::list<middlewarefacade::Descriptors_> SimSIFacade::getServiceComponentDescriptors(int id) {
    auto result = lookup(tables()->serviceComponentDescriptors, id);
    log_.request(Family::Si, SI_COMPONENT_DESCRIPTORS, [&] {
        return "component descriptors " + idText(id) + " -> " + countText(result, "descriptors");
    });
    return result;
}

middlewarefacade::TransportStream_ SimSIFacade::getTransportStream() {
    auto result = tables()->transportStream;
    log_.request(Family::Si, SI_TRANSPORT_STREAM, [&] {
        return "transport stream -> " + (result.value1 == -1 ? std::string("none") : std::to_string(result.value0));
    });
    return result;
}

std::list<middlewarefacade::Descriptors_> SimSIFacade::getTransportStreamDescriptors(int id) {
    auto result = lookup(tables()->transportStreamDescriptors, id);
    log_.request(Family::Si, SI_TRANSPORT_STREAM_DESCRIPTORS, [&] {
        return "transport stream descriptors " + idText(id) + " -> " + countText(result, "descriptors");
    });
    return result;
}

middlewarefacade::Network_ SimSIFacade::getNetwork() {
    auto result = tables()->network;
    log_.request(Family::Si, SI_NETWORK, [&] {
        return "network -> " + (result.value0 == -1 ? std::string("none") : quoted(result.text0));
    });
    return result;
}

std::list<middlewarefacade::Descriptors_> SimSIFacade::getNetworkDescriptors() {
    auto result = tables()->networkDescriptors;
    log_.request(Family::Si, SI_NETWORK_DESCRIPTORS, [&] {
        return "network descriptors -> " + countText(result, "descriptors");
    });
    return result;
}

std::list<middlewarefacade::PMT_> SimSIFacade::getPMTs(int id) {
    auto result = lookup(tables()->pmts, id);
    log_.request(Family::Si, SI_PMTS, [&] { return "PMTs " + idText(id) + " -> " + countText(result, "entries"); });
    return result;
}

std::list<middlewarefacade::Descriptors_> SimSIFacade::getServiceDescriptors(int id) {
    auto result = lookup(tables()->serviceDescriptors, id);
    log_.request(Family::Si, RequestLog::NO_CODE, [&] {
        return "service descriptors " + idText(id) + " -> " + countText(result, "descriptors");
    });
    return result;
}

}  // namespace sim
}  // namespace tessarine
