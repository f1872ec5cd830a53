#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "sim/RequestLog.h"
#include "sim/Scenario.h"
#include "sim/Simulator.h"
#include "tests/support/TempDir.h"

class MiddlewareIpc;

namespace tessarine {
namespace bench {

// The whole bridge in this process, as a receiver's middleware runs it: the
// adapter on the simulator's facades, serving both sockets from a private
// directory. One per process (the adapter is a singleton); built on first
// use, torn down by shutdown().
class BridgeHost {
public:
    static BridgeHost& instance();
    static void shutdown();

    ~BridgeHost();
    BridgeHost(const BridgeHost&) = delete;
    BridgeHost& operator=(const BridgeHost&) = delete;

    const std::string& directory() const { return directory_.path(); }
    std::string controlSocket() const { return directory_.file("ipc.socket"); }
    std::string demuxSocket() const { return directory_.file("ipcdemux.socket"); }
    sim::Simulator& simulator() { return *simulator_; }
    // The adapter, whose listener operations the host's threads call.
    MiddlewareIpc& adapter() { return *adapter_; }

private:
    BridgeHost();

    testing::TempDir directory_;
    std::ostream discard_{nullptr};
    sim::RequestLog log_{discard_, true};
    sim::Scenario scenario_;
    std::unique_ptr<sim::Simulator> simulator_;
    MiddlewareIpc* adapter_ = nullptr;
};

}  // namespace bench
}  // namespace tessarine
