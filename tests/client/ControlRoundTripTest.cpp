// Every request family through the client against the real hub: values
// arrive exactly, both ways.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>

#include "ClientBridgeFixture.h"
#include "support/EventLog.h"

namespace tessarine {
namespace {

using client::Rectangle;
using Calls = std::vector<std::string>;
using testing::ScriptedListener;
constexpr auto hexOf = ScriptedListener::hexOf;

class ControlRoundTripTest : public testing::ClientBridgeFixture {
protected:
    // The listener's calls since the last look. Commands have no answer: one
    // answered call afterwards (left out) proves that the bridge has handled
    // everything sent before it.
    Calls callsSinceLastLook() {
        EXPECT_TRUE(client->checkVersion(0));
        const auto all = stub.calls.snapshot();
        Calls fresh(all.begin() + static_cast<long>(seen), all.end() - 1);
        seen = all.size();
        return fresh;
    }
    std::size_t seen = 0;

    // Members, so that they outlive the client (TearDown destroys the client).
    testing::EventLog<client::DownloadComplete> downloads;
    testing::EventLog<client::GraphicsSettings> graphics;
    testing::EventLog<client::DsmccCommand> commands;
    testing::EventLog<std::int32_t> ends;
};

TEST_F(ControlRoundTripTest, VideoAndGraphics) {
    stub.bounds = {0, -7, 1920, 1080};
    stub.text = "por";
    stub.languages = {"eng", std::string(300, 'L'), ""};
    stub.number = 112;

    EXPECT_EQ(*client->videoBounds(), (Rectangle{0, -7, 1920, 1080}));
    EXPECT_EQ(*client->videoLanguage(3), "por");
    EXPECT_EQ(*client->videoLanguage(5), "por");
    auto languages = client->videoLanguages();
    ASSERT_TRUE(languages) << languages.error().message();
    EXPECT_EQ(*languages, (std::vector<std::string>{"eng", std::string(254, 'L'), ""}));
    EXPECT_EQ(client->videoRate(12)->value_or(0), 112);

    ASSERT_TRUE(client->setVideoBounds({10, 20, -30, 40}));
    ASSERT_TRUE(client->resetVideo());
    ASSERT_TRUE(client->setVideoText(std::string(254, 't')));
    ASSERT_TRUE(client->setVideoFlag(7, true));
    ASSERT_TRUE(client->setVideoFlag(8, false));
    ASSERT_TRUE(client->applyGraphicsSettings());
    ASSERT_TRUE(client->updateGraphicsRegion({1, 2, 3, 4}));
    EXPECT_EQ(callsSinceLastLook(),
              (Calls{"getMainVideoBounds", "getVideoLanguage 3", "getVideoLanguage 5", "getVideoLanguages",
                     "getVideoProperty 12", "setVideoProperty 0 10 20 -30 40", "setVideoProperty 2",
                     "setVideoProperty 6 " + std::string(254, 't'), "setVideoProperty 7 1", "setVideoProperty 8 0",
                     "setVideoProperty 17", "updateGraphicsRegion 1 2 3 4"}));

    stub.number = -1;
    stub.bounds.height = -1;
    EXPECT_FALSE(client->videoRate(9)->has_value());
    EXPECT_EQ(client->videoBounds()->height, -1);
}

TEST_F(ControlRoundTripTest, PropertiesAudioTunerCarouselAndVersion) {
    system_property a{}, b{};
    writeTextField(a.name, "a.name");
    writeTextField(a.value, std::string(300, 'x'));
    writeTextField(b.name, "b");
    stub.properties = {a, b};
    stub.ids = {5, -9, 0};

    stub.text = "v";
    EXPECT_EQ(client->systemProperty("key")->value_or(""), "v");
    auto properties = client->systemProperties();
    ASSERT_TRUE(properties) << properties.error().message();
    ASSERT_EQ(properties->size(), 2u);
    EXPECT_EQ((*properties)[0].name, "a.name");
    EXPECT_EQ((*properties)[0].value, std::string(254, 'x'));
    EXPECT_EQ((*properties)[1].value, "");
    stub.number = 0x7FFFFFFF;
    EXPECT_EQ(client->currentTransportStreamId()->value_or(0), 0x7FFFFFFF);
    EXPECT_EQ(*client->tunerIds(2, 77), (std::vector<std::int32_t>{5, -9, 0}));
    stub.text = "/carousel/oc1";
    EXPECT_EQ(client->mountCarousel("oc1")->value_or(""), "/carousel/oc1");
    stub.number = 7;
    EXPECT_EQ(*client->checkVersion(3), 7);

    const double sound = 0.1, balance = -0.0, bass = std::numeric_limits<double>::denorm_min(), treble = 1e308;
    ASSERT_TRUE(client->setSystemProperty("n", "w"));
    ASSERT_TRUE(client->removeSystemProperty("n"));
    ASSERT_TRUE(client->setSoundLevel(sound));
    ASSERT_TRUE(client->setBalanceLevel(balance));
    ASSERT_TRUE(client->setBassLevel(bass));
    ASSERT_TRUE(client->setTrebleLevel(treble));
    ASSERT_TRUE(client->setMute(true));
    ASSERT_TRUE(client->unmountCarousel("oc1"));
    ASSERT_TRUE(client->addCarouselListener());
    ASSERT_TRUE(client->removeCarouselListener());
    EXPECT_EQ(callsSinceLastLook(),
              (Calls{"getSystemProperty key", "getSystemProperties", "getCurrentTransportStreamID", "getAllIDs 2 77",
                     "mountCarousel oc1", "checkVersionFlag 3", "setSystemProperty n w", "removeSystemProperty n",
                     "setVideoAudio 0 " + hexOf(sound), "setVideoAudio 1 " + hexOf(balance),
                     "setVideoAudio 2 " + hexOf(bass), "setVideoAudio 3 " + hexOf(treble), "setVideoAudio 4 1",
                     "umountCarousel oc1", "addCarouselListener", "removeCarouselListener"}));

    stub.text.clear();
    stub.number = 0;
    EXPECT_FALSE(client->systemProperty("key")->has_value());
    EXPECT_FALSE(client->mountCarousel("oc1")->has_value());
    EXPECT_EQ(*client->checkVersion(3), 0);
}

TEST_F(ControlRoundTripTest, MediaPlayer) {
    stub.openedHandle = 41;
    stub.yes = true;
    stub.bounds = {5, 6, 7, 8};
    const std::string locator = "file:///" + std::string(1935, 'm');  // 1943 characters, the most a record holds

    EXPECT_EQ(client->openMedia(locator)->value_or(0), 41);
    stub.number = 90000;
    EXPECT_EQ(client->mediaDuration(41)->value_or(0), 90000);
    stub.number = 0;
    EXPECT_EQ(client->mediaCurrentTime(41)->value_or(-5), 0);
    EXPECT_EQ(client->setMediaBounds(41, {1, 2, 3, 4})->value_or(-5), 0);
    stub.number = 1;
    EXPECT_EQ(client->setMediaCurrentTime(41, -3, 9)->value_or(0), 1);
    EXPECT_TRUE(*client->playMedia(41));
    EXPECT_EQ(*client->mediaBounds(41), (Rectangle{5, 6, 7, 8}));
    ASSERT_TRUE(client->addMediaListener(41));
    ASSERT_TRUE(client->setMediaFreeze(41, true));
    ASSERT_TRUE(client->setMediaMute(41, false));
    ASSERT_TRUE(client->setMediaBalanceLevel(41, 0.5));
    ASSERT_TRUE(client->setMediaSoundLevel(41, 1.0));
    ASSERT_TRUE(client->setMediaBassLevel(41, -2.25));
    ASSERT_TRUE(client->setMediaTrebleLevel(41, std::nan("")));
    ASSERT_TRUE(client->stopMedia(41));
    ASSERT_TRUE(client->closeMedia(41));
    EXPECT_EQ(callsSinceLastLook(),
              (Calls{"open " + locator, "getDuration 41", "getCurrentTime 41", "setMediaBounds 41 1 2 3 4",
                     "setCurrentTime 41 -3 9", "play 41", "getMediaBounds 41", "addMediaListener 41",
                     "setMediaFreeze 41 1", "setMediaMute 41 0", "setMediaBalanceLevel 41 3fe0000000000000",
                     "setMediaSoundLevel 41 3ff0000000000000", "setMediaBassLevel 41 " + hexOf(-2.25),
                     "setMediaTrebleLevel 41 " + hexOf(std::nan("")), "stop 41", "close 41"}));

    stub.openedHandle = testing::ScriptedListener::KEEP;
    stub.number = -1;
    stub.yes = false;
    stub.bounds.x = -1;
    EXPECT_FALSE(client->openMedia("x")->has_value());
    EXPECT_FALSE(client->mediaDuration(41)->has_value());
    EXPECT_FALSE(*client->playMedia(41));
    EXPECT_EQ(client->mediaBounds(41)->x, -1);
}

class ServiceInformationTest : public ControlRoundTripTest {
protected:
    void SetUp() override {
        ControlRoundTripTest::SetUp();
        program_event first;
        first.value0 = 1, first.value1 = 2, first.value6 = -7;
        first.text0 = std::string(300, 'a');
        first.text2 = "third";
        first.bytes1 = {0, 255, 7};
        first.strings0 = {"", std::string(1000, 'q')};
        program_event second;
        second.value1 = 9;
        second.strings2 = {"z"};
        stub.events = {first, second};
        stub.event = first;
        service s;
        s.value0 = 1, s.value4 = 0x1234;
        s.text0 = "channel";
        stub.services = {s, service{}};
        stub.components = {service_component{1, 2, 3, 4, 5, 6}};
        d1.id = 0x48;
        d1.data = {0x48, 0x01, 0xFF};
        d2.id = 0x4d;
        stub.descriptors = {d1, d2};
        stub.pmts = {pmt{10, 20, 30, 40}, pmt{-1, 0, 0, 1}};
        stub.ids = {0x0B00};
        stub.number = 3;
        stub.yes = true;
        stub.stream = transport_stream{1, 2, 3, 4, 3};
        stub.net.value0 = 99;
        stub.net.text0 = "net";
    }
    descriptor d1, d2;
};

TEST_F(ServiceInformationTest, RecordsAndListsArriveWhole) {
    auto events = client->programEvents();
    ASSERT_TRUE(events) << events.error().message();
    ASSERT_EQ(events->size(), 2u);
    const auto& e = (*events)[0];
    EXPECT_EQ(std::vector<int>({e.value0, e.value1, e.value6}), std::vector<int>({1, 2, -7}));
    EXPECT_EQ(e.text0, std::string(254, 'a'));
    EXPECT_EQ(e.text2, "third");
    EXPECT_EQ(e.bytes1, (std::vector<std::uint8_t>{0, 255, 7}));
    EXPECT_EQ(e.strings0, (std::vector<std::string>{"", std::string(1000, 'q')}));
    EXPECT_EQ((*events)[1].strings2, std::vector<std::string>{"z"});
    auto current = client->programEvent();
    ASSERT_TRUE(current && current->has_value());
    EXPECT_EQ((*current)->strings0, e.strings0);

    auto services = client->services();
    ASSERT_TRUE(services);
    ASSERT_EQ(services->size(), 2u);
    EXPECT_EQ((*services)[0].value4, 0x1234);
    EXPECT_EQ((*services)[0].text0, "channel");
    EXPECT_EQ(client->serviceComponents(8)->at(0).value5, 6);
    EXPECT_EQ(client->pmts(8)->at(1).value0, -1);
    EXPECT_EQ(*client->caSystemIds(), std::vector<std::int32_t>{0x0B00});
    EXPECT_EQ(client->currentService()->value_or(0), 3);
    EXPECT_TRUE(*client->isProtectedService());
    stub.text = "ISO-8859-15";
    EXPECT_EQ(*client->siCodingFormat(), "ISO-8859-15");
    stub.text = std::string(300, 'd');
    EXPECT_EQ(*client->serviceDescription(), std::string(254, 'd'));
    EXPECT_EQ((*client->transportStream())->value4, 3);
    EXPECT_EQ((*client->network())->text0, "net");

    EXPECT_EQ(callsSinceLastLook(),
              (Calls{"getProgramEvents", "getProgramEvent", "getServices", "getServiceComponents 8", "getPMTs 8",
                     "getCASystemIds", "getCurrentService", "isProtectedService", "getSICodingFormat",
                     "getServiceDescription", "getTransportStream", "getNetwork"}));
}

TEST_F(ServiceInformationTest, DescriptorsArriveWithTheirBytesAndEmptyAnswersMeanNothing) {
    auto eventDescriptors = client->programEventDescriptors(4, 2);
    ASSERT_TRUE(eventDescriptors) << eventDescriptors.error().message();
    ASSERT_EQ(eventDescriptors->size(), 2u);
    EXPECT_EQ((*eventDescriptors)[0].id, 0x48);
    EXPECT_EQ((*eventDescriptors)[0].data, (std::vector<std::uint8_t>{0x48, 0x01, 0xFF}));
    EXPECT_EQ((*eventDescriptors)[1].id, 0x4d);
    EXPECT_TRUE((*eventDescriptors)[1].data.empty());
    EXPECT_EQ(client->serviceComponentDescriptors(11)->at(1).id, 0x4d);
    EXPECT_EQ(client->transportStreamDescriptors(13)->at(0).data, d1.data);
    EXPECT_EQ(client->networkDescriptors()->at(0).data, d1.data);
    EXPECT_EQ(callsSinceLastLook(),
              (Calls{"getProgramEventDescriptors 4 2", "getServiceComponentDescriptors 11",
                     "getTransportStreamDescriptors 13", "getNetworkDescriptors"}));

    // Nothing to tell.
    stub.events.clear();
    stub.event.value1 = -1;
    stub.stream.value1 = -1;
    stub.net.value0 = -1;
    stub.number = -1;
    stub.descriptors.clear();
    EXPECT_TRUE(client->programEvents()->empty());
    EXPECT_FALSE(client->programEvent()->has_value());
    EXPECT_FALSE(client->transportStream()->has_value());
    EXPECT_FALSE(client->network()->has_value());
    EXPECT_FALSE(client->currentService()->has_value());
    EXPECT_TRUE(client->networkDescriptors()->empty());
}

TEST_F(ControlRoundTripTest, EventsFromHostThreads) {
    client->onDownloadComplete([&](const client::DownloadComplete& d) { downloads.push(d); });
    client->onGraphicsSettings([&](const client::GraphicsSettings& g) { graphics.push(g); });
    client->onDsmccCommand([&](const client::DsmccCommand& c) { commands.push(c); });
    client->onEndOfMedia([&](const client::EndOfMedia& e) { ends.push(e.handle); });
    client->onAppStateRequest([](std::int32_t state) { return static_cast<std::uint8_t>(state * 2); });
    ASSERT_TRUE(client->connect());
    // The hub reports a client once its thread has accepted it.
    ASSERT_TRUE(client->checkVersion(0));

    std::thread host([&] {
        hub->downloadComplete(std::string(300, 'f'), "second");
        hub->changeGraphicsSettings({1, 2, 3, 4}, {-5, 6, 1920, 1080});
        hub->endOfMedia(17);
        hub->sendDsmCCCommand({7, -2, 0xFE, std::string(4000, 'x')});
        hub->sendDsmCCCommand({8, 0, 0, ""});
        EXPECT_EQ(hub->setApplicationState(21), 42);
    });
    host.join();
    ASSERT_TRUE(downloads.waitFor(1) && graphics.waitFor(1) && commands.waitFor(2) && ends.waitFor(1));
    EXPECT_EQ(downloads.snapshot()[0].first, std::string(254, 'f'));
    EXPECT_EQ(downloads.snapshot()[0].second, "second");
    EXPECT_EQ(graphics.snapshot()[0].second, (Rectangle{-5, 6, 1920, 1080}));
    EXPECT_EQ(ends.snapshot()[0], 17);
    const auto command = commands.snapshot()[0];
    EXPECT_EQ(command.code, 7);
    EXPECT_EQ(command.value, -2);
    EXPECT_EQ(command.byte, 0xFE);
    EXPECT_EQ(command.text, std::string(4000, 'x'));
    EXPECT_EQ(commands.snapshot()[1].code, 8);
    EXPECT_EQ(commands.snapshot()[1].text, "");
}

}  // namespace
}  // namespace tessarine
