#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <thread>

#include "sim/Console.h"
#include "sim/Simulator.h"
#include "support/EventLog.h"

namespace tessarine {
namespace sim {
namespace {

using namespace std::chrono_literals;
using testing::EventLog;

// Stands in for the bridge: records every notice the simulator raises.
class RecordingBridge : public middlewarefacade::MediaListener,
                        public middlewarefacade::CarouselListener,
                        public middlewarefacade::DsmCCCommandListener,
                        public middlewarefacade::GraphicsSettingsListener {
public:
    void endOfMedia(int handle) override { log.push("eom " + std::to_string(handle)); }
    void downloadComplete(std::string first) override { log.push("download " + first); }
    void downloadComplete(std::string first, std::string second) override { log.push("download " + first + " " + second); }
    void commandReceived(const ipcutil::DsmCCCommand_t& c) override {
        log.push("dsmcc " + std::to_string(c.commandCode) + " " + std::to_string(c.commandValue) + " " +
                 std::to_string(c.commandByte) + " " + c.commandText);
    }
    void graphicsSettingsChanged(ipcutil::Rectangle_t a, ipcutil::Rectangle_t b) override {
        log.push("graphics " + std::to_string(a.width) + " " + std::to_string(b.width));
    }
    EventLog<std::string> log;
};

Scenario scenarioFrom(const std::string& text) {
    std::vector<ScenarioProblem> problems;
    Scenario scenario = Scenario::parse(text, problems);
    EXPECT_TRUE(problems.empty()) << problems.front().describe();
    return scenario;
}

class SimulatorTest : public ::testing::Test {
protected:
    std::ostringstream logText;
    RequestLog log{logText, false};
    // Outlive each test's simulator, whose thread may still be delivering.
    RecordingBridge bridge, other;
};

TEST_F(SimulatorTest, MediaPlayInRealTimeAndEndOnceForEveryListener) {
    const Scenario scenario = scenarioFrom(R"({"media": [{"locator": "a.mp4", "duration": 300}]})");
    Simulator sim(scenario, log);
    sim.clientConnected();
    auto& video = sim.video();
    int handle = 0;
    EXPECT_FALSE(video.open("missing.mp4", handle));
    EXPECT_EQ(handle, 0);
    ASSERT_TRUE(video.open("a.mp4", handle));
    EXPECT_EQ(handle, 1);
    int second = 0;
    ASSERT_TRUE(video.open("a.mp4", second));
    EXPECT_EQ(second, 2);

    video.addMediaListener(handle, &bridge);
    video.addMediaListener(handle, &bridge);  // counted once
    video.addMediaListener(handle, &other);
    EXPECT_EQ(video.getDuration(handle), 300);
    EXPECT_EQ(video.getCurrentTime(handle), 0);
    ASSERT_TRUE(video.play(handle));
    std::this_thread::sleep_for(100ms);
    const int now = video.getCurrentTime(handle);
    EXPECT_GE(now, 90);
    EXPECT_LT(now, 300);

    ASSERT_TRUE(bridge.log.waitFor(1, 2000ms));
    ASSERT_TRUE(other.log.waitFor(1, 2000ms));
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(bridge.log.snapshot(), std::vector<std::string>{"eom 1"});
    EXPECT_EQ(other.log.size(), 1u);
    EXPECT_EQ(video.getCurrentTime(handle), 300);
    sim.quiesce();  // the log is read once the simulator's thread is gone
    EXPECT_NE(logText.str().find("event media 16 end of media, handle 1"), std::string::npos);
}

TEST_F(SimulatorTest, PlayersAreCappedUntilOneCloses) {
    const Scenario scenario = scenarioFrom(R"({"media": [{"locator": "a", "duration": 5000}]})");
    Simulator sim(scenario, log);
    auto& video = sim.video();
    int handle = 0;
    for (std::size_t i = 0; i < SimVideoFacade::MAX_PLAYERS; ++i) ASSERT_TRUE(video.open("a", handle));
    int refused = -1;
    EXPECT_FALSE(video.open("a", refused));
    EXPECT_EQ(refused, -1);
    video.close(handle);
    EXPECT_TRUE(video.open("a", refused));
}

TEST_F(SimulatorTest, StopSeekAndCloseCancelTheScheduledEnd) {
    const Scenario scenario = scenarioFrom(R"({"media": [{"locator": "a", "duration": 150}]})");
    Simulator sim(scenario, log);
    sim.clientConnected();
    auto& video = sim.video();
    int stopped = 0, sought = 0, closed = 0;
    video.open("a", stopped);
    video.open("a", sought);
    video.open("a", closed);
    for (int h : {stopped, sought, closed}) {
        video.addMediaListener(h, &bridge);
        video.play(h);
    }
    video.stop(stopped);
    EXPECT_EQ(video.getCurrentTime(stopped), 0);
    EXPECT_EQ(video.setCurrentTime(sought, 50, 0), 50);  // ends 100 ms later than planned
    video.close(closed);
    EXPECT_EQ(video.getDuration(closed), -1);
    EXPECT_EQ(video.setCurrentTime(closed, 1, 0), -1);
    EXPECT_EQ(sim.status()[3], "notices scheduled: 1") << "stale ends leave the queue";

    ASSERT_TRUE(bridge.log.waitFor(1, 2000ms));
    std::this_thread::sleep_for(250ms);
    EXPECT_EQ(bridge.log.snapshot(), std::vector<std::string>{"eom " + std::to_string(sought)});
}

TEST_F(SimulatorTest, PlayerSettingsAreRememberedAndReportedBack) {
    const Scenario scenario = scenarioFrom(R"({"media": [{"locator": "a", "duration": 5000}]})");
    Simulator sim(scenario, log);
    auto& video = sim.video();
    int handle = 0;
    video.open("a", handle);
    EXPECT_EQ(video.setMediaBounds(handle, 10, 20, 640, 360), 0);
    EXPECT_EQ(video.setMediaBounds(99, 1, 1, 1, 1), -1);
    video.setMediaSoundLevel(handle, 0.25);
    video.setMediaMute(handle, true);
    video.setMediaFreeze(handle, true);
    int x = -5, y = -5, w = -5, h = -5;
    video.getMediaBounds(handle, x, y, w, h);
    EXPECT_EQ((std::vector<int>{x, y, w, h}), (std::vector<int>{10, 20, 640, 360}));
    video.getMediaBounds(99, x, y, w, h);  // unknown: untouched
    EXPECT_EQ(x, 10);
    const auto players = video.describePlayers();
    ASSERT_EQ(players.size(), 1u);
    EXPECT_NE(players[0].find("bounds 10,20,640,360, frozen, sound 0.25"), std::string::npos) << players[0];
    EXPECT_NE(players[0].find("muted"), std::string::npos);
}

TEST_F(SimulatorTest, DownloadsFollowAMountWhileAListenerIsRegistered) {
    const Scenario scenario = scenarioFrom(R"({"carousels": [
        {"name": "c1", "mount": "/mnt/c1", "downloads": [{"after": 0.05, "first": "one"},
                                                         {"after": 0.3, "first": "two", "second": "2"}]},
        {"name": "c2", "mount": "/mnt/c2", "downloads": [{"after": 0.05, "first": "never"}]}]})");
    Simulator sim(scenario, log);
    sim.clientConnected();
    auto& carousel = sim.carousel();
    EXPECT_EQ(carousel.mount("unknown"), "");
    carousel.addCarouselListener(&bridge);
    EXPECT_EQ(carousel.mount("c1"), "/mnt/c1");
    EXPECT_EQ(carousel.mount("c2"), "/mnt/c2");
    carousel.umount("c2");
    ASSERT_TRUE(bridge.log.waitFor(1, 2000ms));
    carousel.removeCarouselListener(&bridge);
    std::this_thread::sleep_for(400ms);
    EXPECT_EQ(bridge.log.snapshot(), std::vector<std::string>{"download one"});
    sim.quiesce();
    EXPECT_NE(logText.str().find("\"two\" of \"c1\" dropped: no carousel listener"), std::string::npos);
}

TEST_F(SimulatorTest, TheTimelineStartsWithEachClientAndStopsWhenItLeaves) {
    const Scenario scenario = scenarioFrom(R"({
        "streamEvents": [{"at": 0.05, "every": 0.1, "code": 1, "value": 42, "byte": 7, "text": ")" +
                                  std::string(3000, 'g') + R"("},
                         {"at": 0.05, "name": "other", "code": 9}],
        "graphics": [{"at": 0.1, "first": {"x": 0, "y": 0, "width": 1280, "height": 720},
                      "second": {"x": 0, "y": 0, "width": 1920, "height": 1080}}]})");
    Simulator sim(scenario, log);
    sim.dsmcc().addCommandListener("nclEditingCommand", &bridge);
    sim.video().addGraphicsSettingsListener(&bridge);
    std::this_thread::sleep_for(150ms);
    EXPECT_EQ(bridge.log.size(), 0u) << "nothing before a client connects";

