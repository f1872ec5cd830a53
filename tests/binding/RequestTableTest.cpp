// Every request through the real sockets to the recording facades: the
// facade operation it must cause, with its values, and the answer's fields.
// Whether a request is answered, and in which shape, is read from the
// protocol description.
#include <cstring>

#include "BridgeTest.h"
#include "tessarine/TextField.h"
#include "tessarine/protocol/Requests.h"

namespace tessarine {
namespace testing {
namespace {

using Ints = std::vector<std::pair<std::size_t, int>>;
using Bytes = std::vector<unsigned char>;

struct Row {
    message request;
    std::string call;
    Ints answer;  // fields of the answer (of the first item of a list)
    std::pair<std::size_t, std::string> text;
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

class RequestTableTest : public BridgeTest {
protected:
    void SetUp() override {
        auto& v = fakes.video;
        v.mainBounds = {{1, 2, 3, 4}};
        v.openResult = v.playResult = true;
        v.openedHandle = 55;
        v.duration = 103, v.currentTime = 104, v.setTimeResult = 105, v.mediaBoundsResult = 110;
        v.mediaBounds = {{11, 12, 13, 14}};
        v.language3 = "lang3", v.language5 = "lang5", v.languages = {"a", "b"};
        v.rates = {{109, 110, 111, 112, 113, 114, 115, 116}};
        fakes.property.value = "value-of-k";
        fakes.property.properties = {{"n1", "v1"}};
        fakes.tuner.transportStreamId = 120;
        fakes.tuner.ids = {121};
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
        BridgeTest::SetUp();
    }

    // The calls all facades received while `request` was handled, and its answer.
    std::vector<std::string> run(const message& request, std::optional<message>& answer) {
        std::vector<CallLog*> logs = {&fakes.video.log, &fakes.property.log, &fakes.si.log,
                                      &fakes.carousel.log, &fakes.tuner.log};
        std::vector<std::size_t> before;
        for (CallLog* log : logs) before.push_back(log->count());
        const protocol::Request* kind = protocol::findRequest(request.type, request.code);
        const auto shape = kind ? kind->answer.shape : protocol::AnswerShape::None;
        if (shape == protocol::AnswerShape::None) {
            EXPECT_TRUE(control->send(request));
            fence();
        } else if (shape == protocol::AnswerShape::InPlace) {
            answer = ask(request);
        } else {
            const auto items = askList(request);
            if (!items.empty()) answer = items.front();
        }
        std::vector<std::string> calls;
        for (std::size_t i = 0; i < logs.size(); ++i) {
            const auto all = logs[i]->calls();
            calls.insert(calls.end(), all.begin() + static_cast<long>(before[i]), all.end());
        }
        return calls;
    }

