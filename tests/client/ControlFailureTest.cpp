// The control client when the bridge is absent, silent, gone mid-answer or
// sends what the protocol does not allow.
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "FakeBridge.h"
#include "support/TempDir.h"
#include "tessarine/client/ControlClient.h"

namespace tessarine {
namespace {

using client::ControlClient;
using client::ErrorCode;
using testing::FakeBridge;
using testing::makeRecord;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class ControlFailureTest : public ::testing::Test {
protected:
    client::ClientOptions options(std::chrono::milliseconds timeout = 2000ms) const {
        client::ClientOptions o;
        o.socketPath = dir.file("ipc.socket");
        o.timeout = timeout;
        return o;
    }
    // The bridge's side: answer one current-service request with `value`.
    static void answerCurrentService(FakeBridge& b, std::int32_t value) {
        auto request = b.receive();
        ASSERT_TRUE(request);
        request->put<std::int32_t>(12, value);
        b.send(*request);
    }

    testing::TempDir dir;
};

TEST_F(ControlFailureTest, WithoutABridgeCallsFailAsNotConnected) {
    ControlClient client(options());
    auto result = client.services();
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code(), ErrorCode::NotConnected);
    EXPECT_FALSE(client.connected());
}

TEST_F(ControlFailureTest, ASilentBridgeTimesOutAndTheNextCallStartsAfresh) {
    FakeBridge bridge(dir.file("ipc.socket"));
    ControlClient client(options(10000ms));
    std::thread server([&] {
        ASSERT_TRUE(bridge.accept());
        ASSERT_TRUE(bridge.receive());
        // No answer; the client must give up and close the connection.
        EXPECT_FALSE(bridge.receive(3000ms));
        ASSERT_TRUE(bridge.accept());
        answerCurrentService(bridge, 12);
    });
    const auto started = Clock::now();
    auto result = client.currentService(300ms);
    const auto elapsed = Clock::now() - started;
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code(), ErrorCode::TimedOut);
    EXPECT_GE(elapsed, 300ms);
    EXPECT_LT(elapsed, 2000ms);  // the per-call limit, not the 10 s default

    auto again = client.currentService();
    ASSERT_TRUE(again) << again.error().message();
    EXPECT_EQ(*again, 12);
    server.join();
}

TEST_F(ControlFailureTest, ARecordCutOffBetweenCallsCannotHoldACallPastItsLimit) {
    FakeBridge bridge(dir.file("ipc.socket"));
    ControlClient client(options());
    std::thread server([&] {
        ASSERT_TRUE(bridge.accept());
        const message event = makeRecord(MSG_MEDIA, 16);
        bridge.sendRaw(event.bytes(), 100);  // the rest never comes
        bridge.receive();                    // until the client gives up
        ASSERT_TRUE(bridge.accept());
        answerCurrentService(bridge, 12);
    });
    ASSERT_TRUE(client.connect());
    std::this_thread::sleep_for(50ms);  // the event thread has begun the record
    auto cut = client.currentService(300ms);
    ASSERT_FALSE(cut);
    EXPECT_EQ(cut.error().code(), ErrorCode::TimedOut);
    auto again = client.currentService();
    ASSERT_TRUE(again) << again.error().message();
    server.join();
}

message header(std::int32_t count) { return makeRecord(MSG_LIST_HEADER, count); }

struct MalformedAnswer {
    const char* name;
    std::function<void(FakeBridge&, const message& request)> answer;
    ErrorCode expected;
};

