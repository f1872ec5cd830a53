// Each client request, through the real sockets, reaches the right facade
// operation with its arguments unchanged, and the facade's answer comes back
// byte for byte.
#include <cstring>

#include "BridgeFixture.h"

namespace tessarine {
namespace testing {
namespace {

using Calls = std::vector<std::string>;

void putRegion(message& r, int x, int y, int w, int h) {
    r.put<std::int32_t>(12, x), r.put<std::int32_t>(16, y), r.put<std::int32_t>(20, w), r.put<std::int32_t>(24, h);
}
void putText(message& r, std::size_t offset, const std::string& text) { writeTextField(r, offset, text); }

struct CommandCase {
    const char* label;
    message record;
    Calls expected;
};

TEST_F(BridgeTest, VideoCommandsReachTheirFacadeOperation) {
    const CommandCase cases[] = {
        {"set bounds", request(MSG_VIDEO, 0, [](message& r) { putRegion(r, 10, 20, 640, 360); }),
         {"setMainVideoBounds(10, 20, 640, 360)"}},
        {"reset", request(MSG_VIDEO, 2), {"reset()"}},
        {"text 6", request(MSG_VIDEO, 6, [](message& r) { putText(r, 12, "subtitles"); }), {"setText6(\"subtitles\")"}},
        {"flag 7 byte 2 is true", request(MSG_VIDEO, 7, [](message& r) { r.bytes()[12] = 2; }), {"setFlag7(true)"}},
        {"flag 8 byte 0", request(MSG_VIDEO, 8), {"setFlag8(false)"}},
        {"flag 8 byte 1", request(MSG_VIDEO, 8, [](message& r) { r.bytes()[12] = 1; }), {"setFlag8(true)"}},
        {"17 calls nothing", request(MSG_VIDEO, 17, [](message& r) { r.bytes()[12] = 1; }), {}},
        {"region", request(MSG_VIDEO, 18, [](message& r) { putRegion(r, 0, 0, 640, 360); }),
         {"updateGraphicsRegion(0, 0, 640, 360)"}},
    };
    for (const auto& c : cases) EXPECT_EQ(callsFor(fakes.video.log, c.record), c.expected) << c.label;
}

TEST_F(BridgeTest, VideoQueriesAnswerFromTheirFacadeOperation) {
    fakes.video.rates = {{109, 110, 111, 112, 113, 114, 115, 116}};
    fakes.video.mainBounds = {{0, 0, 1920, 1080}};
    fakes.video.language3 = "por";
    fakes.video.language5 = "eng";
    fakes.video.languages = {"por", "eng", "spa"};

    const struct {
        int command;
        int answer;
        const char* call;
    } rates[] = {{8, -1, nullptr}, {9, 109, "getRate9()"}, {12, 112, "getRate12()"}, {16, 116, "getRate16()"},
                 {17, -1, nullptr}};
    for (const auto& c : rates) {
        const std::size_t before = fakes.video.log.count();
        // Commands 8 and 17 are not queries: ask the hub's rate query directly.
        const int answer = c.command >= 9 && c.command <= 16
                               ? ask(request(MSG_VIDEO, c.command)).get<std::int32_t>(12)
                               : adapter->getVideoProperty(static_cast<command>(c.command));
        EXPECT_EQ(answer, c.answer) << "command " << c.command;
        const auto calls = fakes.video.log.calls();
        EXPECT_EQ(Calls(calls.begin() + static_cast<long>(before), calls.end()),
                  c.call ? Calls{c.call} : Calls{})
            << "command " << c.command;
    }

    const message bounds = ask(request(MSG_VIDEO, 1));
    EXPECT_EQ((std::vector<int>{bounds.get<int>(12), bounds.get<int>(16), bounds.get<int>(20), bounds.get<int>(24)}),
              (std::vector<int>{0, 0, 1920, 1080}));
    EXPECT_EQ(text(ask(request(MSG_VIDEO, 3)), 12), "por");
    EXPECT_EQ(text(ask(request(MSG_VIDEO, 5)), 12), "eng");
    EXPECT_EQ(adapter->getVideoLanguage(static_cast<command>(4)), "");
    std::vector<std::string> languages;
    for (const message& item : askList(request(MSG_VIDEO, 4))) languages.push_back(text(item, 12));
    EXPECT_EQ(languages, (std::vector<std::string>{"por", "eng", "spa"}));
}

TEST_F(BridgeTest, AudioSelectorsPickTheSettingAndPassTheLevelBitForBit) {
    const double level = 0.1;  // not exactly representable: any rounding would show
    const auto audio = [&](int selector, std::function<void(message&)> fill = nullptr) {
        return request(MSG_AUDIO, selector, fill ? fill : [&](message& r) { r.put<double>(16, level); });
    };
    const CommandCase cases[] = {
        {"sound", audio(0), {callText("setSoundLevel", level)}},
        {"balance", audio(1), {callText("setBalanceLevel", level)}},
        {"bass", audio(2), {callText("setBassLevel", level)}},
        {"treble", audio(3), {callText("setTrebleLevel", level)}},
        {"mute byte 2", audio(4, [](message& r) { r.bytes()[16] = 2; }), {"setMute(true)"}},
        {"mute byte 0", audio(4, [](message& r) { r.bytes()[16] = 0; }), {"setMute(false)"}},
        {"selector 5", audio(5), {}},
        {"selector -1", audio(-1), {}},
    };
    for (const auto& c : cases) EXPECT_EQ(callsFor(fakes.video.log, c.record), c.expected) << c.label;
}

TEST_F(BridgeTest, PropertiesRouteAndLongValuesArriveCut) {
    const std::string longValue(400, 'v');
    fakes.property.value = "42";
    fakes.property.properties = {{"short", "one"}, {"long", longValue}};

    const message answer = ask(request(MSG_PROPERTY, 0, [](message& r) { putText(r, 12, "volume"); }));
    EXPECT_EQ(text(answer, 12), "volume");
    EXPECT_EQ(text(answer, 267), "42");

    const auto items = askList(request(MSG_PROPERTY, 1));
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(text(items[0], 12), "short");
    EXPECT_EQ(text(items[1], 267), longValue.substr(0, 254));
    EXPECT_EQ(items[1].bytes()[267 + 254], 0);

    EXPECT_EQ(callsFor(fakes.property.log, request(MSG_PROPERTY, 2, [](message& r) {
                  putText(r, 12, "lang");
                  putText(r, 267, "por");
              })),
              Calls{"setProperty(\"lang\", \"por\")"});
    EXPECT_EQ(callsFor(fakes.property.log, request(MSG_PROPERTY, 3, [](message& r) { putText(r, 12, "lang"); })),
              Calls{"removeProperty(\"lang\")"});
    EXPECT_EQ(fakes.property.log.calls().front(), "getProperty(\"volume\")");
}

TEST_F(BridgeTest, TunerKindsPickTheirListQuery) {
    fakes.tuner.transportStreamId = 1234;
    fakes.tuner.ids = {5, 9};
    EXPECT_EQ(ask(request(MSG_TUNER, 0)).get<std::int32_t>(12), 1234);

    const struct {
        int kind;
        const char* call;
    } cases[] = {{1, "getIds1(77)"}, {2, "getIds2()"}, {3, "getIds3(77)"}, {4, "getIds4(77)"}, {5, nullptr}};
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
}

TEST_F(BridgeTest, CarouselRequestsRegisterTheCarouselListenerBase) {
    fakes.carousel.mountAnswer = "/carousel/1";
    const message mounted = ask(request(MSG_CAROUSEL, 0, [](message& r) { putText(r, 12, "dvb://1.2.3"); }));
    EXPECT_EQ(text(mounted, 267), "/carousel/1");
    const auto listener = base<middlewarefacade::CarouselListener>();
    const CommandCase cases[] = {
        {"umount", request(MSG_CAROUSEL, 1, [](message& r) { putText(r, 12, "dvb://1.2.3"); }),
         {"umount(\"dvb://1.2.3\")"}},
        {"add", request(MSG_CAROUSEL, 3), {callText("addCarouselListener", listener)}},
        {"add again", request(MSG_CAROUSEL, 3), {callText("addCarouselListener", listener)}},
        {"remove", request(MSG_CAROUSEL, 4), {callText("removeCarouselListener", listener)}},
    };
    for (const auto& c : cases) EXPECT_EQ(callsFor(fakes.carousel.log, c.record), c.expected) << c.label;
}

TEST_F(BridgeTest, MediaRequestsReachThePlayerOperations) {
    fakes.video.openResult = true;
    fakes.video.openedHandle = 31;
    fakes.video.duration = 5000;
    fakes.video.currentTime = 1200;
    fakes.video.setTimeResult = 0;
    fakes.video.playResult = true;
    fakes.video.mediaBoundsResult = 1;
    fakes.video.mediaBounds = {{1, 2, 3, 4}};

    const message opened = ask(request(MSG_MEDIA, 0, [](message& r) {
        r.put<std::int32_t>(12, 99);
        std::strcpy(reinterpret_cast<char*>(r.bytes() + 16), "file:///clip.ts");
    }));
    EXPECT_EQ(opened.get<std::int32_t>(12), 31);
    EXPECT_EQ(opened.bytes()[16], 1);

    const auto handle7 = [](message& r) { r.put<std::int32_t>(12, 7); };
    EXPECT_EQ(ask(request(MSG_MEDIA, 1, handle7)).get<std::int32_t>(16), 5000);
    EXPECT_EQ(ask(request(MSG_MEDIA, 2, handle7)).get<std::int32_t>(16), 1200);
    EXPECT_EQ(ask(request(MSG_MEDIA, 3, [](message& r) {
                  r.put<std::int32_t>(12, 7), r.put<std::int32_t>(16, 10), r.put<std::int32_t>(20, 20);
              })).get<std::int32_t>(16),
              0);
    EXPECT_EQ(ask(request(MSG_MEDIA, 5, handle7)).bytes()[16], 1);
    EXPECT_EQ(ask(request(MSG_MEDIA, 8, [](message& r) {
                  r.put<std::int32_t>(12, 7);
                  for (int i = 0; i < 4; ++i) r.put<std::int32_t>(16 + 4 * i, 3000 + i);  // not scaled to 1920x1080
              })).get<std::int32_t>(16),
              1);
    const message bounds = ask(request(MSG_MEDIA, 9, handle7));
    EXPECT_EQ((std::vector<int>{bounds.get<int>(16), bounds.get<int>(20), bounds.get<int>(24), bounds.get<int>(28)}),
              (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(fakes.video.log.calls(),
              (Calls{"addGraphicsSettingsListener(" + describe(base<middlewarefacade::GraphicsSettingsListener>()) + ")",
                     "open(\"file:///clip.ts\", 99)", "getDuration(7)", "getCurrentTime(7)", "setCurrentTime(7, 10, 20)",
                     "play(7)", "setMediaBounds(7, 3000, 3001, 3002, 3003)", "getMediaBounds(7)"}));

    const double half = 0.5, odd = -1.0 / 3.0;
    const auto level = [](int code, double value) {
        return request(MSG_MEDIA, code, [=](message& r) { r.put<std::int32_t>(12, 7), r.put<double>(16, value); });
    };
    const auto flag = [](int code, unsigned char byte) {
        return request(MSG_MEDIA, code, [=](message& r) { r.put<std::int32_t>(12, 7), r.bytes()[16] = byte; });
    };
    const CommandCase cases[] = {
        {"listener", request(MSG_MEDIA, 4, handle7),
         {callText("addMediaListener", 7, base<middlewarefacade::MediaListener>())}},
        {"close", request(MSG_MEDIA, 6, handle7), {"close(7)"}},
        {"stop", request(MSG_MEDIA, 7, handle7), {"stop(7)"}},
        {"freeze", flag(10, 3), {"setMediaFreeze(7, true)"}},
        {"balance", level(11, half), {callText("setMediaBalanceLevel", 7, half)}},
        {"sound", level(12, odd), {callText("setMediaSoundLevel", 7, odd)}},
        {"mute byte 2", flag(13, 2), {"setMediaMute(7, true)"}},
        {"unmute", flag(13, 0), {"setMediaMute(7, false)"}},
        {"bass", level(14, odd), {callText("setMediaBassLevel", 7, odd)}},
        {"treble", level(15, half), {callText("setMediaTrebleLevel", 7, half)}},
    };
    for (const auto& c : cases) EXPECT_EQ(callsFor(fakes.video.log, c.record), c.expected) << c.label;
}

TEST_F(BridgeTest, VersionCheckAsksTheVersionFacade) {
    fakes.version.answer = 0x101;  // only the low byte travels
    EXPECT_EQ(ask(request(MSG_VERSION, 6)).bytes()[12], 0x01);
    EXPECT_EQ(fakes.version.log.calls(), Calls{"checkVersionFlag(6)"});
}

TEST_F(BridgeTest, ServiceInformationAnswersComeFromTheSiFacade) {
    using namespace middlewarefacade;
    auto& si = fakes.si;
    si.codingFormat = "ISO-8859-1";
    si.description = std::string(300, 'd');
    si.currentService = 0;  // a valid answer, not "none"
    si.protectedService = true;
    si.caSystemIds = {0x0b00, 0x1702};
    si.network = {"Rede", 17};
    si.transportStream = {1, 2, "not sent", 0, 4, 9, 3};
    si.services = {{1, 2, 3, "TV", 4, 5, "not sent"}};
    si.serviceComponents = {{1, 2, 3, 4, 5, 6}};
    si.pmts = {{7, 8, 9, 10}};
    si.descriptors = {{0x48, {0xde, 0xad}}, {0x4d, {}}};
    si.programEvent = {1, 2, 3, 4, "now", "", "", 0, 5, 6, 7, {0xaa}, {}, {}, {"", "x"}, {}, {}};
    si.programEvents = {si.programEvent, {9, 9, 9, 9, "next", "", "", 0, 9, 9, 9, {}, {0x01, 0x02}, {}, {}, {}, {}}};

    EXPECT_EQ(text(ask(request(MSG_SI, 0)), 12), "ISO-8859-1");
    EXPECT_EQ(text(ask(request(MSG_SI, 8)), 12), std::string(254, 'd'));
    EXPECT_EQ(ask(request(MSG_SI, 5)).bytes()[12], 1);
    EXPECT_EQ(ask(request(MSG_SI, 7)).get<std::int32_t>(12), 0);
    std::vector<int> ids;
    for (const message& item : askList(request(MSG_SI, 4))) ids.push_back(item.get<std::int32_t>(12));
    EXPECT_EQ(ids, (std::vector<int>{0x0b00, 0x1702}));

    const network net = network::decode(ask(request(MSG_SI, 14)).bytes() + 12);
    EXPECT_EQ(net.value0, 17);
    EXPECT_EQ(net.text0, "Rede");
    const transport_stream ts = transport_stream::decode(ask(request(MSG_SI, 12)).bytes() + 12);
    EXPECT_EQ((std::vector<int>{ts.value0, ts.value1, ts.value2, ts.value3, ts.value4}),
              (std::vector<int>{1, 2, 3, 4, 0}));

    const auto services = askList(request(MSG_SI, 6));
    ASSERT_EQ(services.size(), 1u);
    EXPECT_EQ(service::decode(services[0].bytes() + 12).text0, "TV");
    const auto components = askList(request(MSG_SI, 10, [](message& r) { r.put<std::int32_t>(12, 55); }));
    ASSERT_EQ(components.size(), 1u);
    EXPECT_EQ(service_component::decode(components[0].bytes() + 12).value5, 6);
    const auto tables = askList(request(MSG_SI, 16, [](message& r) { r.put<std::int32_t>(12, 66); }));
    ASSERT_EQ(tables.size(), 1u);
    EXPECT_EQ(pmt::decode(tables[0].bytes() + 12).value3, 10);

    // Descriptor lists: each record followed by its bytes, an empty one by none.
    const auto descriptorRequest = [](int code) {
        return request(MSG_SI, code, [](message& r) {
            r.put<std::int32_t>(12, 11), r.put<std::int32_t>(20, 21), r.put<std::int32_t>(24, 22);
        });
    };
    for (int code : {3, 11, 13, 15}) {
        const message header = ask(descriptorRequest(code));
        ASSERT_EQ(header.code, 2) << "code " << code;
        const auto first = control->receive();
        ASSERT_TRUE(first);
        EXPECT_EQ(descriptor::decode(first->bytes() + 12).id, 0x48);
        EXPECT_EQ(trailing(descriptor::length(first->bytes() + 12)), (std::vector<unsigned char>{0xde, 0xad}));
        const auto second = control->receive();
        ASSERT_TRUE(second);
        EXPECT_EQ(descriptor::length(second->bytes() + 12), 0u);
    }

    // Program events: records first, then each event's trailing data.
    const auto events = askList(request(MSG_SI, 1));
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(program_event::decode(events[0].bytes() + 12).text0, "now");
    EXPECT_EQ(program_event::decode(events[1].bytes() + 12).text0, "next");
    EXPECT_EQ(trailing(1 + 4 + 4 + 1), (std::vector<unsigned char>{0xaa, 0, 0, 0, 0, 1, 0, 0, 0, 'x'}));
    EXPECT_EQ(trailing(2), (std::vector<unsigned char>{0x01, 0x02}));
    const message single = ask(request(MSG_SI, 2));
    EXPECT_EQ(program_event::decode(single.bytes() + 12).value6, 7);
    EXPECT_EQ(trailing(10).front(), 0xaa);

    EXPECT_EQ(si.log.calls(),
              (Calls{"getSICodingFormat()", "getServiceDescription()", "isProtectedService()", "getCurrentService()",
                     "getCASystemIds()", "getNetwork()", "getTransportStream()", "getServices()",
                     "getServiceComponents(55)", "getPMTs(66)", "getProgramEventDescriptors(21, 22)",
                     "getServiceComponentDescriptors(11)", "getTransportStreamDescriptors(11)",
                     "getNetworkDescriptors()", "getProgramEvents()", "getProgramEvent()"}));
    EXPECT_EQ(IpcServerManager::getInstance()->getServiceDescriptors(44).size(), 2u);
    EXPECT_EQ(si.log.calls().back(), "getServiceDescriptors(44)");
}

TEST_F(BridgeTest, DemuxCommandsReachTheDemuxFacadeInOrder) {
    fakes.demux.section = {0x00, 0xb0, 0x11, 0xff};
    auto demux = connectDemux();
    ASSERT_TRUE(demux->connected());
    const std::vector<unsigned char> a{1}, b{2, 2}, c{3, 3, 3};
    for (int command : {0, 1, 9, 10, 11, 12}) demux->sendWord(command);
    demux->sendWord(2), demux->sendWord(0x12);
    demux->sendWord(3), demux->sendWord(0x4e);
    for (int command : {4, 5, 6}) demux->sendWord(command), demux->sendWord(command * 10), demux->sendString(a),
        demux->sendString(b);
    demux->sendWord(7), demux->sendWord(70), demux->sendString(a), demux->sendString(b), demux->sendString(c);
    demux->sendWord(8), demux->sendWord(2500);
    EXPECT_EQ(demux->readSection(), fakes.demux.section);
    EXPECT_EQ(fakes.demux.log.calls(),
              (Calls{"start()", "stop()", "clear_table_id()", "clear_positive_filter()", "clear_less_than_filter()",
                     "clear_xor_filter()", "set_pid(18)", "set_table_id(78)", "set_positive_filter(40, {01}, {02 02})",
                     "set_greater_than_filter(50, {01}, {02 02})", "set_less_than_filter(60, {01}, {02 02})",
                     "set_xor_filter(70, {01}, {02 02}, {03 03 03})", "set_time_out(2500L)", "read_section()"}));

    fakes.demux.section.clear();
    EXPECT_EQ(demux->readSection(), std::vector<unsigned char>{});
}

}  // namespace
}  // namespace testing
}  // namespace tessarine