    for (int i = 0; i < 1000; ++i) sim.clientConnected(), sim.clientDisconnected();
    EXPECT_EQ(sim.status()[3], "notices scheduled: 0") << "every connection's tasks go with it";
    sim.clientConnected();
    ASSERT_TRUE(bridge.log.waitFor(3, 2000ms));
    sim.clientDisconnected();
    const auto seen = bridge.log.snapshot();
    EXPECT_EQ(seen[0], "dsmcc 1 42 7 " + std::string(3000, 'g')) << "a long text arrives whole";
    EXPECT_NE(std::find(seen.begin(), seen.end(), "graphics 1280 1920"), seen.end());
    EXPECT_EQ(std::count(seen.begin(), seen.end(), "dsmcc 9 0 0 "), 0) << "no listener for \"other\"";
    std::this_thread::sleep_for(250ms);
    EXPECT_EQ(bridge.log.size(), seen.size()) << "the repeat ends with the connection";
}

TEST_F(SimulatorTest, NothingReachesTheBridgeWithoutAClientOrAfterQuiesce) {
    const Scenario scenario = scenarioFrom(R"({"media": [{"locator": "a", "duration": 50}]})");
    Simulator sim(scenario, log);
    int handle = 0;
    sim.video().open("a", handle);
    sim.video().addMediaListener(handle, &bridge);
    sim.video().addGraphicsSettingsListener(&bridge);
    EXPECT_EQ(sim.video().changeGraphics({}, {}), Delivery::NoClient) << "no client yet";
    EXPECT_NE(logText.str().find("graphics settings change dropped: no client connected"), std::string::npos);
    sim.clientConnected();
    sim.video().play(handle);
    sim.quiesce();
    EXPECT_EQ(sim.video().changeGraphics({}, {}), Delivery::NoClient);
    EXPECT_TRUE(sim.video().endMedium(handle));  // the player ends, the notice is held back
    std::this_thread::sleep_for(150ms);
    EXPECT_EQ(bridge.log.size(), 0u);
}