std::vector<MalformedAnswer> malformedAnswers() {
    return {
        {"huge list count", [](FakeBridge& b, const message&) { b.send(header(0x7fffffff)); },
         ErrorCode::MalformedAnswer},
        {"negative list count", [](FakeBridge& b, const message&) { b.send(header(-4)); },
         ErrorCode::MalformedAnswer},
        {"unknown record type", [](FakeBridge& b, const message&) { b.send(makeRecord(42, 1)); },
         ErrorCode::MalformedAnswer},
        {"answer of another request",
         [](FakeBridge& b, const message&) { b.send(makeRecord(MSG_TUNER, 0)); }, ErrorCode::MalformedAnswer},
        {"foreign item inside a list",
         [](FakeBridge& b, const message&) {
             b.send(header(2));
             b.send(makeRecord(MSG_SI, 1));
             b.send(makeRecord(MSG_SI, 6));
         },
         ErrorCode::MalformedAnswer},
        {"byte list beyond the limit",
         [](FakeBridge& b, const message&) {
             b.send(header(1));
             message item = makeRecord(MSG_SI, 1);
             item.put<std::uint32_t>(12 + 800, 0xFFFFFFF0u);  // byte_count0
             b.send(item);
         },
         ErrorCode::MalformedAnswer},
        {"string count beyond the limit",
         [](FakeBridge& b, const message&) {
             b.send(header(1));
             message item = makeRecord(MSG_SI, 1);
             item.put<std::uint32_t>(12 + 812, 0x40000000u);  // string_count0
             b.send(item);
         },
         ErrorCode::MalformedAnswer},
        {"string length beyond the limit",
         [](FakeBridge& b, const message&) {
             b.send(header(1));
             message item = makeRecord(MSG_SI, 1);
             item.put<std::uint32_t>(12 + 816, 1);  // string_count1
             b.send(item);
             b.sendValue(std::uint32_t{0xFFFFFFFFu});
         },
         ErrorCode::MalformedAnswer},
        {"truncated trailing data",
         [](FakeBridge& b, const message&) {
             b.send(header(1));
             message item = makeRecord(MSG_SI, 1);
             item.put<std::uint32_t>(12 + 800, 100);
             b.send(item);
             b.sendRaw("abc", 3);
             b.dropClient();
         },
         ErrorCode::ConnectionLost},
        {"half a record", [](FakeBridge& b, const message& request) {
             b.sendRaw(request.bytes(), 100);
             b.dropClient();
         },
         ErrorCode::ConnectionLost},
    };
}

// Each bad answer gets a typed error, and the client recovers on the next call.
TEST_F(ControlFailureTest, MalformedAnswersGiveTypedErrorsAndTheClientRecovers) {
    FakeBridge bridge(dir.file("ipc.socket"));
    ControlClient client(options());
    for (const MalformedAnswer& c : malformedAnswers()) {
        SCOPED_TRACE(c.name);
        std::thread server([&] {
            ASSERT_TRUE(bridge.accept());
            auto request = bridge.receive();
            ASSERT_TRUE(request);
            c.answer(bridge, *request);
            // The client gives up on the connection; a new one is served.
            ASSERT_TRUE(bridge.accept());
            answerCurrentService(bridge, 3);
        });
        auto bad = client.programEvents();
        ASSERT_FALSE(bad);
        EXPECT_EQ(bad.error().code(), c.expected) << bad.error().message();
        auto good = client.currentService();
        ASSERT_TRUE(good) << good.error().message();
        EXPECT_EQ(*good, 3);
        server.join();
        client.disconnect();
    }
}

TEST_F(ControlFailureTest, ArgumentsTheWireCannotCarryAreRefusedBeforeSending) {
    ControlClient client(options());  // no bridge: a refusal must come first
    EXPECT_EQ(client.systemProperty(std::string(255, 'n')).error().code(), ErrorCode::InvalidArgument);
    EXPECT_EQ(client.setVideoText(std::string("a\0b", 3)).error().code(), ErrorCode::InvalidArgument);
    EXPECT_EQ(client.openMedia(std::string(1944, 'm')).error().code(), ErrorCode::InvalidArgument);
    EXPECT_EQ(client.videoRate(17).error().code(), ErrorCode::InvalidArgument);
    EXPECT_EQ(client.raw(MSG_SI, 0, std::vector<std::uint8_t>(1949)).error().code(), ErrorCode::InvalidArgument);
    EXPECT_EQ(client.systemProperty(std::string(254, 'n')).error().code(), ErrorCode::NotConnected);
}

}  // namespace
}  // namespace tessarine
