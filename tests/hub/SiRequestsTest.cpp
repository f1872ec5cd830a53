#include <gtest/gtest.h>

#include <cstring>

#include "support/HubFixture.h"
#include "tessarine/TextField.h"

namespace tessarine {
namespace {

using testing::makeRecord;
using Bytes = std::vector<unsigned char>;

class SiRequestsTest : public testing::HubTest {
protected:
    void SetUp() override {
        HubTest::SetUp();
        client = connect();
    }
    message si(int code) { return client->ask(makeRecord(MSG_SI, code)); }
    std::unique_ptr<testing::ControlTestClient> client;
};

TEST_F(SiRequestsTest, WithNoListenerEveryQueryAnswersItsPreset) {
    const message events = si(1);
    EXPECT_EQ(std::make_pair(events.type, events.code), std::make_pair(7, 0));
    const message event = si(2);
    EXPECT_EQ(event.get<int>(16), -1);
    Bytes zeros(848 - 8, 0);
    EXPECT_EQ(Bytes(event.bytes() + 20, event.bytes() + 860), zeros) << "all counts zero, so no trailing data";
    EXPECT_EQ(si(0).bytes()[12], 0);
    EXPECT_EQ(si(5).bytes()[12], 0);
    EXPECT_EQ(si(7).get<int>(12), -1);
    EXPECT_EQ(si(12).get<int>(16), -1);
    EXPECT_EQ(si(14).get<int>(12), -1);
    EXPECT_TRUE(client->quietFor(std::chrono::milliseconds(50)));
}

TEST_F(SiRequestsTest, ProgramEventListSendsAllRecordsThenEachEventsTrailingData) {
    program_event first, second;
    first.value1 = 1;
    first.bytes0 = {1, 2};
    first.bytes2 = {3};
    first.strings1 = {"ab", ""};
    second.value1 = 2;
    second.strings2 = {"xyz"};
    lower.events = {first, second};
    hub->addIpcServerListener(&lower);

    const auto items = client->askList(makeRecord(MSG_SI, 1));
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(std::make_tuple(items[0].code, items[0].get<int>(16), items[1].get<int>(16)), std::make_tuple(1, 1, 2));
    EXPECT_EQ(items[0].get<std::uint32_t>(12 + 800), 2u);
    EXPECT_EQ(items[0].get<std::uint32_t>(12 + 816), 2u) << "string_count1";
    const Bytes expected = {1, 2, 3, 2, 0, 0, 0, 'a', 'b', 0, 0, 0, 0, 3, 0, 0, 0, 'x', 'y', 'z'};
    EXPECT_EQ(client->receiveBytes(expected.size()), expected);
    EXPECT_TRUE(client->quietFor(std::chrono::milliseconds(50)));
}

TEST_F(SiRequestsTest, DescriptorListsFollowEachRecordWithItsBytesUnderTheirItemCodes) {
    descriptor withBytes, empty;
    withBytes.id = 0x4d;
    withBytes.data = {9, 8, 7};
    lower.descriptors = {empty, withBytes};
    hub->addIpcServerListener(&lower);

    for (int code : {3, 9, 11, 13, 15}) {
        message request = makeRecord(MSG_SI, code);
        request.put(12, 0x7f7f7f7f);  // not an argument of codes 3 and 9
        request.put(20, 4);
        request.put(24, 5);
        ASSERT_TRUE(client->send(request));
        const message header = client->receive().value_or(makeRecord(-1, -1));
        EXPECT_EQ(std::make_pair(header.type, header.code), std::make_pair(7, 2));
        const message item0 = client->receive().value_or(makeRecord(-1, -1));  // length 0: no bytes follow
        const message item1 = client->receive().value_or(makeRecord(-1, -1));
        EXPECT_EQ(item0.code, code == 11 ? 11 : 3);
        EXPECT_EQ(Bytes(item1.bytes() + 12, item1.bytes() + 24), Bytes({0x4d, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0}));
        EXPECT_EQ(client->receiveBytes(3), Bytes({9, 8, 7}));
    }
    const auto calls = lower.calls.snapshot();
    EXPECT_EQ(calls[0], "getProgramEventDescriptors 4 5");
    EXPECT_EQ(calls[1], calls[0]);
    EXPECT_EQ(calls[2], "getServiceComponentDescriptors 2139062143");
}

TEST_F(SiRequestsTest, PlainListsInPlaceTextsAndUnknownCodes) {
    lower.pmts.resize(1);
    lower.pmts.front().value3 = 33;
    lower.text = std::string(300, 'd');
    hub->addIpcServerListener(&lower);
    const auto pmts = client->askList(makeRecord(MSG_SI, 16));
    ASSERT_EQ(pmts.size(), 1u);
    EXPECT_EQ(std::make_pair(pmts[0].code, pmts[0].get<int>(24)), std::make_pair(16, 33));
    EXPECT_EQ(readText(si(8), 12), std::string(254, 'd'));

    ::testing::internal::CaptureStderr();
    ASSERT_TRUE(client->send(makeRecord(MSG_SI, 17)));
    ASSERT_TRUE(client->send(makeRecord(MSG_SI, -1)));
    EXPECT_EQ(si(7).code, 7) << "the unknown codes were not answered";
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "Unknown si message type:  17\nUnknown si message type:  -1\n");
}

}  // namespace
}  // namespace tessarine
