// tessarine-sim serving the test streams through the bridge: what an
// application reads on both channels, checked against an independent
// reader (ffprobe). Section filtering itself is the filter's test.

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <regex>
#include <thread>

#include "StreamFiles.h"
#include "sim/SimProcess.h"
#include "support/ControlTestClient.h"
#include "support/DemuxTestClient.h"
#include "support/TempDir.h"
#include "tessarine/network.h"
#include "tessarine/service.h"
#include "tessarine/service_component.h"

namespace tessarine::broadcast::test {
namespace {

using namespace std::chrono_literals;
using tessarine::testing::ControlTestClient;
using tessarine::testing::DemuxTestClient;
using tessarine::testing::makeRecord;
using tessarine::testing::SimProcess;
using tessarine::testing::TempDir;

enum Demux : int32_t { START = 0, SET_PID = 2, SET_TABLE_ID = 3, SET_TIME_OUT = 8 };

bool eventually(const std::function<bool()>& done, std::chrono::milliseconds patience = 10000ms) {
    for (auto until = std::chrono::steady_clock::now() + patience; std::chrono::steady_clock::now() < until;
         std::this_thread::sleep_for(100ms))
        if (done()) return true;
    return false;
}

// Service id -> name, as ffprobe reads the file.
std::map<int, std::string> probedServices(const std::string& file) {
    auto probe = nlohmann::json::parse(commandOutput("ffprobe -v error -show_programs -of json '" + file + "'"));
    std::map<int, std::string> names;
    for (const auto& program : probe["programs"]) names[program["program_num"]] = program["tags"]["service_name"];
    return names;
}

class StreamThroughBridge : public ::testing::Test {
protected:
    std::unique_ptr<SimProcess> serve(std::vector<std::string> arguments, const std::string& scenario = "{}") {
        std::ofstream(files.file("scenario.json")) << scenario;
        arguments.insert(arguments.end(), {"--scenario", files.file("scenario.json"), "--socket-dir", sockets.path()});
        auto sim = std::make_unique<SimProcess>(arguments, files.path());
        EXPECT_TRUE(sim->waitUntilServing()) << sim->err();
        control = std::make_unique<ControlTestClient>(sockets.path() + "/ipc.socket", 5000ms);
        demux = std::make_unique<DemuxTestClient>(sockets.path() + "/ipcdemux.socket", 5000ms);
        EXPECT_TRUE(control->connected() && demux->connected()) << sim->err();
        return sim;
    }

    std::vector<message> askList(int code, int argument = 0) {
        message request = makeRecord(MSG_SI, code);
        request.put<int>(12, argument);
        std::vector<message> items;
        if (!control->send(request)) return items;
        auto header = control->receive();
        if (!header || header->type != MSG_LIST_HEADER) return items;
        for (int i = 0; i < header->code; ++i)
            if (auto item = control->receive()) items.push_back(*item);
        return items;
    }

    std::map<int, std::string> services() {
        std::map<int, std::string> names;
        for (const auto& item : askList(6)) {
            service s = service::decode(item.bytes() + 12);
            names[s.value0] = s.text0;
        }
        return names;
    }

    std::string networkName() {
        message request = makeRecord(MSG_SI, 14);
        if (!control->send(request)) return {};
        auto answer = control->receive();
        return answer ? network::decode(answer->bytes() + 12).text0 : std::string{};
    }

    void filter(int pid, int tableId, long timeoutMs = 3000) {
        ASSERT_TRUE(demux->sendWord(START) && demux->sendWord(SET_PID) && demux->sendWord(pid) &&
                    demux->sendWord(SET_TABLE_ID) && demux->sendWord(tableId) && demux->sendWord(SET_TIME_OUT) &&
                    demux->sendWord(static_cast<int32_t>(timeoutMs)));
    }

