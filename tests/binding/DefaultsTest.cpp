// With every factory returning no facade, each family answers its fixed
// defaults through the socket, and nothing fails.
#include "BridgeTest.h"

namespace tessarine {
namespace testing {
namespace {

std::vector<int> words(const message& record, std::size_t from, int count) {
    std::vector<int> values;
    for (int i = 0; i < count; ++i) values.push_back(record.get<std::int32_t>(from + 4 * static_cast<std::size_t>(i)));
    return values;
}

TEST_F(BridgeWithoutFacadesTest, VideoAnswersDefaultsAndStillLogsTheRegion) {
    EXPECT_EQ(words(ask(request(MSG_VIDEO, 1)), 12, 4), (std::vector<int>{-1, -1, -1, -1}));
    EXPECT_EQ(ask(request(MSG_VIDEO, 12)).get<std::int32_t>(12), -1);
    EXPECT_EQ(text(ask(request(MSG_VIDEO, 3)), 12), "");
    EXPECT_TRUE(askList(request(MSG_VIDEO, 4)).empty());
    for (int code : {0, 2, 6, 7, 8}) control->send(request(MSG_VIDEO, code));
    control->send(request(MSG_AUDIO, 4));

    ::testing::internal::CaptureStdout();
    control->send(request(MSG_VIDEO, 18, [](message& r) {
        r.put<std::int32_t>(12, 0), r.put<std::int32_t>(16, 0), r.put<std::int32_t>(20, 640), r.put<std::int32_t>(24, 360);
    }));
    fence();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), " >>> graphics region update <<< \nregion = {0,0,640,360}\n");

    ipcutil::Rectangle_t first{1, 2, 3, 4}, second{5, 6, 7, 8};
    adapter->getInitCropValue(&first, &second);
    EXPECT_EQ((std::vector<int>{first.x, first.height, second.x, second.height}), (std::vector<int>{1, 4, 5, 8}));
}

TEST_F(BridgeWithoutFacadesTest, PropertyTunerAndCarouselAnswerEmpty) {
    const message property = ask(request(MSG_PROPERTY, 0, [](message& r) { writeTextField(r, 12, "volume"); }));
    EXPECT_EQ(text(property, 12), "volume");
    EXPECT_EQ(text(property, 267), "");
    EXPECT_TRUE(askList(request(MSG_PROPERTY, 1)).empty());
    EXPECT_EQ(ask(request(MSG_TUNER, 0)).get<std::int32_t>(12), -1);
    EXPECT_TRUE(askList(request(MSG_TUNER, 2)).empty());
    EXPECT_EQ(text(ask(request(MSG_CAROUSEL, 0, [](message& r) { writeTextField(r, 12, "c"); })), 267), "");
    for (int code : {1, 3, 4}) control->send(request(MSG_CAROUSEL, code));
    fence();
    EXPECT_EQ(IpcServerManager::getInstance()->getChannelName(1, 2), "");
    EXPECT_EQ(IpcServerManager::getInstance()->getVirtualChannelNumber(1, 2), -1);
}

TEST_F(BridgeWithoutFacadesTest, ServiceInformationAnswersZeroRecordsAndEmptyLists) {
    const message event = ask(request(MSG_SI, 2));
    EXPECT_EQ(program_event::decode(event.bytes() + 12).value1, 0) << "an all-zero event, taken as an answer";
    EXPECT_EQ(program_event::counts(event.bytes() + 12), (std::array<std::uint32_t, 6>{}));
    EXPECT_EQ(transport_stream::decode(ask(request(MSG_SI, 12)).bytes() + 12).value1, 0);
    EXPECT_EQ(network::decode(ask(request(MSG_SI, 14)).bytes() + 12).value0, 0);
    EXPECT_EQ(ask(request(MSG_SI, 7)).get<std::int32_t>(12), -1);
    EXPECT_EQ(ask(request(MSG_SI, 5)).bytes()[12], 0);
    EXPECT_EQ(text(ask(request(MSG_SI, 0)), 12), "");
    EXPECT_EQ(text(ask(request(MSG_SI, 8)), 12), "");
    for (int code : {1, 3, 4, 6, 9, 10, 11, 13, 15, 16})
        EXPECT_TRUE(askList(request(MSG_SI, code)).empty()) << "code " << code;
}

TEST_F(BridgeWithoutFacadesTest, MediaAnswersMinusOneAndFalseAndWritesNoOuts) {
    const auto handle = [](message& r) {
        r.put<std::int32_t>(12, 7);
        for (int i = 0; i < 4; ++i) r.put<std::int32_t>(16 + 4 * static_cast<std::size_t>(i), 100 + i);
    };
    for (int code : {1, 2, 3, 8}) EXPECT_EQ(ask(request(MSG_MEDIA, code, handle)).get<std::int32_t>(16), -1) << code;
    const message opened = ask(request(MSG_MEDIA, 0, handle));
    EXPECT_EQ(opened.get<std::int32_t>(12), 7) << "the handle is not written";
    EXPECT_EQ(opened.bytes()[16], 0);
    EXPECT_EQ(ask(request(MSG_MEDIA, 5, handle)).bytes()[16], 0);
    EXPECT_EQ(words(ask(request(MSG_MEDIA, 9, handle)), 16, 4), (std::vector<int>{100, 101, 102, 103}));
    for (int code : {4, 6, 7, 10, 11, 12, 13, 14, 15}) control->send(request(MSG_MEDIA, code, handle));
    fence();
}

TEST_F(BridgeWithoutFacadesTest, DemuxReadsEmptySectionsAndVersionIsZero) {
    auto demux = connectDemux();
    for (int command : {0, 2, 3, 8, 9, 10, 11, 12, 1}) {
        demux->sendWord(command);
        if (command == 2 || command == 3 || command == 8) demux->sendWord(5);
    }
    demux->sendWord(7), demux->sendWord(1);
    for (int i = 0; i < 3; ++i) demux->sendString({1, 2});
    EXPECT_EQ(demux->readSection(), std::vector<unsigned char>{});
    EXPECT_EQ(ask(request(MSG_VERSION, 1)).bytes()[12], 0);
}

}  // namespace
}  // namespace testing
}  // namespace tessarine
