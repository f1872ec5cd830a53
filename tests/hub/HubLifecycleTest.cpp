#include <gtest/gtest.h>

#include <thread>

#include "support/HubFixture.h"
#include "support/DemuxTestClient.h"

namespace tessarine {
namespace {

using testing::makeRecord;
using namespace std::chrono_literals;

class Connections : public ConnectionListener {
public:
    void clientConnected() override { log.push("connected"); }
    void clientDisconnected() override { log.push("disconnected"); }
    testing::EventLog<std::string> log;
};

using HubLifecycleTest = testing::HubTest;

TEST_F(HubLifecycleTest, DispatcherLogsUnknownTypesAndAnswersVersionChecks) {
    Connections connections;
    hub->addConnectionListener(&connections);
    auto client = connect();
    ASSERT_TRUE(connections.log.waitFor(1));

    ::testing::internal::CaptureStderr();
    for (int type : {7, 9, 11, -1}) ASSERT_TRUE(client->send(makeRecord(type, 0)));
    EXPECT_EQ(client->ask(makeRecord(MSG_VERSION, 5)).bytes()[12], 0) << "no listener: false";
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "Unknown message: 7\nUnknown message: 9\nUnknown message: 11\nUnknown message: -1\n");

    lower.number = 0x1FF;
    hub->addIpcServerListener(&lower);
    const message answer = client->ask(makeRecord(MSG_VERSION, 5));
    EXPECT_EQ(std::make_tuple(answer.type, answer.code, answer.bytes()[12]), std::make_tuple(10, 5, 0xFF));

    client->close();
    ASSERT_TRUE(connections.log.waitFor(2));
    EXPECT_EQ(connections.log.snapshot().back(), "disconnected");
    EXPECT_EQ(lower.calls.snapshot().back(), "setVideoProperty 2") << "the end of a connection resets video";
    hub->removeConnectionListener(&connections);  // waits for a fan-out still running
}

TEST_F(HubLifecycleTest, OneHubForConcurrentCallersAndTheDirectoryIsFixedWhileItLives) {
    IpcServerManager::destroy();
    IpcServerManager* seen[2] = {};
    std::thread a([&] { seen[0] = IpcServerManager::getInstance(); });
    std::thread b([&] { seen[1] = IpcServerManager::getInstance(); });
    a.join();
    b.join();
    EXPECT_NE(seen[0], nullptr);
    EXPECT_EQ(seen[0], seen[1]);
    EXPECT_FALSE(IpcServerManager::setSocketDirectory("/tmp"));
    EXPECT_EQ(IpcServerManager::socketDirectory(), dir.path());
    IpcServerManager::destroy();
    EXPECT_FALSE(IpcServerManager::setSocketDirectory("/" + std::string(100, 'd')));
}

}  // namespace
}  // namespace tessarine
