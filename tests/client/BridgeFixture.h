#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "StubListener.h"
#include "support/TempDir.h"
#include "tessarine/IpcServerManager.h"
#include "tessarine/client/ControlClient.h"

namespace tessarine {
namespace testing {

// A real in-process bridge (the hub, with a stub as its request server) in a
// private socket directory, and a client connected to it.
class BridgeFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(IpcServerManager::setSocketDirectory(dir.path()));
        hub = IpcServerManager::getInstance();
        hub->addIpcServerListener(&stub);
        client::ClientOptions options;
        options.socketPath = dir.file("ipc.socket");
        options.timeout = std::chrono::milliseconds(5000);
        client = std::make_unique<client::ControlClient>(options);
    }
    void TearDown() override {
        client.reset();
        hub->removeIpcServerListener(&stub);
        IpcServerManager::destroy();
    }

    TempDir dir;
    StubListener stub;
    IpcServerManager* hub = nullptr;
    std::unique_ptr<client::ControlClient> client;
};

}  // namespace testing
}  // namespace tessarine
