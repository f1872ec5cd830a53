#include <gtest/gtest.h>

#include <cstring>

#include "support/HubFixture.h"
#include "tessarine/TextField.h"

namespace tessarine {
namespace {

using testing::makeRecord;
using namespace std::chrono_literals;

class RequestsTest : public testing::HubTest {
protected:
    void SetUp() override {
        HubTest::SetUp();
        hub->addIpcServerListener(&lower);
        client = connect();
    }
    std::unique_ptr<testing::ControlTestClient> client;
};

TEST_F(RequestsTest, VideoListsKeepTheCountAsItemCodeAndQueriesAnswerInPlace) {
    lower.languages = {"por", "eng", std::string(300, 'x')};
    const auto items = client->askList(makeRecord(MSG_VIDEO, VIDEO_GET_LANGUAGES));
    ASSERT_EQ(items.size(), 3u);
    for (const message& item : items) EXPECT_EQ(std::make_pair(item.type, item.code), std::make_pair(0, 3));
    EXPECT_EQ(readText(items[1], 12), "eng");
    EXPECT_EQ(readText(items[2], 12), std::string(254, 'x'));

    message bounds = makeRecord(MSG_VIDEO, VIDEO_GET_BOUNDS);
    bounds.put(24, 77);
    bounds.put(40, 0x5a5a);
    lower.bounds = {0, 0, 1920, testing::ScriptedListener::KEEP};
    const message answer = client->ask(bounds);
    EXPECT_EQ(std::vector<int>({answer.get<int>(12), answer.get<int>(20), answer.get<int>(24)}),
              std::vector<int>({0, 1920, 77}));
    EXPECT_EQ(answer.get<int>(40), 0x5a5a) << "bytes beyond the answer keep the request's";

    lower.number = 7;
    EXPECT_EQ(client->ask(makeRecord(MSG_VIDEO, VIDEO_GET_RATE_12)).get<int>(12), 7);
    EXPECT_EQ(lower.calls.snapshot().back(), "getVideoProperty 12");
}

TEST_F(RequestsTest, CommandsReachEveryListenerAndUnknownCodesNone) {
    message flag = makeRecord(MSG_VIDEO, VIDEO_SET_FLAG_7);
    flag.bytes()[12] = 1;
    message region = makeRecord(MSG_VIDEO, VIDEO_UPDATE_REGION);
    region.put(12, video_region{1, 2, 3, 4});
    message audio = makeRecord(MSG_AUDIO, 7);
    audio.put(16, 0.25);
    for (const message& r : {makeRecord(MSG_VIDEO, 19), makeRecord(MSG_VIDEO, -1), makeRecord(MSG_CAROUSEL, 2),
                             makeRecord(MSG_CAROUSEL, 5), makeRecord(MSG_PROPERTY, 4), flag, region, audio})
        ASSERT_TRUE(client->send(r));
    ASSERT_TRUE(lower.calls.waitFor(3));
    EXPECT_TRUE(client->quietFor(100ms));
    EXPECT_EQ(lower.calls.snapshot(),
              std::vector<std::string>({"setVideoProperty 7 1", "updateGraphicsRegion 1 2 3 4",
                                        "setVideoAudio 7 " + testing::ScriptedListener::hexOf(0.25)}));
}

TEST_F(RequestsTest, PropertyTunerAndCarouselAnswers) {
    message get = makeRecord(MSG_PROPERTY, 0);
    writeTextField(get, 12, "name");
    message answer = client->ask(get);
    EXPECT_EQ(readText(answer, 12), "name");
    EXPECT_EQ(std::string(reinterpret_cast<char*>(answer.bytes() + 267), 255), std::string(255, '\0'));

    system_property first{}, second{};
    first.code = 0x11111111;
    std::strcpy(second.value, "v2");
    lower.properties = {first, second};
    const auto properties = client->askList(makeRecord(MSG_PROPERTY, 1));
    ASSERT_EQ(properties.size(), 2u);
    EXPECT_EQ(properties[0].code, 0x11111111) << "the item's first word replaces code";
    EXPECT_EQ(std::memcmp(properties[1].bytes() + 8, &second, sizeof second), 0);

    lower.ids = {5, 9};
    const auto ids = client->askList(makeRecord(MSG_TUNER, 1));
    ASSERT_EQ(ids.size(), 2u);
    EXPECT_EQ(std::make_tuple(ids[1].type, ids[1].code, ids[1].get<int>(12)), std::make_tuple(4, 2, 9));

    lower.text = "/mnt/c";
    message mount = makeRecord(MSG_CAROUSEL, 0);
    writeTextField(mount, 12, "dsmcc://1");
    EXPECT_EQ(readText(client->ask(mount), 267), "/mnt/c");
    EXPECT_EQ(lower.calls.snapshot().back(), "mountCarousel dsmcc://1");
}

TEST_F(RequestsTest, MediaAnswersKeepTheRequestsOtherBytesAndPassValuesBitExact) {
    message open = makeRecord(MSG_MEDIA, 0);
    std::memset(open.bytes() + 16, 'a', MESSAGE_SIZE - 16);  // no NUL: the last byte ends it
    lower.openedHandle = 42;
    lower.yes = true;
    message answer = client->ask(open);
    EXPECT_EQ(answer.get<int>(12), 42);
    EXPECT_EQ(answer.bytes()[16], 1);
    EXPECT_EQ(answer.bytes()[17], 'a');
    EXPECT_EQ(lower.calls.snapshot().back(), "open " + std::string(1943, 'a'));

    message bounds = makeRecord(MSG_MEDIA, 8);
    for (int i = 0; i < 4; ++i) bounds.put(16 + 4 * i, 100 + i);
    lower.number = 5;
    answer = client->ask(bounds);
    EXPECT_EQ(std::vector<int>({answer.get<int>(16), answer.get<int>(20), answer.get<int>(28)}),
              std::vector<int>({5, 101, 103}));
    hub->removeIpcServerListener(&lower);
    bounds.code = 9;
    EXPECT_EQ(std::memcmp(client->ask(bounds).bytes(), bounds.bytes(), MESSAGE_SIZE), 0);
    hub->addIpcServerListener(&lower);

    const unsigned char half[8] = {0, 0, 0, 0, 0, 0, 0xE0, 0x3F};
    message sound = makeRecord(MSG_MEDIA, 12);
    std::memcpy(sound.bytes() + 16, half, 8);
    message mute = makeRecord(MSG_MEDIA, 13);
    mute.bytes()[16] = 2;
    for (const message& r : {makeRecord(MSG_MEDIA, 16), makeRecord(MSG_MEDIA, -1), sound, mute})
        ASSERT_TRUE(client->send(r));
    ASSERT_TRUE(lower.calls.waitFor(4));
    EXPECT_TRUE(client->quietFor(100ms));
    const auto calls = lower.calls.snapshot();
    EXPECT_EQ(std::vector<std::string>(calls.end() - 2, calls.end()),
              std::vector<std::string>({"setMediaSoundLevel 0 3fe0000000000000", "setMediaMute 0 1"}));
}

}  // namespace
}  // namespace tessarine
