#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/ControlTestClient.h"
#include "support/EventLog.h"
#include "support/TempDir.h"
#include "tessarine/IpcServer.h"
#include "transport/AnswerStream.h"
#include "transport/UnixSocket.h"

namespace tessarine {
namespace {

using namespace std::chrono_literals;
using testing::ControlTestClient;
using testing::makeRecord;

struct Event {
    enum Kind { CONNECTED, RECORD, DISCONNECTED } kind;
    message record;
};

class RecordingListener : public IpcListener {
public:
    void update(message& record) override {
        if (record.type == MSG_AUDIO && record.code == -1) throw std::runtime_error("facade gone");
        log.push({Event::RECORD, record});
    }
    void update(std::list<message>) override {}
    void clientConnected() override { log.push({Event::CONNECTED, {}}); }
    void clientDisconnected() override { log.push({Event::DISCONNECTED, {}}); }

    testing::EventLog<Event> log;
};

class IpcServerTest : public ::testing::Test {
protected:
    std::string socketPath() const { return dir.file("ipc.socket"); }
    std::unique_ptr<IpcServer> makeServer() {
        return std::make_unique<IpcServer>(&listener, socketPath().c_str(), static_cast<int>(socketPath().size()));
    }

    testing::TempDir dir;
    RecordingListener listener;
};

TEST_F(IpcServerTest, RecordsArriveWholeAndInOrderThenTheConnectionEnds) {
    auto server = makeServer();
    server->start();
    {
        ControlTestClient client(socketPath());
        ASSERT_TRUE(client.connected());
        message a = makeRecord(MSG_SI, 4);
        std::memset(a.payload, 0x11, sizeof a.payload);
        message b = makeRecord(MSG_MEDIA, 9);
        b.put<std::int32_t>(100, 1234);
        ASSERT_TRUE(client.send(a));
        // The second record is written in two pieces; the server still sees one record.
        ASSERT_TRUE(client.sendBytes(b.bytes(), 700));
        std::this_thread::sleep_for(20ms);
        ASSERT_TRUE(client.sendBytes(b.bytes() + 700, MESSAGE_SIZE - 700));
        ASSERT_TRUE(listener.log.waitFor(3));
    }
    ASSERT_TRUE(listener.log.waitFor(5));
    const auto events = listener.log.snapshot();
    ASSERT_EQ(events.size(), 5u);
    EXPECT_EQ(events[0].kind, Event::CONNECTED);
    EXPECT_EQ(events[1].record.type, MSG_SI);
    EXPECT_EQ(events[1].record.payload[500], 0x11);
    EXPECT_EQ(events[2].record.code, 9);
    EXPECT_EQ(events[2].record.get<std::int32_t>(100), 1234);
    // The end-of-connection record: VIDEO_RESET over the last record's bytes.
    EXPECT_EQ(events[3].record.type, MSG_VIDEO);
    EXPECT_EQ(events[3].record.code, 2);
    EXPECT_EQ(events[3].record.get<std::int32_t>(100), 1234);
    EXPECT_EQ(events[4].kind, Event::DISCONNECTED);
}

TEST_F(IpcServerTest, ACutRecordIsDeliveredOnceOverThePreviousTail) {
    auto server = makeServer();
    server->start();
    {
        ControlTestClient client(socketPath());
        message full = makeRecord(MSG_AUDIO, 1);
        std::memset(full.payload, 0x22, sizeof full.payload);
        message cut = makeRecord(MSG_PROPERTY, 3);
        ASSERT_TRUE(client.send(full));
        ASSERT_TRUE(client.sendBytes(cut.bytes(), 100));
    }
    ASSERT_TRUE(listener.log.waitFor(5));
    const auto events = listener.log.snapshot();
    ASSERT_EQ(events.size(), 5u);
    EXPECT_EQ(events[2].record.type, MSG_PROPERTY);
    EXPECT_EQ(events[2].record.bytes()[99], 0);
    EXPECT_EQ(events[2].record.bytes()[100], 0x22) << "the tail is the previous record's";
    EXPECT_EQ(events[3].record.code, 2);
    EXPECT_EQ(events[4].kind, Event::DISCONNECTED);
}

TEST_F(IpcServerTest, SilentClientGetsAnAllZeroEndRecordAndTheNextClientIsServed) {
    auto server = makeServer();
    server->start();
    ControlTestClient first(socketPath());
    ASSERT_TRUE(listener.log.waitFor(1));
    ControlTestClient second(socketPath());  // waits in the backlog
    ASSERT_TRUE(second.connected());
    ASSERT_FALSE(listener.log.waitFor(2, 100ms)) << "the second client is not accepted while the first is served";
    first.close();
    ASSERT_TRUE(listener.log.waitFor(4));
    ASSERT_TRUE(second.send(makeRecord(MSG_VERSION, 1)));
    ASSERT_TRUE(listener.log.waitFor(5));

    const auto events = listener.log.snapshot();
    EXPECT_EQ(events[1].record.type, MSG_VIDEO);
    EXPECT_EQ(events[1].record.code, 2);
    for (std::size_t i = 12; i < MESSAGE_SIZE; ++i) ASSERT_EQ(events[1].record.bytes()[i], 0) << i;
    EXPECT_EQ(events[2].kind, Event::DISCONNECTED);
    EXPECT_EQ(events[3].kind, Event::CONNECTED);
    EXPECT_EQ(events[4].record.type, MSG_VERSION);
}

TEST_F(IpcServerTest, AListenerExceptionIsReportedAndServingGoesOn) {
    auto server = makeServer();
    server->start();
    ControlTestClient client(socketPath());
    ASSERT_TRUE(listener.log.waitFor(1));
    ::testing::internal::CaptureStderr();
    ASSERT_TRUE(client.send(makeRecord(MSG_AUDIO, -1)));  // the listener throws on this one
    ASSERT_TRUE(client.send(makeRecord(MSG_SI, 7)));
    ASSERT_TRUE(listener.log.waitFor(2));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Request failed: facade gone\n");
    EXPECT_EQ(listener.log.snapshot()[1].record.type, MSG_SI);
}

TEST_F(IpcServerTest, StopEndsAConnectionSilentlyAndTheServerRestarts) {
    auto server = makeServer();
    server->stop();  // before start: nothing
    server->start();
    {
        ControlTestClient client(socketPath());
        ASSERT_TRUE(listener.log.waitFor(1));
        server->stop();
        server->stop();
        EXPECT_FALSE(server->isRunning());
        EXPECT_TRUE(client.closedByPeer());
    }
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(listener.log.size(), 1u) << "no end-of-connection record and no disconnect after stop()";

    server->start();
    ControlTestClient again(socketPath());
    ASSERT_TRUE(again.connected());
    ASSERT_TRUE(listener.log.waitFor(2));
    message ping = makeRecord(MSG_VERSION, 3);
    ASSERT_TRUE(server->sendMessage(ping));
    auto echoed = again.receive();
    ASSERT_TRUE(echoed);
    EXPECT_EQ(echoed->code, 3);
}

TEST_F(IpcServerTest, FailuresAreReportedInThePerrorConvention) {
    IpcServer tooLong(nullptr, std::string(108, 'a').c_str(), 108);
    ::testing::internal::CaptureStderr();
    tooLong.start();
    EXPECT_NE(::testing::internal::GetCapturedStderr().find("Invalid file name or file name is too big: "),
              std::string::npos);
    EXPECT_FALSE(tooLong.isRunning());

    IpcServer negative(nullptr, "x", -1);
    ::testing::internal::CaptureStderr();
    negative.start();
    EXPECT_NE(::testing::internal::GetCapturedStderr().find("Invalid file name"), std::string::npos);

    const std::string path107 = dir.path() + "/" + std::string(107 - dir.path().size() - 1, 'p');
    ASSERT_EQ(path107.size(), 107u);
    IpcServer longest(nullptr, path107.c_str(), 107);
    longest.start();
    EXPECT_TRUE(longest.isRunning());
    longest.stop();

    IpcServer unbindable(nullptr, "/nonexistent-dir/ipc.socket", 27);
    ::testing::internal::CaptureStderr();
    unbindable.start();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Can't bind filename: No such file or directory\n");

    auto server = makeServer();
    server->start();
    message record = makeRecord(MSG_VIDEO, 17);
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(server->sendMessage(record));
    EXPECT_FALSE(server->sendMessage("abc", 3));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "Can't send message: Bad file descriptor\nCan't send raw message: Bad file descriptor\n");
}

TEST_F(IpcServerTest, AHeldBatchIsNeverSplitByOtherSenders) {
    auto server = makeServer();
    server->start();
    ControlTestClient client(socketPath());
    ASSERT_TRUE(listener.log.waitFor(1));

    // A batch of 150 records leaves in several pieces under one hold of the lock.
    constexpr int BATCHES = 40, BATCH_RECORDS = 150, SENDERS = 3, EVENTS_PER_SENDER = 300;
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int s = 0; s < SENDERS; ++s) {
        threads.emplace_back([&, s] {
            while (!go) std::this_thread::yield();
            for (int i = 0; i < EVENTS_PER_SENDER; ++i) {
                message event = makeRecord(MSG_MEDIA, 16);
                event.put<std::int32_t>(12, s);
                server->sendMessage(event);
            }
        });
    }
    threads.emplace_back([&] {
        while (!go) std::this_thread::yield();
        for (int b = 0; b < BATCHES; ++b) {
            AnswerStream batch(*server);
            message item = makeRecord(MSG_SI, 6);
            for (int i = 0; i < BATCH_RECORDS; ++i) {
                item.put<std::int32_t>(12, i);
                batch.add(item);
                batch.addRaw("trail", 5);  // raw bytes the reader must find right after each record
            }
        }
    });
    go = true;

