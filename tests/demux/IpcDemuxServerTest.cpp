#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/DemuxTestClient.h"
#include "support/RecordingFilter.h"
#include "support/TempDir.h"
#include "tessarine/IpcDemuxServer.h"
#include "tessarine/IpcServerManager.h"

namespace tessarine {
namespace {

using namespace std::chrono_literals;
using testing::DemuxTestClient;
using testing::Bytes;
using Calls = std::vector<std::string>;

class IpcDemuxServerTest : public ::testing::Test {
protected:
    void SetUp() override {
        server.setListener(&listener);
        server.start();
        ASSERT_TRUE(server.isRunning());
    }

    testing::TempDir dir;
    testing::RecordingFilter listener;
    IpcDemuxServer server{dir.file("ipcdemux.socket")};
};

TEST_F(IpcDemuxServerTest, FilterCommandsReachTheListenerWithTheirArguments) {
    DemuxTestClient client(server.path());
    // The 18-byte positive filter of the wire description: value 0, strings 42 and FF.
    const unsigned char example[] = {4, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0x42, 1, 0, 0, 0, 0xFF};
    ASSERT_TRUE(client.sendBytes(example, sizeof example));
    ASSERT_TRUE(client.sendWord(7) && client.sendWord(-3) && client.sendString({1}) && client.sendString({2, 2}) &&
                client.sendString({3, 3, 3}));
    ASSERT_TRUE(client.sendWord(5) && client.sendWord(9) && client.sendWord(-5) && client.sendString({}));
    ASSERT_TRUE(client.sendWord(2) && client.sendWord(0x12) && client.sendWord(3) && client.sendWord(0x4e));
    ASSERT_TRUE(client.sendWord(8) && client.sendWord(2000));
    for (int word : {0, 1, 9, 10, 11, 12}) ASSERT_TRUE(client.sendWord(word));
    EXPECT_TRUE(client.quietFor(100ms)) << "commands 0 to 12 are never answered";

    ASSERT_TRUE(listener.calls.waitFor(12));
    EXPECT_EQ(listener.calls.snapshot(),
              (Calls{"positive 0 [42] [ff]", "xor -3 [01] [0202] [030303]",
                     "greater 9 [] []",  // a negative length is the empty string
                     "pid 18", "table 78", "timeout 2000", "start", "stop", "clear table", "clear positive",
                     "clear less", "clear xor"}));
}

TEST_F(IpcDemuxServerTest, SectionsAreAnsweredWithLengthThenBytes) {
    DemuxTestClient client(server.path());
    ASSERT_TRUE(client.sendWord(13));
    auto empty = client.receiveBytes(4);
    ASSERT_TRUE(empty);
    EXPECT_EQ(*empty, (Bytes{0, 0, 0, 0}));
    EXPECT_TRUE(client.quietFor(50ms));

    listener.section = {0xAA, 0xBB, 0xCC};
    ASSERT_TRUE(client.sendWord(13));
    auto three = client.receiveBytes(7);
    ASSERT_TRUE(three);
    EXPECT_EQ(*three, (Bytes{3, 0, 0, 0, 0xAA, 0xBB, 0xCC}));

    listener.section.assign(4096, 0x5A);
    listener.section.back() = 0x01;
    auto full = client.readSection();
    ASSERT_TRUE(full);
    EXPECT_EQ(*full, listener.section);
}

TEST_F(IpcDemuxServerTest, AFailingReadIsAnsweredEmptyAndTheChannelGoesOn) {
    DemuxTestClient client(server.path());
    listener.failReads = true;
    ::testing::internal::CaptureStderr();
    auto failed = client.readSection();
    const std::string report = ::testing::internal::GetCapturedStderr();
    ASSERT_TRUE(failed) << "the client must not be left waiting";
    EXPECT_TRUE(failed->empty());
    EXPECT_EQ(report, "Demux command failed: no tuner\n");
    listener.failReads = false;
    listener.section = {1, 2};
    auto next = client.readSection();
    ASSERT_TRUE(next);
    EXPECT_EQ(*next, (Bytes{1, 2}));
}

TEST_F(IpcDemuxServerTest, UnknownWordsAndWordsWithoutListenerConsumeOnlyFourBytes) {
    DemuxTestClient client(server.path());
    ASSERT_TRUE(client.sendWord(14) && client.sendWord(0));   // 14 dropped, then start
    ASSERT_TRUE(client.sendWord(-1) && client.sendWord(1));   // -1 dropped, then stop
    ASSERT_TRUE(listener.calls.waitFor(2));
    server.setListener(nullptr);
    // With no listener set_pid is dropped, and its argument 9 is a word too.
    ASSERT_TRUE(client.sendWord(2) && client.sendWord(9));
    ASSERT_TRUE(client.sendWord(13));
    EXPECT_TRUE(client.quietFor(100ms)) << "a read with no listener is not answered";
    server.setListener(&listener);
    ASSERT_TRUE(client.sendWord(9));
    ASSERT_TRUE(listener.calls.waitFor(3));
    EXPECT_EQ(listener.calls.snapshot(), (Calls{"start", "stop", "clear table"}));
}

TEST_F(IpcDemuxServerTest, ACutOrOversizedCommandEndsOnlyThatConnection) {
    {
        DemuxTestClient client(server.path());
        ASSERT_TRUE(client.sendWord(2) && client.sendWord(0x11));  // filter state set by this client
        ASSERT_TRUE(client.sendWord(4) && client.sendWord(0) && client.sendWord(MAX_FILTER_LENGTH + 1));
        EXPECT_TRUE(client.closedByPeer()) << "an over-long byte string closes the connection";
    }
    {
        DemuxTestClient client(server.path());
        ASSERT_TRUE(client.sendWord(7) && client.sendWord(0) && client.sendString({1}) && client.sendWord(3));
        client.close();  // the xor filter is cut inside its second string
    }
    {
        DemuxTestClient client(server.path());
        ASSERT_TRUE(client.sendWord(2) && client.sendBytes("\x11\x22", 2));  // a value cut inside
    }
    {
        DemuxTestClient client(server.path());
        ASSERT_TRUE(client.sendWord(3));  // set_table_id whose value never arrives
    }
    ASSERT_TRUE(listener.calls.waitFor(2));
    std::this_thread::sleep_for(50ms);
    // Cut commands never reach the listener; a value none of which arrives stays at its preset.
    EXPECT_EQ(listener.calls.snapshot(), (Calls{"pid 17", "table -1"}));
}

TEST_F(IpcDemuxServerTest, AttackAClientThatNeverReadsItsSectionsIsDroppedWithinTheLimitAndReportedOnce) {
    listener.section.assign(4096, 0x47);
    const std::vector<std::int32_t> reads(1000, 13);  // 4 MB of answers, never read
    ::testing::internal::CaptureStderr();
    const auto asked = std::chrono::steady_clock::now();
    DemuxTestClient greedy(server.path());
    ASSERT_TRUE(greedy.sendBytes(reads.data(), reads.size() * sizeof reads[0]));
    DemuxTestClient next(server.path());  // waits in the backlog
    auto section = next.readSection(9000ms);
    EXPECT_LT(std::chrono::steady_clock::now() - asked, 5500ms);
    const std::string report = ::testing::internal::GetCapturedStderr();
    ASSERT_TRUE(section) << "the next application is served";
    EXPECT_EQ(section->size(), 4096u);
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 1) << report;  // "Can't send size" or "data[i]"
    EXPECT_EQ(report.rfind("Can't send ", 0), 0u) << report;
}

TEST(IpcDemuxServerLifecycle, StopEndsABlockedThreadAndTheServerRestarts) {
    testing::TempDir dir;
    IpcDemuxServer server(dir.file("demux.socket"));
    server.stop();  // never started: nothing
    server.start();
    DemuxTestClient client(server.path());
    ASSERT_TRUE(client.connected());
    ASSERT_TRUE(client.sendWord(4) && client.sendWord(0));  // the thread waits inside a command
    std::this_thread::sleep_for(20ms);
    server.stop();
    server.stop();
    EXPECT_FALSE(server.isRunning());
    EXPECT_TRUE(client.closedByPeer());

    server.start();
    testing::RecordingFilter listener;
    server.setListener(&listener);
    DemuxTestClient again(server.path());
    auto section = again.readSection();
    ASSERT_TRUE(section);
    EXPECT_TRUE(section->empty());
}

TEST(IpcDemuxServerLifecycle, ProductionPathsAreTheDefaults) {
    // Checked without binding: a user may be running the bridge on them.
    EXPECT_EQ(IpcDemuxServer().path(), "/dev/shm/ipcdemux.socket");
    EXPECT_EQ(IpcServerManager::socketDirectory(), "/dev/shm") << "nothing in this program changes it";
}

TEST(IpcDemuxServerLifecycle, FailuresAreReported) {
    IpcDemuxServer server("/nonexistent-dir/demux.socket");
    ::testing::internal::CaptureStderr();
    server.start();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Can't bind filename: No such file or directory\n");
    EXPECT_FALSE(server.isRunning());
}

}  // namespace
}  // namespace tessarine
