// Notices that the host raises on its own threads reach the client whole,
// while the control thread is busy answering requests.
#include <thread>

#include "BridgeTest.h"

namespace tessarine {
namespace testing {
namespace {

constexpr int ROUNDS = 40;
constexpr std::size_t DSMCC_TEXT_AREA = 25;

std::string commandText(int i) { return std::string(5000, static_cast<char>('a' + i % 26)); }

class HostNoticesTest : public BridgeTest {
protected:
    // The host raises every notice ROUNDS times from its own threads while
    // the application asks version checks.
    void raiseFromHostThreads(std::vector<std::thread>& host) {
        // Registrations that only the client's requests make.
        control->send(request(MSG_CAROUSEL, 3));
        control->send(request(MSG_MEDIA, 4, [](message& r) { r.put<std::int32_t>(12, 7); }));
        fence();
        auto* graphics = fakes.video.graphicsListener.load();
        auto* carousel = fakes.carousel.listener.load();
        auto* media = fakes.video.mediaListener.load();
        auto* commands = fakes.dsmcc.listener.load();
        EXPECT_TRUE(graphics && carousel && media && commands);
        if (!(graphics && carousel && media && commands)) return;
        host.emplace_back([=] {
            for (int i = 0; i < ROUNDS; ++i) graphics->graphicsSettingsChanged({0, 0, 1280, 720}, {i, i, 1920, 1080});
        });
        host.emplace_back([=] {
            for (int i = 0; i < ROUNDS; ++i) {
                carousel->downloadComplete("one/" + std::to_string(i));
                carousel->downloadComplete("two/" + std::to_string(i), std::string(300, 's'));
            }
        });
        host.emplace_back([=] {
            for (int i = 0; i < ROUNDS; ++i) commands->commandReceived({i, 0x1122334455667788LL, 0x99, commandText(i)});
        });
        host.emplace_back([=] {
            for (int i = 0; i < ROUNDS; ++i) media->endOfMedia(i);
        });
        host.emplace_back([=] {
            for (int i = 0; i < ROUNDS; ++i) control->send(request(MSG_VERSION, i));
        });
    }

    void expectWholeTextsInOrder(const std::vector<std::string>& downloads, const std::vector<message>& dsmcc) {
        ASSERT_EQ(downloads.size(), 2u * ROUNDS);
        int one = 0, two = 0;
        for (const auto& download : downloads) {
            if (download.rfind("one/", 0) == 0) {
                EXPECT_EQ(download, "one/" + std::to_string(one++) + "|");
            } else {
                EXPECT_EQ(download, "two/" + std::to_string(two++) + "|" + std::string(254, 's'));
            }
        }
        ASSERT_EQ(dsmcc.size(), 3u * ROUNDS);
        for (int i = 0; i < ROUNDS; ++i) {
            std::string whole;
            for (int part = 0; part < 3; ++part) {
                const message& chunk = dsmcc[static_cast<std::size_t>(3 * i + part)];
                EXPECT_EQ(chunk.code, i);
                EXPECT_EQ(chunk.get<std::int64_t>(16), 0x1122334455667788LL);
                EXPECT_EQ(chunk.bytes()[24], 0x99);
                whole += readTextField(reinterpret_cast<const char*>(chunk.bytes() + DSMCC_TEXT_AREA),
                                       MESSAGE_SIZE - DSMCC_TEXT_AREA);
            }
            EXPECT_EQ(whole, commandText(i)) << "command " << i;
        }
    }
};

TEST_F(HostNoticesTest, HostNoticesArriveWholeWhileRequestsAreServed) {
    std::vector<std::thread> host;
    raiseFromHostThreads(host);
    ASSERT_FALSE(host.empty());
    int graphicsSeen = 0, versionsSeen = 0, endsSeen = 0, headersSeen = 0;
    std::vector<std::string> downloads;
    std::vector<message> dsmcc;
    const std::size_t expected = ROUNDS * (1 + 2 + 1 + 1 + 4);
    for (std::size_t n = 0; n < expected; ++n) {
        auto record = control->receive();
        ASSERT_TRUE(record) << "after " << n << " of " << expected << " records";
        switch (record->type) {
        case MSG_VIDEO:
            ASSERT_EQ(record->code, 17);
            EXPECT_EQ(record->get<std::int32_t>(20), 1280);
            EXPECT_EQ(record->get<std::int32_t>(24), 720);
            EXPECT_EQ(record->get<std::int32_t>(28), graphicsSeen);
            EXPECT_EQ(record->get<std::int32_t>(40), 1080);
            ++graphicsSeen;
            break;
        case MSG_CAROUSEL:
            ASSERT_EQ(record->code, 2);
            downloads.push_back(text(*record, 12) + "|" + text(*record, 267));
            break;
        case MSG_MEDIA:
            EXPECT_EQ(record->code, 16);
            EXPECT_EQ(record->get<std::int32_t>(12), endsSeen++);
            break;
        case MSG_VERSION: EXPECT_EQ(record->code, versionsSeen++); break;
        case MSG_LIST_HEADER:
            EXPECT_EQ(record->code, 3) << "5000 characters go in three chunks";
            ++headersSeen;
            break;
        case MSG_DSMCC: dsmcc.push_back(*record); break;
        default: FAIL() << "unexpected record type " << record->type;
        }
    }
    for (auto& thread : host) thread.join();
    EXPECT_EQ(graphicsSeen, ROUNDS);
    EXPECT_EQ(versionsSeen, ROUNDS);
    EXPECT_EQ(endsSeen, ROUNDS);
    EXPECT_EQ(headersSeen, ROUNDS);
    expectWholeTextsInOrder(downloads, dsmcc);
}

}  // namespace
}  // namespace testing
}  // namespace tessarine
