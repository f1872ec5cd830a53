// tessarine-cli against a real in-process bridge: sub-commands, --json
// output parsed back, exit codes, watch and demux read.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <future>
#include <nlohmann/json.hpp>

#include "client/ClientBridgeFixture.h"
#include "support/Command.h"
#include "tessarine/ConnectionListener.h"
#include "support/RecordingFilter.h"

namespace tessarine {
namespace {

using Json = nlohmann::json;

using testing::CommandRun;

class Connections : public ConnectionListener {
public:
    std::promise<void> connected;
    void clientConnected() override { connected.set_value(); }
    void clientDisconnected() override {}
};

class CliTest : public testing::ClientBridgeFixture {
protected:
    CommandRun cli(const std::string& arguments) {
        return testing::runCommand(std::string(TESSARINE_CLI_PATH) + " --socket-dir " + dir.path() + " " + arguments +
                                   " 2>/dev/null");
    }
    // Whether the listener was asked this (each run's disconnection adds a video reset after it).
    bool called(const std::string& entry) {
        const auto calls = stub.calls.snapshot();
        return std::find(calls.begin(), calls.end(), entry) != calls.end();
    }
    Json json(const std::string& arguments) {
        CommandRun run = cli("--json " + arguments);
        EXPECT_EQ(run.exitCode, 0) << arguments;
        return Json::parse(run.out, nullptr, false);
    }
};

TEST_F(CliTest, AnswersParseBackToTheBridgesValues) {
    service s;
    s.value0 = 7;
    s.text0 = "One";
    stub.services = {s, service{}};
    descriptor d;
    d.id = 0x48;
    d.data = {0x01, 0xab};
    stub.descriptors = {d};
    stub.text = "1";
    stub.openedHandle = 12;
    stub.yes = true;
    program_event e;
    e.value1 = 5;
    e.bytes0 = {0xff};
    e.strings2 = {"s"};
    stub.events = {e};

    const Json services = json("si services");
    ASSERT_EQ(services.size(), 2u);
    EXPECT_EQ(services[0]["value0"], 7);
    EXPECT_EQ(services[0]["text0"], "One");
    EXPECT_EQ(json("si descriptors ts 72")[0], (Json{{"id", 0x48}, {"length", 2}, {"data", "01ab"}}));
    EXPECT_TRUE(called("getTransportStreamDescriptors 72"));
    EXPECT_EQ(json("property get lang")["value"], "1");
    EXPECT_TRUE(called("getSystemProperty lang"));
    EXPECT_EQ(json("media open http://x/a.ts")["handle"], 12);
    stub.number = 4;
    EXPECT_EQ(json("version 3")["result"], 4);
    EXPECT_TRUE(called("checkVersionFlag 3"));
    stub.number = -1;
    EXPECT_EQ(json("si events")[0]["strings2"], Json::array({"s"}));
    EXPECT_EQ(json("si events")[0]["bytes0"], "ff");
    EXPECT_TRUE(json("si current").is_null());
    EXPECT_EQ(json("raw --type 6 --code 6").size(), 3u);  // header and two services

    // For people: an aligned table with a header row.
    const CommandRun table = cli("si services");
    EXPECT_EQ(table.exitCode, 0);
    EXPECT_NE(table.out.find("SERVICE_ID  ONID"), std::string::npos) << table.out;
    EXPECT_NE(table.out.find("(2 entries)"), std::string::npos);
}

TEST_F(CliTest, WatchPrintsOneJsonLinePerEventAndAnswersAppState) {
    Connections connections;
    hub->addConnectionListener(&connections);
    auto watcher = std::async(std::launch::async, [&] { return cli("--json watch --no-timestamps --count 3 --app-state 9"); });
    ASSERT_EQ(connections.connected.get_future().wait_for(std::chrono::seconds(5)), std::future_status::ready);
    hub->endOfMedia(4);
    hub->sendDsmCCCommand({3, 1, 2, std::string(2000, 'x')});
    EXPECT_EQ(hub->setApplicationState(2), 9);
    const CommandRun run = watcher.get();
    hub->removeConnectionListener(&connections);
    EXPECT_EQ(run.exitCode, 0);

    std::vector<Json> lines;
    std::size_t start = 0, end;
    while ((end = run.out.find('\n', start)) != std::string::npos) {
        lines.push_back(Json::parse(run.out.substr(start, end - start), nullptr, false));
        start = end + 1;
    }
    ASSERT_EQ(lines.size(), 3u) << run.out;
    EXPECT_EQ(lines[0], (Json{{"event", "end-of-media"}, {"handle", 4}}));
    EXPECT_EQ(lines[1]["text"].get<std::string>().size(), 2000u);
    EXPECT_EQ(lines[2], (Json{{"event", "app-state"}, {"state", 2}, {"answer", 9}}));
}

TEST_F(CliTest, DemuxReadSetsThePidAndDumpsTheSection) {
    testing::RecordingFilter filter;
    filter.section = {0x4e, 0xf0, 0x11};
    hub->addIpcDemuxServerListener(&filter);
    const Json section = json("demux read --pid 0x12 --table 0x4e --timeout 2000");
    EXPECT_EQ(section, (Json{{"length", 3}, {"section", "4ef011"}}));
    EXPECT_EQ(filter.calls.snapshot(), (std::vector<std::string>{"pid 18", "table 78", "start"}));
    const CommandRun dump = cli("demux section");
    EXPECT_NE(dump.out.find("0000  4e f0 11"), std::string::npos) << dump.out;
    hub->addIpcDemuxServerListener(nullptr);
}

}  // namespace
}  // namespace tessarine
