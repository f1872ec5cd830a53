// Notices that the host raises on its own thread go out through the
// listeners the binding registered, each as its record. Many at once from
// many threads, among answers, is the client interleaving test's case.
#include <thread>

#include "BridgeTest.h"

namespace tessarine {
namespace testing {
namespace {

constexpr std::size_t DSMCC_TEXT_AREA = 25;

TEST_F(BridgeTest, EachHostNoticeGoesOutThroughTheListenerTheBindingRegistered) {
    // Registrations that only the client's requests make.
    control->send(request(MSG_CAROUSEL, 3));
    control->send(request(MSG_MEDIA, 4, [](message& r) { r.put<std::int32_t>(12, 7); }));
    fence();
    auto* graphics = fakes.video.graphicsListener.load();
    auto* carousel = fakes.carousel.listener.load();
    auto* media = fakes.video.mediaListener.load();
    auto* commands = fakes.dsmcc.listener.load();
    ASSERT_TRUE(graphics && carousel && media && commands);
    const std::string command(3000, 'c');
    std::thread([=] {
        graphics->graphicsSettingsChanged({0, 0, 1280, 720}, {3, 0, 1920, 1080});
        carousel->downloadComplete("one");
        carousel->downloadComplete("two", std::string(300, 's'));
        commands->commandReceived({5, 0x1122334455667788LL, 0x99, command});
        media->endOfMedia(7);
    }).join();

    std::vector<message> records;
    for (int i = 0; i < 7; ++i) {
        auto record = control->receive();
        ASSERT_TRUE(record) << "record " << i;
        records.push_back(*record);
    }
    std::vector<std::pair<int, int>> kinds;
    for (const message& r : records) kinds.emplace_back(r.type, r.code);
    EXPECT_EQ(kinds, (std::vector<std::pair<int, int>>{
                         {MSG_VIDEO, 17}, {MSG_CAROUSEL, 2}, {MSG_CAROUSEL, 2}, {MSG_LIST_HEADER, 2}, {MSG_DSMCC, 5},
                         {MSG_DSMCC, 5}, {MSG_MEDIA, 16}}));
    EXPECT_EQ(records[0].get<std::int32_t>(20), 1280);
    EXPECT_EQ(records[0].get<std::int32_t>(28), 3);
    EXPECT_EQ(text(records[1], 12) + "|" + text(records[1], 267), "one|");
    EXPECT_EQ(text(records[2], 267), std::string(254, 's'));
    EXPECT_EQ(records[4].get<std::int64_t>(16), 0x1122334455667788LL);
    EXPECT_EQ(records[5].bytes()[24], 0x99);
    EXPECT_EQ(text(records[4], DSMCC_TEXT_AREA) + text(records[5], DSMCC_TEXT_AREA), command);
    EXPECT_EQ(records[6].get<std::int32_t>(12), 7);
}

}  // namespace
}  // namespace testing
}  // namespace tessarine
