#include <gtest/gtest.h>

#include <map>
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

constexpr int MARK = 0x6d61726b;  // carried back by a list header, unlike a DSM-CC chunk header

// The client's reader: counts events wherever they fall and checks that every
// answer arrives whole, records and trailing data, with nothing inside it.
class StreamReader {
public:
    explicit StreamReader(testing::ControlTestClient& client) : client_(client) {}

    // The next record of an answer; events before it are counted.
    message answerRecord() {
        for (;;) {
            message record = next();
            if (record.type == MSG_MEDIA || record.type == MSG_CAROUSEL || record.type == MSG_DSMCC) {
                ++events[record.type];
            } else if (record.type == MSG_LIST_HEADER && record.get<int>(100) != MARK) {
                for (int i = 0; i < record.code; ++i) EXPECT_EQ(next().type, MSG_DSMCC) << "chunks stay together";
                ++events[MSG_DSMCC];
            } else {
                return record;
            }
        }
    }
    message next() { return client_.receive().value_or(makeRecord(-1, -1)); }
    Bytes bytes(std::size_t count) { return count ? client_.receiveBytes(count).value_or(Bytes()) : Bytes(); }

    std::map<int, int> events;

private:
    testing::ControlTestClient& client_;
};

TEST(HubConcurrencyTest, EventsFromSeveralThreadsNeverBreakLongAnswers) {
    testing::TempDir dir;
    ASSERT_TRUE(IpcServerManager::setSocketDirectory(dir.path()));
    IpcServerManager* hub = IpcServerManager::getInstance();
    testing::ScriptedListener listener;
    for (unsigned char i = 0; i < 12; ++i) {
        program_event event;
        event.value0 = i;
        event.bytes1 = Bytes(100 + i, i);
        event.strings0 = {std::string(i, 's'), ""};
        listener.events.push_back(event);
        descriptor item;
        item.data = Bytes(i * 7, i);
        listener.descriptors.push_back(item);
    }
    hub->addIpcServerListener(&listener);
    testing::ControlTestClient client(dir.file("ipc.socket"));
    StreamReader reader(client);
    ASSERT_TRUE(client.send(makeRecord(MSG_SI, 7)));  // accepted before the first event goes out
    ASSERT_EQ(reader.answerRecord().type, MSG_SI);

    constexpr int EACH = 150;
    std::vector<std::thread> senders;
    senders.emplace_back([&] { for (int i = 0; i < EACH; ++i) hub->endOfMedia(i); });
    senders.emplace_back([&] { for (int i = 0; i < EACH; ++i) hub->downloadComplete("a", "b"); });
    senders.emplace_back([&] { for (int i = 0; i < EACH; ++i) hub->sendDsmCCCommand({1, 0, 0, std::string(3000, 'c')}); });

    for (int round = 0; round < 60 && !::testing::Test::HasFailure(); ++round) {
        message request = makeRecord(MSG_SI, round % 2 ? 15 : 1);
        request.put(100, MARK);
        ASSERT_TRUE(client.send(request));
        const message header = reader.answerRecord();
        ASSERT_EQ(std::make_pair(header.type, header.code), std::make_pair(7, 12));
        std::vector<message> items;
        for (int i = 0; i < 12; ++i) {
            items.push_back(reader.next());
            ASSERT_EQ(items.back().type, MSG_SI) << "nothing falls inside an answer";
            if (request.code == 15) {
                EXPECT_EQ(reader.bytes(i * 7), Bytes(i * 7, i));
            }
        }
        for (int i = 0; request.code == 1 && i < 12; ++i) {
            ASSERT_EQ(items[i].get<int>(12), i);
            EXPECT_EQ(reader.bytes(100 + i), Bytes(100 + i, i));
            Bytes strings = {static_cast<unsigned char>(i), 0, 0, 0};  // "s" times i, then ""
            strings.insert(strings.end(), i, 's');
            strings.insert(strings.end(), 4, 0);
            EXPECT_EQ(reader.bytes(strings.size()), strings);
        }
    }
    for (auto& sender : senders) sender.join();
    ASSERT_TRUE(client.send(makeRecord(MSG_SI, 7)));
    EXPECT_EQ(reader.answerRecord().type, MSG_SI);
    EXPECT_EQ(reader.events, (std::map<int, int>{{MSG_CAROUSEL, EACH}, {MSG_MEDIA, EACH}, {MSG_DSMCC, EACH}}));
    IpcServerManager::destroy();
}

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
}

}  // namespace
}  // namespace tessarine