    void check(const std::vector<Row>& rows) {
        for (const Row& row : rows) {
            std::optional<message> answer;
            const std::string label = std::to_string(row.request.type) + "/" + std::to_string(row.request.code);
            EXPECT_EQ(run(row.request, answer), std::vector<std::string>{row.call}) << label;
            if (row.answer.empty() && row.text.second.empty()) continue;
            ASSERT_TRUE(answer) << label;
            for (const auto& [at, value] : row.answer) {
                EXPECT_EQ(answer->get<std::int32_t>(at), value) << label << " @" << at;
            }
            if (!row.text.second.empty()) {
                EXPECT_EQ(readText(*answer, row.text.first), row.text.second) << label;
            }
        }
    }
};

TEST_F(RequestTableTest, VideoAndAudioRequestsReachTheirOperationsWithTheirValues) {
    std::vector<Row> rows = {
        {rec(MSG_VIDEO, 0, {{12, 10}, {16, 20}, {20, 30}, {24, 40}}), "setMainVideoBounds(10, 20, 30, 40)", {}, {}},
        {rec(MSG_VIDEO, 1), "getMainVideoBounds()", {{12, 1}, {16, 2}, {20, 3}, {24, 4}}, {}},
        {rec(MSG_VIDEO, 2), "reset()", {}, {}},
        {rec(MSG_VIDEO, 3), "getLanguage3()", {}, {12, "lang3"}},
        {rec(MSG_VIDEO, 4), "getLanguages()", {}, {12, "a"}},
        {rec(MSG_VIDEO, 5), "getLanguage5()", {}, {12, "lang5"}},
        {rec(MSG_VIDEO, 6, {}, {12, "six"}), callText("setText6", std::string("six")), {}, {}},
        {byte(MSG_VIDEO, 7, 12), "setFlag7(true)", {}, {}},
        {byte(MSG_VIDEO, 8, 12), "setFlag8(true)", {}, {}},
        {rec(MSG_VIDEO, 18, {{12, 5}, {16, 6}, {20, 7}, {24, 8}}), "updateGraphicsRegion(5, 6, 7, 8)", {}, {}},
        {level(MSG_AUDIO, 0, 0.1), callText("setSoundLevel", 0.1), {}, {}},
        {level(MSG_AUDIO, 1, -1.0 / 3.0), callText("setBalanceLevel", -1.0 / 3.0), {}, {}},
        {level(MSG_AUDIO, 2, 1e308), callText("setBassLevel", 1e308), {}, {}},
        {level(MSG_AUDIO, 3, -0.0), callText("setTrebleLevel", -0.0), {}, {}},
        {byte(MSG_AUDIO, 4, 16), "setMute(true)", {}, {}},
    };
    for (int code = 9; code <= 16; ++code)
        rows.push_back({rec(MSG_VIDEO, code), "getRate" + std::to_string(code) + "()", {{12, 100 + code}}, {}});
    check(rows);
    fakes.video.initCrop[0] = {1, 2, 3, 4};
    fakes.video.initCrop[1] = {5, 6, 7, 8};
    ipcutil::Rectangle_t first{}, second{};
    adapter->getInitCropValue(&first, &second);
    EXPECT_EQ((std::vector<int>{first.x, first.height, second.x, second.height}), (std::vector<int>{1, 4, 5, 8}));
}

TEST_F(RequestTableTest, MediaRequestsReachTheirOperationsWithTheHandle) {
    check({
        {rec(MSG_MEDIA, 0, {{12, 1}}, {16, "loc"}), callText("open", std::string("loc"), 1), {{12, 55}}, {}},
        {rec(MSG_MEDIA, 1, {{12, 2}}), "getDuration(2)", {{16, 103}}, {}},
        {rec(MSG_MEDIA, 2, {{12, 2}}), "getCurrentTime(2)", {{16, 104}}, {}},
        {rec(MSG_MEDIA, 3, {{12, 2}, {16, 3}, {20, 4}}), "setCurrentTime(2, 3, 4)", {{16, 105}}, {}},
        {rec(MSG_MEDIA, 4, {{12, 2}}), callText("addMediaListener", 2, base<middlewarefacade::MediaListener>()), {},
         {}},
        {rec(MSG_MEDIA, 5, {{12, 2}}), "play(2)", {}, {}},
        {rec(MSG_MEDIA, 6, {{12, 2}}), "close(2)", {}, {}},
        {rec(MSG_MEDIA, 7, {{12, 2}}), "stop(2)", {}, {}},
        {rec(MSG_MEDIA, 8, {{12, 2}, {16, 5}, {20, 6}, {24, 7}, {28, 8}}), "setMediaBounds(2, 5, 6, 7, 8)",
         {{16, 110}}, {}},
        {rec(MSG_MEDIA, 9, {{12, 2}}), "getMediaBounds(2)", {{16, 11}, {20, 12}, {24, 13}, {28, 14}}, {}},
        {byte(MSG_MEDIA, 10, 16), "setMediaFreeze(2, true)", {}, {}},
        {level(MSG_MEDIA, 11, 0.1), callText("setMediaBalanceLevel", 2, 0.1), {}, {}},
        {level(MSG_MEDIA, 12, -1.0 / 3.0), callText("setMediaSoundLevel", 2, -1.0 / 3.0), {}, {}},
        {byte(MSG_MEDIA, 13, 16), "setMediaMute(2, true)", {}, {}},
        {level(MSG_MEDIA, 14, 7.0), callText("setMediaBassLevel", 2, 7.0), {}, {}},
        {level(MSG_MEDIA, 15, 7.5), callText("setMediaTrebleLevel", 2, 7.5), {}, {}},
    });
}

TEST_F(RequestTableTest, PropertyTunerAndCarouselRequestsReachTheirOperations) {
    const std::string k = "k";
    check({
        {rec(MSG_PROPERTY, 0, {}, {12, k}), callText("getProperty", k), {}, {267, "value-of-k"}},
        {rec(MSG_PROPERTY, 1), "getProperties()", {}, {267, "v1"}},
        {rec(MSG_PROPERTY, 3, {}, {12, k}), callText("removeProperty", k), {}, {}},
        {rec(MSG_TUNER, 0), "getCurrentTransportStreamID()", {{12, 120}}, {}},
        {rec(MSG_TUNER, 1, {{12, 9}}), "getIds1(9)", {{12, 121}}, {}},
        {rec(MSG_TUNER, 3, {{12, 9}}), "getIds3(9)", {{12, 121}}, {}},
        {rec(MSG_TUNER, 4, {{12, 9}}), "getIds4(9)", {{12, 121}}, {}},
        {rec(MSG_CAROUSEL, 0, {}, {12, "c"}), callText("mount", std::string("c")), {}, {267, "mounted"}},
        {rec(MSG_CAROUSEL, 1, {}, {12, "c"}), callText("umount", std::string("c")), {}, {}},
    });
    message set = rec(MSG_PROPERTY, 2, {}, {12, k});
    writeTextField(set, 267, "v");
    check({{set, callText("setProperty", k, std::string("v")), {}, {}}});
    EXPECT_EQ(ask(rec(MSG_VERSION, 3)).bytes()[12], 0x43);
    EXPECT_EQ(fakes.version.log.calls().back(), "checkVersionFlag(3)");
}

TEST_F(RequestTableTest, ServiceInformationRequestsReadTheHostsRecordsFieldByField) {
    check({
        {rec(MSG_SI, 0), "getSICodingFormat()", {}, {12, "fmt"}},
        {rec(MSG_SI, 2), "getProgramEvent()", {{12, 61}, {16, 62}, {20, 63}, {24, 64}, {32, 65}, {36, 66}, {40, 67}},
         {299, "t1"}},
        {rec(MSG_SI, 1), "getProgramEvents()", {{12, 61}, {40, 67}}, {44, "t0"}},
        {rec(MSG_SI, 4), "getCASystemIds()", {{12, 91}}, {}},
        {rec(MSG_SI, 5), "isProtectedService()", {{12, 1}}, {}},
        {rec(MSG_SI, 6), "getServices()", {{12, 51}, {16, 52}, {20, 53}, {24, 54}, {28, 55}}, {36, "svc"}},
        {rec(MSG_SI, 7), "getCurrentService()", {{12, 56}}, {}},
        {rec(MSG_SI, 8), "getServiceDescription()", {}, {12, "desc"}},
        {rec(MSG_SI, 10, {{12, 1}}), "getServiceComponents(1)", {{12, 71}, {32, 76}}, {}},
        {rec(MSG_SI, 12), "getTransportStream()", {{12, 41}, {16, 42}, {20, 43}, {28, 44}, {32, 2}}, {}},
        {rec(MSG_SI, 14), "getNetwork()", {{12, 31}}, {16, "net"}},
        {rec(MSG_SI, 16, {{12, 1}}), "getPMTs(1)", {{12, 81}, {24, 84}}, {}},
        {rec(MSG_SI, 3, {{12, 4}, {20, 5}, {24, 6}}), "getProgramEventDescriptors(5, 6)", {}, {}},
        {rec(MSG_SI, 9, {{12, 4}, {20, 7}, {24, 8}}), "getProgramEventDescriptors(7, 8)", {}, {}},
        {rec(MSG_SI, 11, {{12, 4}}), "getServiceComponentDescriptors(4)", {}, {}},
        {rec(MSG_SI, 13, {{12, 4}}), "getTransportStreamDescriptors(4)", {}, {}},
        {rec(MSG_SI, 15), "getNetworkDescriptors()", {}, {}},
    });
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
