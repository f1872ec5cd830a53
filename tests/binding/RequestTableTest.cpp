// Every request through the real sockets to the recording facades: the
// facade operation it must cause, with its values, and the answer's fields;
// then the same request made through the client library, which must cause
// the same operation and return the same values. Whether a request is
// answered, and in which shape, is read from the protocol description.
#include <algorithm>
#include <cstring>

#include "BridgeTest.h"
#include "tessarine/TextField.h"
#include "tessarine/client/ControlClient.h"
#include "tessarine/protocol/Requests.h"

namespace tessarine {
namespace testing {
namespace {

using Ints = std::vector<std::pair<std::size_t, int>>;
using Bytes = std::vector<unsigned char>;
using C = client::ControlClient&;
using client::Rectangle;

struct Row {
    message request;
    std::string call;  // empty: no facade operation
    Ints answer;       // fields of the answer (of the first item of a list)
    std::pair<std::size_t, std::string> text;
    // The same request through the client, checking what it returns.
    std::function<void(C)> viaClient;
};

message rec(std::int32_t type, std::int32_t code, Ints ints = {}, std::pair<std::size_t, std::string> text = {}) {
    message r = makeRecord(type, code);
    for (const auto& [at, value] : ints) r.put<std::int32_t>(at, value);
    if (!text.second.empty()) writeTextField(r, text.first, text.second);
    return r;
}
message level(std::int32_t type, std::int32_t code, double value) {
    message r = rec(type, code, {{12, 2}});
    r.put<double>(16, value);
    return r;
}
message byte(std::int32_t type, std::int32_t code, std::size_t at) {
    message r = rec(type, code, {{12, 2}});
    r.bytes()[at] = 2;  // any byte but 0 is true
    return r;
}

// The longest locator a record holds, up to its last byte.
const std::string LOCATOR = "file:///" + std::string(1935, 'm');
message openRecord() {
    message r = rec(MSG_MEDIA, 0, {{12, -1}});
    std::memcpy(r.bytes() + 16, LOCATOR.c_str(), LOCATOR.size() + 1);
    return r;
}

class RequestTableTest : public BridgeTest {
protected:
    void SetUp() override {
        auto& v = fakes.video;
        v.mainBounds = {{1, 2, 3, 4}};
        v.openResult = v.playResult = true;
        v.openedHandle = 55;
        v.duration = 103, v.currentTime = 104, v.setTimeResult = 105, v.mediaBoundsResult = 110;
        v.mediaBounds = {{11, 12, 13, 14}};
        v.language3 = "lang3", v.language5 = "lang5", v.languages = {"a", std::string(300, 'L')};
        v.rates = {{109, 110, 111, 112, 113, 114, 115, 116}};
        fakes.property.value = "value-of-k";
        fakes.property.properties = {{"n1", "v1"}};
        fakes.tuner.transportStreamId = 120;
        fakes.tuner.ids = {121, -9};
        fakes.carousel.mountAnswer = "mounted";
        fakes.version.answer = 0x43;
        auto& si = fakes.si;
        si.codingFormat = "fmt", si.description = "desc";
        si.caSystemIds = {91};
        si.protectedService = true;
        si.currentService = 56;
        si.services = {{51, 52, 53, "svc", 54, 55, "y"}};
        si.serviceComponents = {{71, 72, 73, 74, 75, 76}};
        si.pmts = {{81, 82, 83, 84}};
        si.network = {"net", 31};
        si.transportStream = {41, 42, "x", 99, 44, 2, 43};
        si.programEvent = {61, 62, 63, 64, "t0", "t1", "t2", 99, 65, 66, 67, {}, {}, {}, {}, {}, {}};
        si.programEvents = {si.programEvent};
        // Empty data keeps the raw reader's framing simple; the client's
        // reading of trailing bytes is the framing tests' job.
        si.descriptors = {{0x48, {}}, {0x4d, {}}};
        BridgeTest::SetUp();
    }

