// The routing edge cases, through the real sockets: codes that are not
// queries, zero flags, texts and lists at their limits, empty answers. Which
// operation each ordinary request reaches is the request table's job.
#include <cstring>

#include "BridgeTest.h"

namespace tessarine {
namespace testing {
namespace {

using Calls = std::vector<std::string>;

struct CommandCase {
    const char* label;
    message record;
    Calls expected;
};

message withByte(std::int32_t type, std::int32_t code, std::size_t at, unsigned char byte) {
    return request(type, code, [=](message& r) { r.bytes()[at] = byte; });
}

TEST_F(BridgeTest, ZeroFlagBytesAndCodesWithoutAnOperation) {
    const auto media = [](int code, std::function<void(message&)> fill) {
        return request(MSG_MEDIA, code, [=](message& r) { r.put<std::int32_t>(12, 7), fill(r); });
    };
    const CommandCase cases[] = {
        {"flag 8 byte 0", request(MSG_VIDEO, 8), {"setFlag8(false)"}},
        {"17 calls nothing", withByte(MSG_VIDEO, 17, 12, 1), {}},
        {"mute byte 0", request(MSG_AUDIO, 4), {"setMute(false)"}},
        {"selector 5", request(MSG_AUDIO, 5), {}},
        {"selector -1", request(MSG_AUDIO, -1), {}},
        {"unmute", media(13, [](message& r) { r.bytes()[16] = 0; }), {"setMediaMute(7, false)"}},
    };
    for (const auto& c : cases) EXPECT_EQ(callsFor(fakes.video.log, c.record), c.expected) << c.label;

    // Media bounds are passed as they came, not scaled to the screen.
    fakes.video.mediaBoundsResult = 1;
    EXPECT_EQ(ask(media(8, [](message& r) {
                  for (int i = 0; i < 4; ++i) r.put<std::int32_t>(16 + 4 * i, 3000 + i);
              })).get<std::int32_t>(16),
              1);
    EXPECT_EQ(fakes.video.log.calls().back(), "setMediaBounds(7, 3000, 3001, 3002, 3003)");
}

TEST_F(BridgeTest, VideoRateQueriesStopAtTheirCodeRange) {
    fakes.video.rates = {{109, 110, 111, 112, 113, 114, 115, 116}};
    const struct {
        int command;
        int answer;
        const char* call;
    } rates[] = {{8, -1, nullptr}, {9, 109, "getRate9()"}, {16, 116, "getRate16()"}, {17, -1, nullptr}};
    for (const auto& c : rates) {
        const std::size_t before = fakes.video.log.count();
        // Commands 8 and 17 are not queries: ask the hub's rate query directly.
        const int answer = c.command >= 9 && c.command <= 16
                               ? ask(request(MSG_VIDEO, c.command)).get<std::int32_t>(12)
                               : adapter->getVideoProperty(static_cast<command>(c.command));
        EXPECT_EQ(answer, c.answer) << "command " << c.command;
        const auto calls = fakes.video.log.calls();
        EXPECT_EQ(Calls(calls.begin() + static_cast<long>(before), calls.end()), c.call ? Calls{c.call} : Calls{})
            << "command " << c.command;
    }
    fakes.video.languages = {"por"};
    EXPECT_EQ(adapter->getVideoLanguage(static_cast<command>(4)), "") << "4 asks the list, not one language";
}

TEST_F(BridgeTest, TextsAndValuesAtTheirLimits) {
    const std::string longValue(400, 'v');
    fakes.property.properties = {{"long", longValue}};
    const auto items = askList(request(MSG_PROPERTY, 1));
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(text(items[0], 267), longValue.substr(0, 254));
    EXPECT_EQ(items[0].bytes()[267 + 254], 0);

    fakes.si.description = std::string(300, 'd');
    EXPECT_EQ(text(ask(request(MSG_SI, 8)), 12), std::string(254, 'd'));
    fakes.si.currentService = 0;  // a valid answer, not "none"
    EXPECT_EQ(ask(request(MSG_SI, 7)).get<std::int32_t>(12), 0);
    fakes.version.answer = 0x101;  // only the low byte travels
    EXPECT_EQ(ask(request(MSG_VERSION, 6)).bytes()[12], 0x01);
}

TEST_F(BridgeTest, TunerKindsPickTheirListQuery) {
    fakes.tuner.transportStreamId = 1234;
    fakes.tuner.ids = {5, 9};
    EXPECT_EQ(ask(request(MSG_TUNER, 0)).get<std::int32_t>(12), 1234);

    const struct {
        int kind;
        const char* call;
    } cases[] = {{2, "getIds2()"}, {5, nullptr}};  // kind 2 takes no parameter; 5 is no kind
    for (const auto& c : cases) {
        const std::size_t before = fakes.tuner.log.count();
        std::vector<int> ids;
        for (const message& item : askList(request(MSG_TUNER, c.kind, [](message& r) { r.put<std::int32_t>(12, 77); })))
            ids.push_back(item.get<std::int32_t>(12));
        EXPECT_EQ(ids, (c.call ? std::vector<int>{5, 9} : std::vector<int>{})) << "kind " << c.kind;
        const auto calls = fakes.tuner.log.calls();
        EXPECT_EQ(Calls(calls.begin() + static_cast<long>(before), calls.end()), c.call ? Calls{c.call} : Calls{})
            << "kind " << c.kind;
    }
    // Channel queries serve in-process callers only.
    fakes.tuner.channelName = "Canal";
    fakes.tuner.channelNumber = 7;
    EXPECT_EQ(IpcServerManager::getInstance()->getChannelName(1, 2), "Canal");
    EXPECT_EQ(IpcServerManager::getInstance()->getVirtualChannelNumber(3, 4), 7);
    EXPECT_EQ(fakes.tuner.log.calls().back(), "getVirtualChannelNumber(3, 4)");
}

TEST_F(BridgeTest, EachCarouselListenerRequestPassesTheAdaptersBase) {
    const auto listener = base<middlewarefacade::CarouselListener>();
    const CommandCase cases[] = {
        {"add", request(MSG_CAROUSEL, 3), {callText("addCarouselListener", listener)}},
        {"add again", request(MSG_CAROUSEL, 3), {callText("addCarouselListener", listener)}},
        {"remove", request(MSG_CAROUSEL, 4), {callText("removeCarouselListener", listener)}},
    };
    for (const auto& c : cases) EXPECT_EQ(callsFor(fakes.carousel.log, c.record), c.expected) << c.label;
}

// The byte layout of lists with trailing data is the hub's (SiRequestsTest);
// here, what only in-process callers and the section channel ask.
TEST_F(BridgeTest, InProcessDescriptorQueriesAndEmptySections) {
    fakes.si.descriptors = {{0x48, {0xde, 0xad}}, {0x4d, {}}};
    EXPECT_EQ(IpcServerManager::getInstance()->getServiceDescriptors(44).size(), 2u);
    EXPECT_EQ(fakes.si.log.calls().back(), "getServiceDescriptors(44)");

    auto demux = connectDemux();
    ASSERT_TRUE(demux->connected());
    EXPECT_EQ(demux->readSection(), std::vector<unsigned char>{});
    EXPECT_EQ(fakes.demux.log.calls(), Calls{"read_section()"});
}

}  // namespace
}  // namespace testing
}  // namespace tessarine