    int events = 0, batches = 0;
    while (events < SENDERS * EVENTS_PER_SENDER || batches < BATCHES) {
        auto record = client.receive();
        ASSERT_TRUE(record) << "stream ended after " << events << " events, " << batches << " batches";
        if (record->type == MSG_MEDIA) {
            ++events;
            continue;
        }
        ASSERT_EQ(record->type, MSG_SI);
        ASSERT_EQ(record->get<std::int32_t>(12), 0) << "a batch must start at its first record";
        for (int i = 0; i < BATCH_RECORDS; ++i) {
            if (i > 0) {
                record = client.receive();
                ASSERT_TRUE(record);
                ASSERT_EQ(record->type, MSG_SI) << "a foreign record inside a batch";
                ASSERT_EQ(record->get<std::int32_t>(12), i);
            }
            auto trail = client.receiveBytes(5);
            ASSERT_TRUE(trail);
            ASSERT_EQ(std::string(trail->begin(), trail->end()), "trail");
        }
        ++batches;
    }
    for (auto& t : threads) t.join();
}

// The client decodes the first piece of a long answer while the rest is built.
TEST_F(IpcServerTest, AnAnswerStartsToLeaveBeforeItIsFinished) {
    auto server = makeServer();
    server->start();
    ControlTestClient client(socketPath());
    ASSERT_TRUE(listener.log.waitFor(1));

    constexpr int FIRST = AnswerStream::FIRST_PIECE / MESSAGE_SIZE + 1, TOTAL = 3 * FIRST;
    std::atomic<bool> firstArrived{false};
    bool gaveUp = false;
    std::thread builder([&] {
        AnswerStream answer(*server);
        message item = makeRecord(MSG_SI, 6);
        for (int i = 0; i < TOTAL; ++i) {
            if (i == FIRST) {  // nothing more is built until the client has the first record
                const auto giveUp = std::chrono::steady_clock::now() + 1s;
                while (!firstArrived && !gaveUp) {
                    std::this_thread::sleep_for(1ms);
                    gaveUp = std::chrono::steady_clock::now() > giveUp;
                }
            }
            item.put<std::int32_t>(12, i);
            answer.add(item);
        }
    });
    int received = 0;
    for (auto record = client.receive(); record && record->get<std::int32_t>(12) == received; record = client.receive()) {
        firstArrived = true;
        if (++received == TOTAL) break;
    }
    builder.join();
    EXPECT_EQ(received, TOTAL);
    EXPECT_FALSE(gaveUp) << "the first piece waited for the rest of the answer";
}

