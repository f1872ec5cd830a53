#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "support/ControlTestClient.h"
#include "support/ScriptedListener.h"
#include "support/TempDir.h"
#include "tessarine/IpcServerManager.h"

namespace tessarine {
namespace testing {

// A hub on sockets in a private directory, destroyed after each test, with
// two scripted listeners a test may register.
class HubTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(IpcServerManager::setSocketDirectory(dir.path()));
        hub = IpcServerManager::getInstance();
    }
    void TearDown() override { IpcServerManager::destroy(); }

    std::unique_ptr<ControlTestClient> connect() {
        return std::make_unique<ControlTestClient>(dir.file("ipc.socket"));
    }

    TempDir dir;
    IpcServerManager* hub = nullptr;
    ScriptedListener pair[2];  // pair[0] has the lower address, so it is asked first
    ScriptedListener& lower = pair[0];
    ScriptedListener& upper = pair[1];
};

}  // namespace testing
}  // namespace tessarine
