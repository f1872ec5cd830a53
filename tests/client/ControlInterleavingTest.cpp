// Events from host threads while two threads of one client loop over long
// SI list calls: no call takes an event for its answer, every event reaches
// its callback exactly once.
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

#include "ClientBridgeFixture.h"
#include "support/EventLog.h"

namespace tessarine {
namespace {

constexpr int EVENTS_PER_KIND = 40;
constexpr int CALLS_PER_THREAD = 30;

class ControlInterleavingTest : public testing::ClientBridgeFixture {
protected:
    void SetUp() override {
        ClientBridgeFixture::SetUp();
        // Long answers: many records, and trailing data after each.
        for (int i = 0; i < 60; ++i) {
            program_event e;
            e.value1 = i;
            e.bytes0.assign(static_cast<std::size_t>(i * 7), static_cast<unsigned char>(i));
            e.strings1 = {std::string(static_cast<std::size_t>(i), 's'), ""};
            stub.events.push_back(e);
            descriptor d;
            d.id = static_cast<std::uint16_t>(i);
            d.data.assign(static_cast<std::size_t>(i), static_cast<unsigned char>(i));
            stub.descriptors.push_back(d);
            service s;
            s.value0 = i;
            stub.services.push_back(s);
        }
    }

    // A member, so that it outlives the client (TearDown destroys the client).
    testing::EventLog<std::string> events;
};

TEST_F(ControlInterleavingTest, EventsNeverAnswerCallsAndArriveOnce) {
    client->onEndOfMedia([&](const client::EndOfMedia& e) { events.push("media " + std::to_string(e.handle)); });
    client->onDownloadComplete([&](const client::DownloadComplete& d) { events.push("download " + d.first); });
    client->onDsmccCommand([&](const client::DsmccCommand& c) {
        events.push("dsmcc " + std::to_string(c.code) + " " + std::to_string(c.text.size()));
    });
    client->onGraphicsSettings([&](const client::GraphicsSettings& g) { events.push("graphics " + std::to_string(g.first.x)); });
    ASSERT_TRUE(client->connect());
    ASSERT_TRUE(client->checkVersion(0));  // the hub now knows the client

    std::atomic<int> wrongAnswers{0}, failedCalls{0};
    auto caller = [&](bool events) {
        for (int i = 0; i < CALLS_PER_THREAD; ++i) {
            if (events) {
                auto list = client->programEvents();
                if (!list) { ++failedCalls; continue; }
                if (list->size() != 60 || (*list)[59].bytes0.size() != 59 * 7 || (*list)[59].strings1[0].size() != 59) {
                    ++wrongAnswers;
                }
            } else {
                auto list = client->networkDescriptors();
                auto services = client->services();
                if (!list || !services) { ++failedCalls; continue; }
                if (list->size() != 60 || (*list)[33].data != std::vector<std::uint8_t>(33, 33) || services->size() != 60) {
                    ++wrongAnswers;
                }
            }
        }
    };
    auto host = [&](int kind) {
        for (int i = 0; i < EVENTS_PER_KIND; ++i) {
            switch (kind) {
            case 0: hub->endOfMedia(i); break;
            case 1: hub->downloadComplete(std::to_string(i), ""); break;
            // Chunked commands: a header, then three records, other traffic between.
            case 2: hub->sendDsmCCCommand({i, 0, 0, std::string(3900 + static_cast<std::size_t>(i), 'c')}); break;
            case 3: hub->changeGraphicsSettings({i, 0, 0, 0}, {0, 0, 0, 0}); break;
            }
        }
    };
    std::vector<std::thread> threads;
    threads.emplace_back(caller, true);
    threads.emplace_back(caller, false);
    for (int kind = 0; kind < 4; ++kind) threads.emplace_back(host, kind);
    for (auto& t : threads) t.join();

    EXPECT_EQ(failedCalls, 0);
    EXPECT_EQ(wrongAnswers, 0);
    ASSERT_TRUE(events.waitFor(4 * EVENTS_PER_KIND, std::chrono::milliseconds(10000)));
    const auto seen = events.snapshot();
    const std::multiset<std::string> received(seen.begin(), seen.end());
    for (int i = 0; i < EVENTS_PER_KIND; ++i) {
        for (const std::string& expected :
             {"media " + std::to_string(i), "download " + std::to_string(i),
              "dsmcc " + std::to_string(i) + " " + std::to_string(3900 + i), "graphics " + std::to_string(i)}) {
            EXPECT_EQ(received.count(expected), 1u) << expected;
        }
    }
    EXPECT_EQ(seen.size(), 4u * EVENTS_PER_KIND);
}

}  // namespace
}  // namespace tessarine