// A long answer is queued whole in the kernel while the client is busy, so the
// server thread is free again without waiting on the client (it used to
// sleep tens of times in a 10 000-service answer).
TEST_F(IpcServerTest, AThousandRecordAnswerLeavesBeforeTheClientReads) {
    int systemLimit = 0;
    std::ifstream("/proc/sys/net/core/wmem_max") >> systemLimit;
    if (systemLimit < unix_socket::CONTROL_SEND_BUFFER) GTEST_SKIP() << "net.core.wmem_max is " << systemLimit;
    auto server = makeServer();
    server->start();
    ControlTestClient client(socketPath());
    ASSERT_TRUE(listener.log.waitFor(1));

    constexpr int TOTAL = 1000;
    std::atomic<bool> sent{false};
    std::thread builder([&] {
        AnswerStream answer(*server);
        const message item = makeRecord(MSG_SI, 6);
        for (int i = 0; i < TOTAL; ++i) answer.add(item);
        sent = answer.finish();
    });
    const auto giveUp = std::chrono::steady_clock::now() + 2s;
    while (!sent && std::chrono::steady_clock::now() < giveUp) std::this_thread::sleep_for(1ms);
    EXPECT_TRUE(sent) << "the server waited for the client to read";
    int received = 0;
    while (received < TOTAL && client.receive()) ++received;
    builder.join();
    EXPECT_EQ(received, TOTAL);
}

}  // namespace
}  // namespace tessarine
