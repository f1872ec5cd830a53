#pragma once

#include <list>
#include <mutex>
#include <string>

#include "middlewarefacade/PropertyFacade.h"
#include "sim/RequestLog.h"

namespace tessarine {
namespace sim {

// System properties: the scenario's, changed by set and remove.
class SimPropertyFacade final : public middlewarefacade::PropertyFacade {
public:
    SimPropertyFacade(std::list<middlewarefacade::Property_> properties, RequestLog& log)
        : properties_(std::move(properties)), log_(log) {}

    void setProperty(std::string name, std::string value) override;
    std::string getProperty(std::string name) override;
    std::list<middlewarefacade::Property_> getProperties() override;
    void removeProperty(std::string name) override;
    void reserved4() override {}
    void release() override {}

private:
    std::mutex mutex_;
    std::list<middlewarefacade::Property_> properties_;
    RequestLog& log_;
};

}  // namespace sim
}  // namespace tessarine