    TempDir files, sockets;
    std::unique_ptr<ControlTestClient> control;
    std::unique_ptr<DemuxTestClient> demux;
};

// What the decoder reads from the file is checked against independent
// readers where it is decoded; here, that the simulator serves it and that
// the scenario still answers for what the stream does not carry.
TEST_F(StreamThroughBridge, TheFilesServicesAreServedOverTheScenario) {
    const std::string file = dataFile("broadcast.ts");
    auto sim = serve({"--ts", file}, R"({"si": {"services": [{"value0": 1, "text0": "Scenario One"}],
        "serviceComponents": [{"for": 7, "components": [{"value0": 700}]}]}})");
    const auto probed = probedServices(file);
    ASSERT_EQ(probed.size(), 2u);
    EXPECT_TRUE(eventually([&] { return services() == probed; })) << sim->err();
    EXPECT_EQ(askList(10, probed.begin()->first).size(), 2u) << "video and audio";
    auto scenarioOnly = askList(10, 7);
    ASSERT_EQ(scenarioOnly.size(), 1u);
    EXPECT_EQ(service_component::decode(scenarioOnly[0].bytes() + 12).value0, 700);
    EXPECT_TRUE(eventually([&] { return networkName() == "Tessarine Test Network"; }));
}

// The stream's tables are copied over the scenario's again when they change.
TEST_F(StreamThroughBridge, ANewVersionReplacesTheOld) {
    auto sim = serve({"--ts", dataFile("broadcast-version.ts")});
    EXPECT_TRUE(eventually([&] { return networkName() == "Tessarine Test Network (updated)"; })) << sim->err();
}

TEST_F(StreamThroughBridge, AttackAReadLeftWaitingByADepartedClientEndsAtOnce) {
    auto sim = serve({"--ts", dataFile("broadcast.ts")});
    filter(0x1234, 0x42, 60000);  // no such PID: the read would wait its whole minute
    ASSERT_TRUE(demux->sendWord(13));
    std::this_thread::sleep_for(200ms);
    demux = std::make_unique<DemuxTestClient>(sockets.path() + "/ipcdemux.socket");  // and the first one goes
    const auto left = std::chrono::steady_clock::now();
    filter(0x1234, 0x42, 100);
    auto none = demux->readSection(5000ms);
    EXPECT_TRUE(none && none->empty()) << "the next application is served";
    EXPECT_LT(std::chrono::steady_clock::now() - left, 1000ms);
}

TEST_F(StreamThroughBridge, ADamagedCopyIsServedAndItsWarningsCounted) {
    Bytes ts = readFile(dataFile("broadcast.ts"));
    std::mt19937 random(11);
    Bytes damaged;
    for (size_t at = 0; at + TS_SIZE <= ts.size(); at += TS_SIZE)
        if (random() % 12 != 0) damaged.insert(damaged.end(), ts.begin() + at, ts.begin() + at + TS_SIZE);
    for (int i = 0; i < 300; ++i) damaged[random() % damaged.size()] ^= static_cast<uint8_t>(1 + random() % 255);
    damaged.resize(damaged.size() - 100);  // the last packet cut short
    const std::string copy = files.file("damaged.ts");
    std::ofstream(copy, std::ios::binary).write(reinterpret_cast<const char*>(damaged.data()),
                                                static_cast<std::streamsize>(damaged.size()));
    std::ofstream(files.file("script")) << "sleep 4\nstatus\n";

    auto sim = serve({"--ts", copy, "--script", files.file("script")});
    EXPECT_TRUE(eventually([&] { return !services().empty(); })) << sim->err();
    filter(0x12, 0x4e);
    for (int i = 0; i < 3; ++i) {
        auto section = demux->readSection(5000ms);
        ASSERT_TRUE(section && !section->empty());
        EXPECT_TRUE(psi_check_crc(section->data())) << "a damaged section was delivered";
    }
    ASSERT_TRUE(sim->waitForOutput("warnings", 10000ms)) << sim->out();
    std::smatch counted;
    const std::string out = sim->out();
    ASSERT_TRUE(std::regex_search(out, counted, std::regex(R"(warnings (\d+) \(sync (\d+), transport \d+, tables (\d+))")))
        << out;
    EXPECT_GT(std::stoul(counted[1]), 0u);
    EXPECT_GT(std::stoul(counted[3]), 0u) << "continuity and CRC damage";
    EXPECT_FALSE(sim->waitExit(0ms).has_value()) << "the bridge stopped";
}

TEST_F(StreamThroughBridge, ASourceThatCannotBeOpenedIsRefusedBeforeAnySocketExists) {
    SimProcess sim({"--ts", files.file("missing.ts"), "--socket-dir", sockets.path()}, files.path());
    EXPECT_EQ(sim.waitExit(10000ms), 2);
    EXPECT_NE(sim.err().find("cannot read the transport stream"), std::string::npos) << sim.err();
    EXPECT_TRUE(std::filesystem::is_empty(sockets.path()));
}

}  // namespace
}  // namespace tessarine::broadcast::test
