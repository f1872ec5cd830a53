#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "support/DemuxTestClient.h"
#include "support/EventLog.h"
#include "support/TempDir.h"
#include "tessarine/IpcDemuxServer.h"

namespace tessarine {
namespace {

using namespace std::chrono_literals;
using testing::DemuxTestClient;
using Bytes = std::vector<unsigned char>;

struct Call {
    Call(std::string n, long v = 0, std::vector<Bytes> s = {}) : name(std::move(n)), value(v), strings(std::move(s)) {}
    std::string name;
    long value;
    std::vector<Bytes> strings;
};

class RecordingDemuxListener : public IpcDemuxServerListener {
public:
    void start() override { log.push({"start"}); }
    void stop() override { log.push({"stop"}); }
    void set_pid(int pid) override { log.push({"set_pid", pid}); }
    void set_table_id(int id) override { log.push({"set_table_id", id}); }
    void set_positive_filter(int v, const Bytes& a, const Bytes& b) override { log.push({"positive", v, {a, b}}); }
    void set_greater_than_filter(int v, const Bytes& a, const Bytes& b) override { log.push({"greater", v, {a, b}}); }
    void set_less_than_filter(int v, const Bytes& a, const Bytes& b) override { log.push({"less", v, {a, b}}); }
    void set_xor_filter(int v, const Bytes& a, const Bytes& b, const Bytes& c) override {
        log.push({"xor", v, {a, b, c}});
    }
    void set_time_out(long t) override { log.push({"set_time_out", t}); }
    void clear_table_id() override { log.push({"clear_table_id"}); }
    void clear_positive_filter() override { log.push({"clear_positive_filter"}); }
    void clear_less_than_filter() override { log.push({"clear_less_than_filter"}); }
    void clear_xor_filter() override { log.push({"clear_xor_filter"}); }
    Bytes read_section() override {
        log.push({"read_section"});
        return section;
    }

    Bytes section;
    testing::EventLog<Call> log;
};

class IpcDemuxServerTest : public ::testing::Test {
protected:
    void SetUp() override {
        server.setListener(&listener);
        server.start();
        ASSERT_TRUE(server.isRunning());
    }

    testing::TempDir dir;
    RecordingDemuxListener listener;
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

    ASSERT_TRUE(listener.log.waitFor(11));
    const auto calls = listener.log.snapshot();
    EXPECT_EQ(calls[0].name, "positive");
    EXPECT_EQ(calls[0].value, 0);
    EXPECT_EQ(calls[0].strings, (std::vector<Bytes>{{0x42}, {0xFF}}));
    EXPECT_EQ(calls[1].name, "xor");
    EXPECT_EQ(calls[1].value, -3);
    EXPECT_EQ(calls[1].strings, (std::vector<Bytes>{{1}, {2, 2}, {3, 3, 3}}));
    EXPECT_EQ(calls[2].name, "greater");
    EXPECT_EQ(calls[2].strings, (std::vector<Bytes>{{}, {}})) << "a negative length is the empty string";
    EXPECT_EQ(calls[3].value, 0x12);
    EXPECT_EQ(calls[4].name, "set_table_id");
    EXPECT_EQ(calls[5].value, 2000);
    const std::vector<std::string> plain{"start", "stop", "clear_table_id", "clear_positive_filter",
                                         "clear_less_than_filter", "clear_xor_filter"};
    for (std::size_t i = 0; i < plain.size(); ++i) EXPECT_EQ(calls[6 + i].name, plain[i]);
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

TEST_F(IpcDemuxServerTest, UnknownWordsAndWordsWithoutListenerConsumeOnlyFourBytes) {
    DemuxTestClient client(server.path());
    ASSERT_TRUE(client.sendWord(14) && client.sendWord(0));   // 14 dropped, then start
    ASSERT_TRUE(client.sendWord(-1) && client.sendWord(1));   // -1 dropped, then stop
    ASSERT_TRUE(listener.log.waitFor(2));
    server.setListener(nullptr);
    // With no listener set_pid is dropped, and its argument 9 is a word too.
    ASSERT_TRUE(client.sendWord(2) && client.sendWord(9));
    ASSERT_TRUE(client.sendWord(13));
    EXPECT_TRUE(client.quietFor(100ms)) << "a read with no listener is not answered";
    server.setListener(&listener);
    ASSERT_TRUE(client.sendWord(9));
    ASSERT_TRUE(listener.log.waitFor(3));
    const auto calls = listener.log.snapshot();
    EXPECT_EQ(calls[0].name, "start");
    EXPECT_EQ(calls[1].name, "stop");
    EXPECT_EQ(calls[2].name, "clear_table_id");
}

TEST_F(IpcDemuxServerTest, ACutOrOversizedCommandEndsOnlyThatConnection) {
    {
        DemuxTestClient client(server.path());
        ASSERT_TRUE(client.sendWord(2) && client.sendWord(0x11));  // filter state set by this client
        ASSERT_TRUE(client.sendWord(4) && client.sendWord(0) && client.sendWord(IpcDemuxServer::MAX_FILTER_LENGTH + 1));
        EXPECT_TRUE(client.closedByPeer()) << "an over-long byte string closes the connection";
    }
    {
        DemuxTestClient client(server.path());
        ASSERT_TRUE(client.sendWord(7) && client.sendWord(0) && client.sendString({1}) && client.sendWord(3));
        client.close();  // the xor filter is cut inside its second string
    }
    {
        DemuxTestClient client(server.path());
        ASSERT_TRUE(client.sendWord(3));  // set_table_id whose value never arrives
    }
    ASSERT_TRUE(listener.log.waitFor(2));
    std::this_thread::sleep_for(50ms);
    const auto calls = listener.log.snapshot();
    ASSERT_EQ(calls.size(), 2u) << "the cut filters never reach the listener";
    EXPECT_EQ(calls[0].name, "set_pid");
    EXPECT_EQ(calls[1].name, "set_table_id");
    EXPECT_EQ(calls[1].value, -1) << "a value that never arrives stays at its preset";
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
    RecordingDemuxListener listener;
    server.setListener(&listener);
    DemuxTestClient again(server.path());
    auto section = again.readSection();
    ASSERT_TRUE(section);
    EXPECT_TRUE(section->empty());
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
