// The control client against a scripted bridge: events among answers, lists
// whose items look like events, DSM-CC chunks around answers, trailing data.
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

#include "FakeBridge.h"
#include "support/EventLog.h"
#include "support/TempDir.h"
#include "tessarine/TextField.h"
#include "tessarine/client/ControlClient.h"
#include "tessarine/descriptor.h"
#include "tessarine/program_event.h"
#include "tessarine/service.h"

namespace tessarine {
namespace {

using client::ControlClient;
using testing::EventLog;
using testing::FakeBridge;
using testing::makeRecord;
using namespace std::chrono_literals;

message dsmcc(std::int32_t code, const std::string& text) {
    message r = makeRecord(MSG_DSMCC, code);
    r.put<std::int64_t>(16, 0x0102030405060708LL);
    r.put<std::uint8_t>(24, 0xAB);
    std::memcpy(r.bytes() + 25, text.data(), text.size());
    return r;
}

class ControlFramingTest : public ::testing::Test {
protected:
    ControlFramingTest() : bridge(dir.file("ipc.socket")) {
        client.onGraphicsSettings([this](const client::GraphicsSettings& g) { graphics.push(g); });
        client.onDownloadComplete([this](const client::DownloadComplete& d) { downloads.push(d); });
        client.onEndOfMedia([this](const client::EndOfMedia& e) { endsOfMedia.push(e.handle); });
        client.onDsmccCommand([this](const client::DsmccCommand& c) { commands.push(c); });
    }
    client::ClientOptions options() const {
        client::ClientOptions o;
        o.socketPath = dir.file("ipc.socket");
        o.timeout = 3000ms;
        return o;
    }
    // Runs `script` as the bridge's side of one connection.
    template <typename Script>
    void serve(Script script) {
        server = std::thread([this, script] {
            ASSERT_TRUE(bridge.accept());
            script(bridge);
        });
    }
    ~ControlFramingTest() override {
        if (server.joinable()) server.join();
    }