    // The calls all facades received while `make` ran.
    template <typename Make>
    std::vector<std::string> callsDuring(Make make) {
        std::vector<CallLog*> logs = {&fakes.video.log, &fakes.property.log, &fakes.si.log,
                                      &fakes.carousel.log, &fakes.tuner.log};
        std::vector<std::size_t> before;
        for (CallLog* log : logs) before.push_back(log->count());
        make();
        std::vector<std::string> calls;
        for (std::size_t i = 0; i < logs.size(); ++i) {
            const auto all = logs[i]->calls();
            calls.insert(calls.end(), all.begin() + static_cast<long>(before[i]), all.end());
        }
        return calls;
    }

    std::optional<message> run(const message& request) {
        const protocol::Request* kind = protocol::findRequest(request.type, request.code);
        const auto shape = kind ? kind->answer.shape : protocol::AnswerShape::None;
        if (shape == protocol::AnswerShape::None) {
            EXPECT_TRUE(control->send(request));
            fence();
            return std::nullopt;
        }
        if (shape == protocol::AnswerShape::InPlace) return ask(request);
        const auto items = askList(request);
        return items.empty() ? std::nullopt : std::optional<message>(items.front());
    }

    // The raw records first, then (on a connection of its own, as the bridge
    // serves one application at a time) the client's calls.
    void check(const std::vector<Row>& rows) {
        for (const Row& row : rows) {
            std::optional<message> answer;
            const std::string label = std::to_string(row.request.type) + "/" + std::to_string(row.request.code);
            const auto expected = row.call.empty() ? std::vector<std::string>{} : std::vector<std::string>{row.call};
            EXPECT_EQ(callsDuring([&] { answer = run(row.request); }), expected) << label;
            if (row.answer.empty() && row.text.second.empty()) continue;
            ASSERT_TRUE(answer) << label;
            for (const auto& [at, value] : row.answer) {
                EXPECT_EQ(answer->get<std::int32_t>(at), value) << label << " @" << at;
            }
            if (!row.text.second.empty()) {
                EXPECT_EQ(readText(*answer, row.text.first), row.text.second) << label;
            }
        }
        client::ControlClient& c = viaClient();
        for (const Row& row : rows) {
            if (!row.viaClient) continue;
            const std::string label = "client " + std::to_string(row.request.type) + "/" + std::to_string(row.request.code);
            const auto expected = row.call.empty() ? std::vector<std::string>{} : std::vector<std::string>{row.call};
            // A version check (not logged here) is answered once all before it is handled.
            const auto calls = callsDuring([&] {
                row.viaClient(c);
                EXPECT_TRUE(c.checkVersion(0)) << label;
            });
            EXPECT_EQ(calls, expected) << label;
        }
    }

