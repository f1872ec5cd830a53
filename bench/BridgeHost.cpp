#include "bench/BridgeHost.h"

#include <cstdlib>
#include <iostream>

#include "MiddlewareIpc.h"
#include "tessarine/IpcServerManager.h"

namespace tessarine {
namespace bench {

namespace {
std::unique_ptr<BridgeHost> host;
}

BridgeHost& BridgeHost::instance() {
    if (!host) host.reset(new BridgeHost());
    return *host;
}

void BridgeHost::shutdown() { host.reset(); }

BridgeHost::BridgeHost() {
    scenario_.properties.push_back({"system.language", "por"});
    scenario_.versionFlags = {1};
    simulator_ = std::make_unique<sim::Simulator>(scenario_, log_);
    if (!IpcServerManager::setSocketDirectory(directory_.path())) {
        std::cerr << "cannot serve from " << directory_.path() << std::endl;
        std::abort();
    }
    sim::Simulator::install(simulator_.get());
    adapter_ = MiddlewareIpc::getInstance();
    // As tessarine-sim does: section reads end with their client, events count what went out.
    IpcServerManager* hub = IpcServerManager::getInstance();
    hub->setDemuxConnectionListener(&simulator_->demux());
    simulator_->countSentWith([hub] { return hub->eventsSent(); });
}

BridgeHost::~BridgeHost() {
    // The simulator's own order: notices stop, then the adapter goes, then the facades.
    simulator_->quiesce();
    delete adapter_;
    sim::Simulator::install(nullptr);
    simulator_.reset();
}

}  // namespace bench
}  // namespace tessarine
