#pragma once

#include <memory>
#include <mutex>

#include "middlewarefacade/SIFacade.h"
#include "sim/RequestLog.h"
#include "sim/Scenario.h"

namespace tessarine {
namespace sim {

// Service information answered from a set of SI tables. The tables can be
// replaced whole at any time (by a source that parses a broadcast, for
// instance); each query sees either the old set or the new one.
class SimSIFacade final : public middlewarefacade::SIFacade {
public:
    SimSIFacade(SiTables tables, RequestLog& log);

    void replace(SiTables tables);

    middlewarefacade::Network_ getNetwork() override;
    std::list<middlewarefacade::Descriptors_> getNetworkDescriptors() override;
    middlewarefacade::TransportStream_ getTransportStream() override;
    std::list<middlewarefacade::Descriptors_> getTransportStreamDescriptors(int id) override;
    std::list<middlewarefacade::Service_> getServices() override;
    int getCurrentService() override;
    std::list<middlewarefacade::Descriptors_> getServiceDescriptors(int id) override;
    std::list<middlewarefacade::ProgramEvent_> getProgramEvents() override;
    middlewarefacade::ProgramEvent_ getProgramEvent() override;
    std::list<middlewarefacade::Descriptors_> getProgramEventDescriptors(int first, int second) override;
    std::list<middlewarefacade::ServiceComponent_> getServiceComponents(int id) override;
    std::list<middlewarefacade::Descriptors_> getServiceComponentDescriptors(int id) override;
    std::list<middlewarefacade::PMT_> getPMTs(int id) override;
    std::string getSICodingFormat() override;
    std::list<int> getCASystemIds() override;
    bool isProtectedService() override;
    std::string getServiceDescription() override;
    void reserved17() override {}
    void release() override {}

private:
    std::shared_ptr<const SiTables> tables();

    RequestLog& log_;
    std::mutex mutex_;
    std::shared_ptr<const SiTables> tables_;
};

}  // namespace sim
}  // namespace tessarine
