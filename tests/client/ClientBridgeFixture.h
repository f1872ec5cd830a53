#pragma once

#include <memory>

#include "support/HubFixture.h"
#include "tessarine/client/ControlClient.h"

namespace tessarine {
namespace testing {

// A real in-process bridge (the hub, with a scripted listener as its request
// server) in a private socket directory, and a client for it.
class ClientBridgeFixture : public HubTest {
protected:
    void SetUp() override {
        HubTest::SetUp();
        hub->addIpcServerListener(&stub);
        client::ClientOptions options;
        options.socketPath = dir.file("ipc.socket");
        options.timeout = std::chrono::milliseconds(5000);
        client = std::make_unique<client::ControlClient>(options);
    }
    void TearDown() override {
        client.reset();
        hub->removeIpcServerListener(&stub);
        HubTest::TearDown();
    }

    ScriptedListener& stub = lower;
    std::unique_ptr<client::ControlClient> client;
};

}  // namespace testing
}  // namespace tessarine
