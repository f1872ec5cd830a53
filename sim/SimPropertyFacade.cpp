#include "sim/SimPropertyFacade.h"

#include <algorithm>

#include "sim/Text.h"

namespace tessarine {
namespace sim {

void SimPropertyFacade::setProperty(std::string name, std::string value) {
    log_.request(Family::Property, PROPERTY_SET, [&] { return quoted(name) + " = " + quoted(value); });
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = std::find_if(properties_.begin(), properties_.end(), [&](const auto& p) { return p.name == name; });
    if (it != properties_.end())
        it->value = std::move(value);
    else
        properties_.push_back({std::move(name), std::move(value)});
}

std::string SimPropertyFacade::getProperty(std::string name) {
    std::string value;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = std::find_if(properties_.begin(), properties_.end(), [&](const auto& p) { return p.name == name; });
        if (it != properties_.end()) value = it->value;
    }
    log_.request(Family::Property, PROPERTY_GET, [&] { return quoted(name) + " -> " + quoted(value); });
    return value;
}

std::list<middlewarefacade::Property_> SimPropertyFacade::getProperties() {
    std::list<middlewarefacade::Property_> result;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        result = properties_;
    }
    log_.request(Family::Property, PROPERTY_LIST, [&] { return "list -> " + countText(result, "properties"); });
    return result;
}

void SimPropertyFacade::removeProperty(std::string name) {
    log_.request(Family::Property, PROPERTY_REMOVE, [&] { return "remove " + quoted(name); });
    std::lock_guard<std::mutex> lock(mutex_);
    properties_.remove_if([&](const auto& p) { return p.name == name; });
}

}  // namespace sim
}  // namespace tessarine
