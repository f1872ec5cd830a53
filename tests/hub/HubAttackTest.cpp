#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "support/DemuxTestClient.h"
#include "support/HubFixture.h"
#include "support/RecordingFilter.h"

namespace tessarine {
namespace {

using namespace std::chrono_literals;
using testing::makeRecord;
using Bytes = std::vector<unsigned char>;

class CountingConnections : public ConnectionListener {
public:
    void clientConnected() override { ++connected; }
    void clientDisconnected() override { ++disconnected; }
    std::atomic<int> connected{0}, disconnected{0};
};

// Sends `bytes` from another thread and then ends the stream, while this
// thread reads and drops every answer until the bridge closes the connection.
bool sendAllAndDrain(testing::TestSocket& client, const Bytes& bytes) {
    std::thread writer([&] {
        client.sendBytes(bytes.data(), bytes.size());  // fails once a bad command ends the connection
        client.finishSending();
    });
    const bool closed = client.closedByPeer(60000ms);
    writer.join();
    return closed;
}

using HubAttackTest = testing::HubTest;

TEST_F(HubAttackTest, AttackRandomInputAndConnectionCyclesLeaveTheBridgeServingAndLeakNothing) {
    lower.logging = false;
    lower.services.resize(3);
    lower.descriptors.resize(2);
    hub->addIpcServerListener(&lower);
    testing::RecordingFilter filter;
    filter.section = Bytes(188, 0x47);
    hub->addIpcDemuxServerListener(&filter);
    CountingConnections demuxClients;
    hub->setDemuxConnectionListener(&demuxClients);

    std::mt19937 random(2024);
    auto below = [&](int bound) { return static_cast<std::int32_t>(random() % bound) - 1; };  // -1 to bound - 2
    Bytes records(2000 * MESSAGE_SIZE), words(20000 * 4);
    for (std::size_t at = 0; at < records.size(); at += MESSAGE_SIZE) {
        for (std::size_t i = 0; i < MESSAGE_SIZE; ++i) records[at + i] = static_cast<unsigned char>(random());
        const std::int32_t type = below(13), code = below(20);  // mostly known ones, to reach the handlers
        std::memcpy(&records[at], &type, 4);
        std::memcpy(&records[at + 8], &code, 4);
    }
    for (std::size_t at = 0; at < words.size(); at += 4) {  // mostly commands and string lengths, some too long
        const std::int32_t word = random() % 4 ? below(16) : static_cast<std::int32_t>(random());
        std::memcpy(&words[at], &word, 4);
    }
    ::testing::internal::CaptureStderr();  // unknown types are reported, one line each
    EXPECT_TRUE(sendAllAndDrain(*connect(), records));
    for (std::size_t at = 0; at < words.size(); at += 4000) {
        testing::DemuxTestClient demux(dir.file("ipcdemux.socket"));
        EXPECT_TRUE(sendAllAndDrain(demux, Bytes(words.begin() + at, words.begin() + at + 4000)));
    }
    ::testing::internal::GetCapturedStderr();

    // A client served on each channel; the counts are taken while both are
    // connected, when the servers have closed every earlier connection.
    auto cycle = [&] {
        auto control = connect();
        EXPECT_EQ(control->ask(makeRecord(MSG_VERSION, 0)).type, MSG_VERSION);
        testing::DemuxTestClient demux(dir.file("ipcdemux.socket"));
        EXPECT_EQ(demux.readSection(), filter.section);
        return std::make_tuple(testing::entriesIn("/proc/self/fd"), testing::entriesIn("/proc/self/task"),
                               testing::residentBytes());
    };
    const auto [fds, threads, resident] = cycle();
    for (int i = 0; i < 500 && !HasFailure(); ++i) cycle();
    const auto [fdsAfter, threadsAfter, residentAfter] = cycle();
    EXPECT_EQ(fdsAfter, fds);
    EXPECT_EQ(threadsAfter, threads);
#ifndef TESSARINE_SANITIZED  // a sanitizer holds freed memory back; LeakSanitizer looks for leaks there
    EXPECT_LT(residentAfter, resident + (2 << 20)) << "500 cycles grew the resident set";
#endif
    EXPECT_GT(filter.calls.size(), 0u);
    EXPECT_GE(demuxClients.disconnected.load(), 506) << "told of every client's end (the last one's may be on its way)";
    EXPECT_LE(demuxClients.connected.load() - demuxClients.disconnected.load(), 1);
    // The listeners go with this scope; the section server may still be ending the last connection.
    hub->setDemuxConnectionListener(nullptr);
    hub->addIpcDemuxServerListener(nullptr);
}

#if defined(__GLIBC__) && !defined(TESSARINE_SANITIZED)  // a sanitizer has an allocator of its own
TEST_F(HubAttackTest, AttackAnAnswerOfManyMebibytesLeavesFewFreedBytesInTheProcess) {
    lower.descriptors.resize(10000);
    for (descriptor& item : lower.descriptors) item.data.assign(6000, 0x5a);  // 60 MB copied for the answer
    hub->addIpcServerListener(&lower);
    auto client = connect();
    const std::size_t before = testing::residentBytes();
    ASSERT_TRUE(client->send(makeRecord(MSG_SI, SI_NETWORK_DESCRIPTORS)));
    ASSERT_TRUE(client->receiveBytes(10001 * MESSAGE_SIZE + 10000 * 6000, 10000ms));
    ASSERT_TRUE(client->send(makeRecord(MSG_VERSION, 0)));  // answered after the list was released
    ASSERT_TRUE(client->receive());
    EXPECT_LT(testing::residentBytes(), before + (32u << 20));
}
#endif

}  // namespace
}  // namespace tessarine