    client::ControlClient& viaClient() {
        control->close();
        client::ClientOptions options;
        options.socketPath = dir.file("ipc.socket");
        options.timeout = std::chrono::milliseconds(5000);
        client = std::make_unique<client::ControlClient>(options);
        // Answered once the bridge has seen the raw connection go (and reset the video).
        EXPECT_TRUE(client->checkVersion(0));
        return *client;
    }
    void TearDown() override {
        client.reset();
        BridgeTest::TearDown();
    }
    std::unique_ptr<client::ControlClient> client;
};

TEST_F(RequestTableTest, VideoAndAudioRequestsReachTheirOperationsWithTheirValues) {
    std::vector<Row> rows = {
        {rec(MSG_VIDEO, 0, {{12, 10}, {16, 20}, {20, -30}, {24, 40}}), "setMainVideoBounds(10, 20, -30, 40)", {}, {},
         [](C c) { EXPECT_TRUE(c.setVideoBounds({10, 20, -30, 40})); }},
        {rec(MSG_VIDEO, 1), "getMainVideoBounds()", {{12, 1}, {16, 2}, {20, 3}, {24, 4}}, {},
         [](C c) { EXPECT_EQ(*c.videoBounds(), (Rectangle{1, 2, 3, 4})); }},
        {rec(MSG_VIDEO, 2), "reset()", {}, {}, [](C c) { EXPECT_TRUE(c.resetVideo()); }},
        {rec(MSG_VIDEO, 3), "getLanguage3()", {}, {12, "lang3"}, [](C c) { EXPECT_EQ(*c.videoLanguage(3), "lang3"); }},
        {rec(MSG_VIDEO, 4), "getLanguages()", {}, {12, "a"},
         [](C c) { EXPECT_EQ(*c.videoLanguages(), (std::vector<std::string>{"a", std::string(254, 'L')})); }},
        {rec(MSG_VIDEO, 5), "getLanguage5()", {}, {12, "lang5"}, [](C c) { EXPECT_EQ(*c.videoLanguage(5), "lang5"); }},
        {rec(MSG_VIDEO, 6, {}, {12, "six"}), callText("setText6", std::string("six")), {}, {},
         [](C c) { EXPECT_TRUE(c.setVideoText("six")); }},
        {byte(MSG_VIDEO, 7, 12), "setFlag7(true)", {}, {}, [](C c) { EXPECT_TRUE(c.setVideoFlag(7, true)); }},
        {byte(MSG_VIDEO, 8, 12), "setFlag8(true)", {}, {}, [](C c) { EXPECT_TRUE(c.setVideoFlag(8, true)); }},
        {rec(MSG_VIDEO, 8), "setFlag8(false)", {}, {}, [](C c) { EXPECT_TRUE(c.setVideoFlag(8, false)); }},
        {rec(MSG_VIDEO, 17, {{12, 1}}), "", {}, {}, [](C c) { EXPECT_TRUE(c.applyGraphicsSettings()); }},
        {rec(MSG_VIDEO, 18, {{12, 5}, {16, 6}, {20, 7}, {24, 8}}), "updateGraphicsRegion(5, 6, 7, 8)", {}, {},
         [](C c) { EXPECT_TRUE(c.updateGraphicsRegion({5, 6, 7, 8})); }},
        {level(MSG_AUDIO, 0, 0.1), callText("setSoundLevel", 0.1), {}, {}, [](C c) { EXPECT_TRUE(c.setSoundLevel(0.1)); }},
        {level(MSG_AUDIO, 1, -1.0 / 3.0), callText("setBalanceLevel", -1.0 / 3.0), {}, {},
         [](C c) { EXPECT_TRUE(c.setBalanceLevel(-1.0 / 3.0)); }},
        {level(MSG_AUDIO, 2, 1e308), callText("setBassLevel", 1e308), {}, {}, [](C c) { EXPECT_TRUE(c.setBassLevel(1e308)); }},
        {level(MSG_AUDIO, 3, -0.0), callText("setTrebleLevel", -0.0), {}, {}, [](C c) { EXPECT_TRUE(c.setTrebleLevel(-0.0)); }},
        {byte(MSG_AUDIO, 4, 16), "setMute(true)", {}, {}, [](C c) { EXPECT_TRUE(c.setMute(true)); }},
        {rec(MSG_AUDIO, 4), "setMute(false)", {}, {}, [](C c) { EXPECT_TRUE(c.setMute(false)); }},
        {rec(MSG_AUDIO, 5), "", {}, {}, nullptr},
        {rec(MSG_AUDIO, -1), "", {}, {}, nullptr},
    };
    for (int code = 9; code <= 16; ++code) {
        rows.push_back({rec(MSG_VIDEO, code), "getRate" + std::to_string(code) + "()", {{12, 100 + code}}, {},
                        [code](C c) { EXPECT_EQ(c.videoRate(code)->value_or(0), 100 + code); }});
    }
    check(rows);
    fakes.video.initCrop[0] = {1, 2, 3, 4};
    fakes.video.initCrop[1] = {5, 6, 7, 8};
    ipcutil::Rectangle_t first{}, second{};
    adapter->getInitCropValue(&first, &second);
    EXPECT_EQ((std::vector<int>{first.x, first.height, second.x, second.height}), (std::vector<int>{1, 4, 5, 8}));
}

TEST_F(RequestTableTest, MediaRequestsReachTheirOperationsWithTheHandle) {
    const auto listener = base<middlewarefacade::MediaListener>();
    check({
        {openRecord(), callText("open", LOCATOR, -1), {{12, 55}}, {},
         [](C c) { EXPECT_EQ(c.openMedia(LOCATOR)->value_or(0), 55); }},
        {rec(MSG_MEDIA, 1, {{12, 2}}), "getDuration(2)", {{16, 103}}, {},
         [](C c) { EXPECT_EQ(c.mediaDuration(2)->value_or(0), 103); }},
        {rec(MSG_MEDIA, 2, {{12, 2}}), "getCurrentTime(2)", {{16, 104}}, {},
         [](C c) { EXPECT_EQ(c.mediaCurrentTime(2)->value_or(0), 104); }},
        {rec(MSG_MEDIA, 3, {{12, 2}, {16, -3}, {20, 4}}), "setCurrentTime(2, -3, 4)", {{16, 105}}, {},
         [](C c) { EXPECT_EQ(c.setMediaCurrentTime(2, -3, 4)->value_or(0), 105); }},
        {rec(MSG_MEDIA, 4, {{12, 2}}), callText("addMediaListener", 2, listener), {}, {},
         [](C c) { EXPECT_TRUE(c.addMediaListener(2)); }},
        {rec(MSG_MEDIA, 5, {{12, 2}}), "play(2)", {}, {}, [](C c) { EXPECT_TRUE(*c.playMedia(2)); }},
        {rec(MSG_MEDIA, 6, {{12, 2}}), "close(2)", {}, {}, [](C c) { EXPECT_TRUE(c.closeMedia(2)); }},
        {rec(MSG_MEDIA, 7, {{12, 2}}), "stop(2)", {}, {}, [](C c) { EXPECT_TRUE(c.stopMedia(2)); }},
        {rec(MSG_MEDIA, 8, {{12, 2}, {16, 3000}, {20, 6}, {24, 7}, {28, 8}}), "setMediaBounds(2, 3000, 6, 7, 8)",
         {{16, 110}}, {}, [](C c) { EXPECT_EQ(c.setMediaBounds(2, {3000, 6, 7, 8})->value_or(0), 110); }},
        {rec(MSG_MEDIA, 9, {{12, 2}}), "getMediaBounds(2)", {{16, 11}, {20, 12}, {24, 13}, {28, 14}}, {},
         [](C c) { EXPECT_EQ(*c.mediaBounds(2), (Rectangle{11, 12, 13, 14})); }},
        {byte(MSG_MEDIA, 10, 16), "setMediaFreeze(2, true)", {}, {}, [](C c) { EXPECT_TRUE(c.setMediaFreeze(2, true)); }},
        {level(MSG_MEDIA, 11, 0.1), callText("setMediaBalanceLevel", 2, 0.1), {}, {},
         [](C c) { EXPECT_TRUE(c.setMediaBalanceLevel(2, 0.1)); }},
        {level(MSG_MEDIA, 12, -1.0 / 3.0), callText("setMediaSoundLevel", 2, -1.0 / 3.0), {}, {},
         [](C c) { EXPECT_TRUE(c.setMediaSoundLevel(2, -1.0 / 3.0)); }},
        {byte(MSG_MEDIA, 13, 16), "setMediaMute(2, true)", {}, {}, [](C c) { EXPECT_TRUE(c.setMediaMute(2, true)); }},
        {rec(MSG_MEDIA, 13, {{12, 2}}), "setMediaMute(2, false)", {}, {}, [](C c) { EXPECT_TRUE(c.setMediaMute(2, false)); }},
        {level(MSG_MEDIA, 14, 7.0), callText("setMediaBassLevel", 2, 7.0), {}, {},
         [](C c) { EXPECT_TRUE(c.setMediaBassLevel(2, 7.0)); }},
        {level(MSG_MEDIA, 15, 7.5), callText("setMediaTrebleLevel", 2, 7.5), {}, {},
         [](C c) { EXPECT_TRUE(c.setMediaTrebleLevel(2, 7.5)); }},
    });
}

TEST_F(RequestTableTest, PropertyTunerCarouselAndVersionRequestsReachTheirOperations) {
    const std::string k = "k";
    message set = rec(MSG_PROPERTY, 2, {}, {12, k});
    writeTextField(set, 267, "v");
    const auto listener = base<middlewarefacade::CarouselListener>();
    check({
        {rec(MSG_PROPERTY, 0, {}, {12, k}), callText("getProperty", k), {}, {267, "value-of-k"},
         [](C c) { EXPECT_EQ(c.systemProperty("k")->value_or(""), "value-of-k"); }},
        {rec(MSG_PROPERTY, 1), "getProperties()", {}, {267, "v1"},
         [](C c) {
             const auto p = c.systemProperties()->at(0);
             EXPECT_EQ(p.name + "=" + p.value, "n1=v1");
         }},
        {set, callText("setProperty", k, std::string("v")), {}, {}, [](C c) { EXPECT_TRUE(c.setSystemProperty("k", "v")); }},
        {rec(MSG_PROPERTY, 3, {}, {12, k}), callText("removeProperty", k), {}, {},
         [](C c) { EXPECT_TRUE(c.removeSystemProperty("k")); }},
        {rec(MSG_TUNER, 0), "getCurrentTransportStreamID()", {{12, 120}}, {},
         [](C c) { EXPECT_EQ(c.currentTransportStreamId()->value_or(0), 120); }},
        {rec(MSG_TUNER, 1, {{12, 9}}), "getIds1(9)", {{12, 121}}, {},
         [](C c) { EXPECT_EQ(*c.tunerIds(1, 9), (std::vector<std::int32_t>{121, -9})); }},
        {rec(MSG_TUNER, 2, {{12, 9}}), "getIds2()", {{12, 121}}, {}, [](C c) { EXPECT_TRUE(c.tunerIds(2, 9)); }},
        {rec(MSG_TUNER, 3, {{12, 9}}), "getIds3(9)", {{12, 121}}, {}, [](C c) { EXPECT_TRUE(c.tunerIds(3, 9)); }},
        {rec(MSG_TUNER, 4, {{12, 9}}), "getIds4(9)", {{12, 121}}, {}, [](C c) { EXPECT_TRUE(c.tunerIds(4, 9)); }},
        {rec(MSG_TUNER, 5, {{12, 9}}), "", {}, {}, nullptr},  // no such kind: an empty list
        {rec(MSG_CAROUSEL, 0, {}, {12, "c"}), callText("mount", std::string("c")), {}, {267, "mounted"},
         [](C c) { EXPECT_EQ(c.mountCarousel("c")->value_or(""), "mounted"); }},
        {rec(MSG_CAROUSEL, 1, {}, {12, "c"}), callText("umount", std::string("c")), {}, {},
         [](C c) { EXPECT_TRUE(c.unmountCarousel("c")); }},
        {rec(MSG_CAROUSEL, 3), callText("addCarouselListener", listener), {}, {}, [](C c) { EXPECT_TRUE(c.addCarouselListener()); }},
        {rec(MSG_CAROUSEL, 3), callText("addCarouselListener", listener), {}, {}, nullptr},
        {rec(MSG_CAROUSEL, 4), callText("removeCarouselListener", listener), {}, {},
         [](C c) { EXPECT_TRUE(c.removeCarouselListener()); }},
        {rec(MSG_VERSION, 3), "", {{12, 0x43}}, {}, [](C c) { EXPECT_EQ(*c.checkVersion(3), 0x43); }},
    });
    const auto versions = fakes.version.log.calls();
    EXPECT_EQ(std::count(versions.begin(), versions.end(), "checkVersionFlag(3)"), 2);
}

TEST_F(RequestTableTest, ServiceInformationRequestsReadTheHostsRecordsFieldByField) {
    check({
        {rec(MSG_SI, 0), "getSICodingFormat()", {}, {12, "fmt"}, [](C c) { EXPECT_EQ(*c.siCodingFormat(), "fmt"); }},
        {rec(MSG_SI, 2), "getProgramEvent()", {{12, 61}, {16, 62}, {20, 63}, {24, 64}, {32, 65}, {36, 66}, {40, 67}},
         {299, "t1"}, [](C c) {
             const auto e = **c.programEvent();
             EXPECT_EQ((std::vector<int>{e.value0, e.value3, e.value4, e.value6}), (std::vector<int>{61, 64, 65, 67}));
             EXPECT_EQ(e.text0 + e.text1 + e.text2, "t0t1t2");
         }},
        {rec(MSG_SI, 1), "getProgramEvents()", {{12, 61}, {40, 67}}, {44, "t0"},
         [](C c) { EXPECT_EQ(c.programEvents()->at(0).value5, 66); }},
        {rec(MSG_SI, 4), "getCASystemIds()", {{12, 91}}, {},
         [](C c) { EXPECT_EQ(*c.caSystemIds(), std::vector<std::int32_t>{91}); }},
        {rec(MSG_SI, 5), "isProtectedService()", {{12, 1}}, {}, [](C c) { EXPECT_TRUE(*c.isProtectedService()); }},
        {rec(MSG_SI, 6), "getServices()", {{12, 51}, {16, 52}, {20, 53}, {24, 54}, {28, 55}}, {36, "svc"}, [](C c) {
             const auto s = c.services()->at(0);
             EXPECT_EQ((std::vector<int>{s.value0, s.value2, s.value4}), (std::vector<int>{51, 53, 55}));
             EXPECT_EQ(s.text0, "svc");
         }},
        {rec(MSG_SI, 7), "getCurrentService()", {{12, 56}}, {},
         [](C c) { EXPECT_EQ(c.currentService()->value_or(0), 56); }},
        {rec(MSG_SI, 8), "getServiceDescription()", {}, {12, "desc"},
         [](C c) { EXPECT_EQ(*c.serviceDescription(), "desc"); }},
        {rec(MSG_SI, 10, {{12, 1}}), "getServiceComponents(1)", {{12, 71}, {32, 76}}, {},
         [](C c) { EXPECT_EQ(c.serviceComponents(1)->at(0).value5, 76); }},
        {rec(MSG_SI, 12), "getTransportStream()", {{12, 41}, {16, 42}, {20, 43}, {28, 44}, {32, 2}}, {}, [](C c) {
             const auto t = **c.transportStream();
             EXPECT_EQ((std::vector<int>{t.value0, t.value2, t.value3, t.value4}), (std::vector<int>{41, 43, 44, 2}));
         }},
        {rec(MSG_SI, 14), "getNetwork()", {{12, 31}}, {16, "net"},
         [](C c) {
             const auto n = **c.network();
             EXPECT_EQ(n.text0 + std::to_string(n.value0), "net31");
         }},
        {rec(MSG_SI, 16, {{12, 1}}), "getPMTs(1)", {{12, 81}, {24, 84}}, {},
         [](C c) { EXPECT_EQ(c.pmts(1)->at(0).value3, 84); }},
        {rec(MSG_SI, 3, {{12, 4}, {20, 5}, {24, 6}}), "getProgramEventDescriptors(5, 6)", {}, {},
         [](C c) { EXPECT_EQ(c.programEventDescriptors(5, 6)->at(1).id, 0x4d); }},
        {rec(MSG_SI, 9, {{12, 4}, {20, 7}, {24, 8}}), "getProgramEventDescriptors(7, 8)", {}, {}, nullptr},
        {rec(MSG_SI, 11, {{12, 4}}), "getServiceComponentDescriptors(4)", {}, {},
         [](C c) { EXPECT_EQ(c.serviceComponentDescriptors(4)->size(), 2u); }},
        {rec(MSG_SI, 13, {{12, 4}}), "getTransportStreamDescriptors(4)", {}, {},
         [](C c) { EXPECT_EQ(c.transportStreamDescriptors(4)->at(0).id, 0x48); }},
        {rec(MSG_SI, 15), "getNetworkDescriptors()", {}, {},
         [](C c) { EXPECT_EQ(c.networkDescriptors()->size(), 2u); }},
    });
}

// Answers that mean "nothing" become empty results in the client.
TEST_F(RequestTableTest, TheClientTurnsAnswersThatMeanNothingIntoEmptyResults) {
    fakes.video.openResult = fakes.video.playResult = false;
    fakes.video.duration = -1, fakes.video.rates[0] = -1, fakes.video.mediaBounds[0] = -1;
    fakes.property.value.clear();
    fakes.carousel.mountAnswer.clear();
    fakes.si.programEvent.value1 = -1, fakes.si.transportStream.value1 = -1, fakes.si.network.value0 = -1;
    fakes.si.currentService = -1, fakes.tuner.transportStreamId = -1;
    fakes.si.programEvents.clear(), fakes.si.descriptors.clear();
    C c = viaClient();
    EXPECT_FALSE(c.openMedia("x")->has_value());
    EXPECT_FALSE(*c.playMedia(1));
    EXPECT_FALSE(c.mediaDuration(1)->has_value());
    EXPECT_FALSE(c.videoRate(9)->has_value());
    EXPECT_EQ(c.mediaBounds(1)->x, -1);
    EXPECT_FALSE(c.systemProperty("k")->has_value());
    EXPECT_FALSE(c.mountCarousel("c")->has_value());
    EXPECT_FALSE(c.programEvent()->has_value());
    EXPECT_FALSE(c.transportStream()->has_value());
    EXPECT_FALSE(c.network()->has_value());
    EXPECT_FALSE(c.currentService()->has_value());
    EXPECT_FALSE(c.currentTransportStreamId()->has_value());
    EXPECT_TRUE(c.programEvents()->empty());
    EXPECT_TRUE(c.networkDescriptors()->empty());
}

TEST_F(RequestTableTest, DemuxCommandsReachTheirOperationsWithTheirValues) {
    auto demux = connectDemux();
    ASSERT_TRUE(demux->connected());
    for (int command = 0; command <= 12; ++command) {
        ASSERT_TRUE(demux->sendWord(command));
        if (command == 2 || command == 3 || command == 8) {
            ASSERT_TRUE(demux->sendWord(100 + command));
        }
        if (command < 4 || command > 7) continue;
        ASSERT_TRUE(demux->sendWord(command));
        for (int s = 0; s < (command == 7 ? 3 : 2); ++s)
            ASSERT_TRUE(demux->sendString(Bytes(static_cast<std::size_t>(s + 1), static_cast<unsigned char>(s))));
    }
    fakes.demux.section = {0xca, 0xfe};
    EXPECT_EQ(demux->readSection(), (Bytes{0xca, 0xfe}));
    const Bytes a{0}, b{1, 1}, c{2, 2, 2};
    EXPECT_EQ(fakes.demux.log.calls(), (std::vector<std::string>{
        "start()", "stop()", "set_pid(102)", "set_table_id(103)", callText("set_positive_filter", 4, a, b),
        callText("set_greater_than_filter", 5, a, b), callText("set_less_than_filter", 6, a, b),
        callText("set_xor_filter", 7, a, b, c), "set_time_out(108L)", "clear_table_id()", "clear_positive_filter()",
        "clear_less_than_filter()", "clear_xor_filter()", "read_section()"}));
}

}  // namespace
}  // namespace testing
}  // namespace tessarine