TEST_F(SimulatorTest, OnlyNoticesTheBridgeGotOutAreCountedAndReportedAsSent) {
    const Scenario scenario = scenarioFrom("{}");
    Simulator sim(scenario, log);
    sim.clientConnected();
    sim.dsmcc().addCommandListener("nclEditingCommand", &bridge);
    std::ostringstream out;
    Console console(sim, [](int) { return 0; }, out);
    sim.countSentWith([&] { return bridge.log.size(); });  // stands in for the hub's count
    console.execute("dsmcc 1 2 3 went");
    sim.countSentWith([] { return std::uint64_t{7}; });  // the bridge's send failed
    console.execute("dsmcc 1 2 3 lost");
    EXPECT_EQ(out.str(), "stream event sent\nnot sent: the client's connection failed\n");
    EXPECT_EQ(sim.status()[2], "events sent: 1");
}

TEST_F(SimulatorTest, SectionsAndTunerListsFollowTheirFilters) {
    const Scenario scenario = scenarioFrom(R"({
        "sections": [{"pid": 0, "data": "00 01"}, {"pid": 32, "data": "02 01"}, {"pid": 32, "data": "02 02"},
                     {"pid": 32, "data": "42 03"}],
        "tuner": {"idLists": [{"kind": 1, "parameter": 5, "ids": [1]}, {"kind": 1, "ids": [2]}]}})");
    Simulator sim(scenario, log);
    auto& demux = sim.demux();
    EXPECT_TRUE(demux.read_section().empty()) << "not started";
    demux.start();
    demux.set_pid(32);
    demux.set_table_id(2);
    demux.set_pid(-1);  // values no filter can use, as a command cut short carries, are ignored
    demux.set_table_id(-1);
    EXPECT_EQ(demux.read_section(), (std::vector<unsigned char>{2, 1}));
    EXPECT_EQ(demux.read_section(), (std::vector<unsigned char>{2, 2}));
    EXPECT_EQ(demux.read_section(), (std::vector<unsigned char>{2, 1}));
    demux.clear_table_id();
    EXPECT_EQ(demux.read_section(), (std::vector<unsigned char>{2, 2}));
    EXPECT_EQ(demux.read_section(), (std::vector<unsigned char>{0x42, 3}));
    demux.set_pid(99);
    EXPECT_TRUE(demux.read_section().empty());

    EXPECT_EQ(sim.tuner().getIds1(5), std::list<int>{1});
    EXPECT_EQ(sim.tuner().getIds1(6), std::list<int>{2});
    EXPECT_TRUE(sim.tuner().getIds2().empty());
}

