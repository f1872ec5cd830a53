#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "support/HubFixture.h"
#include "hub/AppStateReply.h"
#include "tessarine/TextField.h"

namespace tessarine {
namespace {

using testing::makeRecord;
using namespace std::chrono_literals;

class EventsTest : public testing::HubTest {
protected:
    void SetUp() override {
        HubTest::SetUp();
        reconnect();
    }
    // A round trip: the connection is accepted before anything goes out.
    void reconnect() {
        client = connect();
        ASSERT_EQ(client->ask(makeRecord(MSG_VERSION, 0)).type, MSG_VERSION);
    }
    message next() { return client->receive().value_or(makeRecord(-1, -1)); }
    // Answers the next application-state request with its state plus `offset`.
    void answerNext(int offset) {
        message request = next();
        EXPECT_EQ(request.type, MSG_APP_STATE);
        request.bytes()[12] = static_cast<unsigned char>(request.code + offset);
        client->send(request);
    }
    std::unique_ptr<testing::ControlTestClient> client;
};

TEST_F(EventsTest, EventsAreClearedRecordsWithTheirFields) {
    ASSERT_TRUE(hub->downloadComplete(std::string(300, 'a'), "second"));
    message record = next();
    EXPECT_EQ(std::make_pair(record.type, record.code), std::make_pair(5, 2));
    EXPECT_EQ(readText(record, 12), std::string(254, 'a'));
    EXPECT_EQ(readText(record, 267), "second");

    ASSERT_TRUE(hub->changeGraphicsSettings({1, 2, 3, 4}, {5, 6, 7, 8}));
    record = next();
    EXPECT_EQ(std::make_tuple(record.code, record.get<int>(12), record.get<int>(40)), std::make_tuple(17, 1, 8));
    ASSERT_TRUE(hub->endOfMedia(9));
    record = next();
    message expected = makeRecord(MSG_MEDIA, 16);
    expected.put(12, 9);
    EXPECT_EQ(std::memcmp(record.bytes(), expected.bytes(), MESSAGE_SIZE), 0);
}

TEST_F(EventsTest, ADsmccCommandIsOneClearedRecordOrAHeaderAndChunks) {
    ASSERT_TRUE(hub->sendDsmCCCommand({4, 0x0102030405060708, 0xAB, ""}));
    message single = next();
    EXPECT_EQ(std::make_tuple(single.type, single.code, single.get<long long>(16), single.bytes()[24]),
              std::make_tuple(9, 4, 0x0102030405060708LL, 0xAB));
    EXPECT_EQ(std::vector<unsigned char>(single.bytes() + 25, single.bytes() + MESSAGE_SIZE),
              std::vector<unsigned char>(MESSAGE_SIZE - 25, 0));

    // Longer texts are split by the chunked-text encoder (its own test).
    ASSERT_TRUE(hub->sendDsmCCCommand({4, 0, 0, std::string(1921, 'x')}));
    const message header = next();
    EXPECT_EQ(std::make_pair(header.type, header.code), std::make_pair(7, 2));
    EXPECT_EQ(next().type, MSG_DSMCC);
}

TEST_F(EventsTest, ApplicationStateReturnsTheAnswerOrZeroWhenItCannotComeAnymore) {
    auto answer = std::async(std::launch::async, [&] { return hub->setApplicationState(3); });
    answerNext(4);
    EXPECT_EQ(answer.get(), 7);

    // Two host threads at once: serialised, each gets the answer to its own request.
    auto first = std::async(std::launch::async, [&] { return hub->setApplicationState(10); });
    auto second = std::async(std::launch::async, [&] { return hub->setApplicationState(20); });
    answerNext(1);
    answerNext(1);
    EXPECT_EQ(first.get(), 11);
    EXPECT_EQ(second.get(), 21);

    auto abandoned = std::async(std::launch::async, [&] { return hub->setApplicationState(1); });
    EXPECT_EQ(next().type, MSG_APP_STATE);
    client->close();
    EXPECT_EQ(abandoned.wait_for(3s), std::future_status::ready) << "a vanished client ends the wait";
    EXPECT_EQ(abandoned.get(), 0);
    EXPECT_EQ(hub->setApplicationState(1), 0) << "no client: not sent, no wait";

    reconnect();
    auto orphan = std::async(std::launch::async, [&] { return hub->setApplicationState(2); });
    EXPECT_EQ(next().type, MSG_APP_STATE);
    IpcServerManager::destroy();
    EXPECT_EQ(orphan.wait_for(3s), std::future_status::ready) << "destroying the hub ends the wait";
    EXPECT_EQ(orphan.get(), 0);
}

TEST_F(EventsTest, AttackAClientThatStopsReadingFreesTheControlThreadWithinTheLimitAndIsReportedOnce) {
    lower.services.resize(20000);  // a 39 MB answer, never read
    hub->addIpcServerListener(&lower);
    ::testing::internal::CaptureStderr();
    const auto asked = std::chrono::steady_clock::now();
    ASSERT_TRUE(client->send(makeRecord(MSG_SI, 6)));
    testing::ControlTestClient next(dir.file("ipc.socket"));  // waits in the backlog
    ASSERT_TRUE(next.send(makeRecord(MSG_VERSION, 0)));
    EXPECT_TRUE(next.receive(9000ms)) << "the next application is served";
    EXPECT_LT(std::chrono::steady_clock::now() - asked, 5500ms);
    const std::string report = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(report, "Can't send message: Resource temporarily unavailable\n");
}

TEST(AppStateReplyTest, AnAnswerThatArrivesBeforeTheWaitBeginsEndsIt) {
    EXPECT_EQ(AppStateReply::exchange([] { return AppStateReply::answer(0xC8), true; }), 0xC8);
    EXPECT_EQ(AppStateReply::exchange([] { return AppStateReply::connectionEnded(), true; }), 0);
}

}  // namespace
}  // namespace tessarine