    testing::TempDir dir;
    FakeBridge bridge;
    // The logs outlive the client, whose event thread writes to them.
    EventLog<client::GraphicsSettings> graphics;
    EventLog<client::DownloadComplete> downloads;
    EventLog<std::int32_t> endsOfMedia;
    EventLog<client::DsmccCommand> commands;
    ControlClient client{options()};
    std::thread server;
};

TEST_F(ControlFramingTest, EventsAroundTheAnswerGoToCallbacksAndTheAnswerToTheCall) {
    std::promise<void> answered;
    serve([&](FakeBridge& b) {
        auto request = b.receive();
        ASSERT_TRUE(request);
        EXPECT_EQ(request->type, MSG_SI);
        EXPECT_EQ(request->code, 7);
        message g = makeRecord(MSG_VIDEO, 17);
        for (int i = 0; i < 8; ++i) g.put<std::int32_t>(12 + 4 * i, i + 1);
        b.send(g);
        message d = makeRecord(MSG_CAROUSEL, 2);
        writeTextField(d, FIRST_TEXT_OFFSET, "dsmcc://1");
        writeTextField(d, SECOND_TEXT_OFFSET, "/mnt/c1");
        b.send(d);
        message e = makeRecord(MSG_MEDIA, 16);
        e.put<std::int32_t>(12, 77);
        b.send(e);
        b.send(dsmcc(5, "short"));
        message answer = *request;
        answer.put<std::int32_t>(12, 42);
        b.send(answer);
        // After the call has returned, with no other call to read it: the
        // reader thread must be watching the socket again.
        answered.get_future().wait();
        b.send(makeRecord(MSG_VIDEO, 17));
    });
    auto service = client.currentService();
    answered.set_value();
    ASSERT_TRUE(service) << service.error().message();
    EXPECT_EQ(*service, 42);

    ASSERT_TRUE(graphics.waitFor(2) && downloads.waitFor(1) && endsOfMedia.waitFor(1) && commands.waitFor(1));
    EXPECT_EQ(graphics.snapshot()[0].first, (client::Rectangle{1, 2, 3, 4}));
    EXPECT_EQ(graphics.snapshot()[0].second, (client::Rectangle{5, 6, 7, 8}));
    EXPECT_EQ(downloads.snapshot()[0].first, "dsmcc://1");
    EXPECT_EQ(downloads.snapshot()[0].second, "/mnt/c1");
    EXPECT_EQ(endsOfMedia.snapshot()[0], 77);
    const auto command = commands.snapshot()[0];
    EXPECT_EQ(command.code, 5);
    EXPECT_EQ(command.value, 0x0102030405060708LL);
    EXPECT_EQ(command.byte, 0xAB);
    EXPECT_EQ(command.text, "short");
}

TEST_F(ControlFramingTest, DsmccChunksAroundAListAnswerAreReassembled) {
    const std::string text = std::string(1920, 'a') + std::string(1920, 'b') + "tail";
    serve([&](FakeBridge& b) {
        ASSERT_TRUE(b.receive());
        // The DSM-CC header, then the whole answer, then the chunks.
        b.send(makeRecord(MSG_LIST_HEADER, 3));
        b.send(makeRecord(MSG_LIST_HEADER, 2));
        for (int i = 0; i < 2; ++i) {
            message item = makeRecord(MSG_SI, 6);
            service s;
            s.value0 = 100 + i;
            s.text0 = "service " + std::to_string(i);
            s.encode(item.bytes() + 12);
            b.send(item);
        }
        b.send(dsmcc(9, text.substr(0, 1920)));
        b.send(dsmcc(9, text.substr(1920, 1920)));
        b.send(dsmcc(9, text.substr(3840)));
        // An empty list followed by a one-record command.
        ASSERT_TRUE(b.receive());
        b.send(makeRecord(MSG_LIST_HEADER, 0));
        b.send(dsmcc(10, "single"));
    });
    auto services = client.services();
    ASSERT_TRUE(services) << services.error().message();
    ASSERT_EQ(services->size(), 2u);
    EXPECT_EQ((*services)[1].value0, 101);
    EXPECT_EQ((*services)[1].text0, "service 1");

    auto empty = client.services();
    ASSERT_TRUE(empty) << empty.error().message();
    EXPECT_TRUE(empty->empty());

    ASSERT_TRUE(commands.waitFor(2));
    EXPECT_EQ(commands.snapshot()[0].code, 9);
    EXPECT_EQ(commands.snapshot()[0].text, text);
    EXPECT_EQ(commands.snapshot()[1].text, "single");
}

// Languages keep code = count: 17 items carry the graphics notice's code.
TEST_F(ControlFramingTest, ListItemsThatLookLikeEventsStayInTheirList) {
    serve([](FakeBridge& b) {
        ASSERT_TRUE(b.receive());
        b.send(makeRecord(MSG_LIST_HEADER, 17));
        for (int i = 0; i < 17; ++i) {
            message item = makeRecord(MSG_VIDEO, 17);
            writeTextField(item, FIRST_TEXT_OFFSET, "lang" + std::to_string(i));
            b.send(item);
        }
    });
    auto languages = client.videoLanguages();
    ASSERT_TRUE(languages) << languages.error().message();
    ASSERT_EQ(languages->size(), 17u);
    EXPECT_EQ(languages->back(), "lang16");
    EXPECT_EQ(graphics.size(), 0u);
}

// A list longer than the client's read buffer, arriving in pieces that cut
// records anywhere: every item is read whole, in order.
TEST_F(ControlFramingTest, AListCutAnywhereByTheStreamIsReadWhole) {
    constexpr int ITEMS = 200;  // about 390 KB
    serve([](FakeBridge& b) {
        ASSERT_TRUE(b.receive());
        std::vector<unsigned char> stream;
        const auto append = [&stream](const message& r) { stream.insert(stream.end(), r.bytes(), r.bytes() + MESSAGE_SIZE); };
        append(makeRecord(MSG_LIST_HEADER, ITEMS));
        for (int i = 0; i < ITEMS; ++i) {
            service s;
            s.value0 = i;
            s.text0 = "service " + std::to_string(i);
            message item = makeRecord(MSG_SI, SI_SERVICES);
            s.encode(item.bytes() + SI_ITEM_OFFSET);
            append(item);
        }
        constexpr std::size_t PIECE = 777;
        for (std::size_t at = 0, n = 0; at < stream.size(); at += PIECE, ++n) {
            b.sendRaw(stream.data() + at, std::min(PIECE, stream.size() - at));
            if (n % 40 == 0) std::this_thread::sleep_for(1ms);  // lets the client find a record cut short
        }
    });
    auto services = client.services();
    ASSERT_TRUE(services) << services.error().message();
    ASSERT_EQ(services->size(), static_cast<std::size_t>(ITEMS));
    for (int i = 0; i < ITEMS; ++i) {
        ASSERT_EQ((*services)[i].value0, i);
        ASSERT_EQ((*services)[i].text0, "service " + std::to_string(i));
    }
}

TEST_F(ControlFramingTest, TrailingDataIsReadInStreamOrder) {
    serve([](FakeBridge& b) {
        // Program events: both records first, then each event's data.
        ASSERT_TRUE(b.receive());
        program_event first, second;
        first.value1 = 1;
        first.bytes0 = {1, 2, 3};
        first.bytes2 = {9};
        first.strings1 = {"x", "", "yz"};
        second.value1 = 2;
        second.strings2 = {std::string(300, 's')};
        b.send(makeRecord(MSG_LIST_HEADER, 2));
        for (const auto* e : {&first, &second}) {
            message item = makeRecord(MSG_SI, 1);
            e->encode(item.bytes() + 12);
            b.send(item);
        }
        for (const auto* e : {&first, &second}) {
            for (const auto* bytes : {&e->bytes0, &e->bytes1, &e->bytes2}) b.sendRaw(bytes->data(), bytes->size());
            for (const auto* strings : {&e->strings0, &e->strings1, &e->strings2}) {
                for (const auto& s : *strings) {
                    b.sendValue(static_cast<std::uint32_t>(s.size()));
                    b.sendRaw(s.data(), s.size());
                }
            }
        }
        // Component descriptors: item code 11, each record then its bytes.
        ASSERT_TRUE(b.receive());
        b.send(makeRecord(MSG_LIST_HEADER, 2));
        for (std::uint16_t id : {0x48, 0x4d}) {
            descriptor d;
            d.id = id;
            d.data.assign(id == 0x48 ? 0 : 5, static_cast<unsigned char>(id));
            message item = makeRecord(MSG_SI, 11);
            d.encode(item.bytes() + 12);
            b.send(item);
            b.sendRaw(d.data.data(), d.data.size());
        }
    });
    auto events = client.programEvents();
    ASSERT_TRUE(events) << events.error().message();
    ASSERT_EQ(events->size(), 2u);
    EXPECT_EQ((*events)[0].bytes0, (std::vector<std::uint8_t>{1, 2, 3}));
    EXPECT_EQ((*events)[0].bytes2, (std::vector<std::uint8_t>{9}));
    EXPECT_EQ((*events)[0].strings1, (std::vector<std::string>{"x", "", "yz"}));
    EXPECT_EQ((*events)[1].value1, 2);
    EXPECT_EQ((*events)[1].strings2, (std::vector<std::string>{std::string(300, 's')}));

    auto descriptors = client.serviceComponentDescriptors(4);
    ASSERT_TRUE(descriptors) << descriptors.error().message();
    ASSERT_EQ(descriptors->size(), 2u);
    EXPECT_TRUE((*descriptors)[0].data.empty());
    EXPECT_EQ((*descriptors)[1].id, 0x4d);
    EXPECT_EQ((*descriptors)[1].data, std::vector<std::uint8_t>(5, 0x4d));
}

TEST_F(ControlFramingTest, AppStateRequestsAreAnsweredByTheCallbackOrWithZero) {
    std::promise<void> firstAnswered, callbackSet;
    std::atomic<int> seenState{0};
    std::optional<client::Result<std::optional<std::int32_t>>> nested;
    serve([&](FakeBridge& b) {
        b.send(makeRecord(MSG_APP_STATE, 4));
        auto answer = b.receive();
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->type, MSG_APP_STATE);
        EXPECT_EQ(answer->code, 4);
        EXPECT_EQ(answer->get<std::uint8_t>(12), 0);  // no callback: not handled
        firstAnswered.set_value();
        callbackSet.get_future().wait();
        b.send(makeRecord(MSG_APP_STATE, 6));
        // The callback asks the bridge something before it answers.
        auto nestedRequest = b.receive();
        ASSERT_TRUE(nestedRequest);
        ASSERT_EQ(nestedRequest->type, MSG_SI);
        message current = *nestedRequest;
        current.put<std::int32_t>(12, 31);
        b.send(current);
        answer = b.receive();
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->code, 6);
        EXPECT_EQ(answer->get<std::uint8_t>(12), 0xC6);
    });
    ASSERT_TRUE(client.connect());
    firstAnswered.get_future().wait();
    client.onAppStateRequest([&](std::int32_t state) -> std::uint8_t {
        seenState = state;
        nested = client.currentService();
        return static_cast<std::uint8_t>(0xC0 | state);
    });
    callbackSet.set_value();
    server.join();
    EXPECT_EQ(seenState, 6);
    ASSERT_TRUE(nested && *nested);
    EXPECT_EQ(**nested, 31);
}

// A disconnect while the callback decides still sends its answer.
TEST_F(ControlFramingTest, DisconnectLetsAnApplicationStateAnswerGoOut) {
    std::promise<void> asked;
    client.onAppStateRequest([&](std::int32_t) {
        asked.set_value();
        std::this_thread::sleep_for(100ms);
        return std::uint8_t{5};
    });
    serve([](FakeBridge& b) {
        b.send(makeRecord(MSG_APP_STATE, 2));
        auto answer = b.receive();
        ASSERT_TRUE(answer) << "the answer was lost";
        EXPECT_EQ(answer->get<std::uint8_t>(12), 5);
    });
    ASSERT_TRUE(client.connect());
    asked.get_future().wait();
    client.disconnect();
}

}  // namespace
}  // namespace tessarine