TEST_F(SimulatorTest, TheConsoleRunsCommandsAndAnswersBadOnesWithOneLine) {
    const Scenario scenario = scenarioFrom(R"({"media": [{"locator": "a", "duration": 5000}]})");
    Simulator sim(scenario, log);
    sim.clientConnected();
    sim.dsmcc().addCommandListener("nclEditingCommand", &bridge);
    sim.carousel().addCarouselListener(&bridge);
    int handle = 0;
    sim.video().open("a", handle);
    sim.video().addMediaListener(handle, &bridge);
    std::vector<int> states;
    std::ostringstream out;
    Console console(sim, [&](int state) { states.push_back(state); return 1; }, out);

    std::istringstream script(
        "dsmcc 3 -5 200 two  words here\n"
        "bogus 1\n"
        "appstate 2\n"
        "appstate x\n"
        "download first second\n"
        "graphics 1 2 3\n"
        "dsmcc 1 2 256 t\n"
        "eom 1\n"
        "eom 7\n"
        "# a comment\n"
        "status\n"
        "graphics 0 0 1 1 0 0 2 2\n"
        "quit\n"
        "appstate 9\n");
    EXPECT_TRUE(console.runScript(script));
    EXPECT_EQ(states, std::vector<int>{2});
    EXPECT_EQ(bridge.log.snapshot(),
              (std::vector<std::string>{"dsmcc 3 -5 200 two  words here", "download first second", "eom 1"}));
    std::vector<std::string> lines;
    std::istringstream text(out.str());
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    ASSERT_GE(lines.size(), 12u) << out.str();
    EXPECT_EQ(lines[1], "error: unknown command \"bogus\" (try help)");
    EXPECT_EQ(lines[2], "application state 2: client answered 1");
    EXPECT_EQ(lines[3].rfind("error: N must be an integer", 0), 0u) << lines[3];
    EXPECT_EQ(lines[5], "error: usage: graphics X Y W H X Y W H");
    EXPECT_EQ(lines[6].rfind("error: BYTE must be an integer from 0 to 255", 0), 0u) << lines[6];
    EXPECT_EQ(lines[8], "no player with handle 7");
    EXPECT_EQ(lines[9], "client: connected");
    EXPECT_NE(lines[10].find("media 2 "), std::string::npos) << lines[10];  // open and listen; eom is no request
    EXPECT_EQ(lines[11], "events sent: 3");
    EXPECT_EQ(lines.back(), "no graphics listener") << "none registered here";
}

}  // namespace
}  // namespace sim
}  // namespace tessarine
