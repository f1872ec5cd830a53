// tessarine-cli against the simulator: the shell's one connection, waiting
// for events, exit codes, argument refusals and JSON errors.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "sim/SimProcess.h"
#include "support/Command.h"
#include "support/TempDir.h"
#include "tessarine/client/ControlClient.h"

namespace tessarine {
namespace {

using testing::SimProcess;
using testing::TempDir;

struct CliRun : testing::CommandRun {
    std::string err;
};

std::string slurp(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

std::size_t occurrences(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

class CliSession : public ::testing::Test {
protected:
    void SetUp() override {
        sim = std::make_unique<SimProcess>(std::vector<std::string>{"--socket-dir", sockets.path()}, files.path());
        ASSERT_TRUE(sim->waitUntilServing()) << sim->err();
    }
    CliRun cli(const std::string& arguments, const std::string& input = "") {
        std::ofstream(files.file("input")) << input;
        CliRun run{testing::runCommand(std::string(TESSARINE_CLI_PATH) + " --socket-dir " + sockets.path() + " " + arguments +
                                       " < " + files.file("input") + " 2> " + files.file("err")),
                   ""};
        run.err = slurp(files.file("err"));
        return run;
    }
    std::size_t connects() const { return occurrences(sim->out() + sim->err(), "client connected"); }

    TempDir files, sockets;
    std::unique_ptr<SimProcess> sim;
};

TEST_F(CliSession, ShellKeepsOneConnectionAndItsSettings) {
    const CliRun run = cli("shell", "video bounds 10 20 640 480\n# a comment\nvideo bounds\nsi servics\nproperty get absent\n");
    EXPECT_NE(run.out.find("width   640"), std::string::npos) << run.out;
    EXPECT_NE(run.err.find("did you mean 'services'"), std::string::npos) << run.err;
    EXPECT_EQ(run.exitCode, 1) << "the last command's code: the property is missing";
    EXPECT_EQ(connects(), 1u) << sim->out();
}

TEST_F(CliSession, MediaPlayWaitsForTheEndOfTheMedia) {
    const CliRun run = cli("--json shell", "media open file:///media/jingle.mp3\nmedia play 1 --wait\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.out.find("{\"handle\":1}\ntrue\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\"event\":\"end-of-media\""), std::string::npos) << run.out;
}

TEST_F(CliSession, WatchGivesUpAfterItsTimeLimit) {
    const CliRun run = cli("watch --event end-of-media --count 1 --timeout 300");
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_NE(run.err.find("0 of 1 events within 300 ms"), std::string::npos) << run.err;
}

TEST_F(CliSession, ExitCodesAndRefusalsBeforeConnecting) {
    struct Case {
        std::string arguments;
        int exitCode;
        const char* said;
        bool connects;
    } cases[] = {
        {"property get absent", 1, "", true},
        {"media open file:///absent.mp4", 1, "", true},
        {"video bounds 1 2 3", 2, "bounds take x y width height", false},
        {"demux read --pid 8192", 2, "not in range 0 to 8191", false},
        {"demux read --table 256", 2, "not in range 0 to 255", false},
        {"raw --type MSG_NONE --code 1", 2, "--type", false},
        {"--json vdeo", 2, R"({"error":{"code":"usage","message":"unknown sub-command 'vdeo'; did you mean 'video'?"}})", false},
        {"video flag 9 on", 2, "", false},
        {"video text " + std::string(255, 't'), 2, "", false},
        {"si descriptors service 1", 2, "", false},
        {"--socket /nonexistent/ipc.socket si services", 3, "", false},
        {"si --help", 0, "", false},
        {"audio mute on", 0, "", true},
        {"--version", 0, "", false},
    };
    for (const auto& c : cases) {
        const std::size_t before = connects();
        const CliRun run = cli(c.arguments);
        EXPECT_EQ(run.exitCode, c.exitCode) << c.arguments << ": " << run.err;
        EXPECT_NE(run.err.find(c.said), std::string::npos) << c.arguments << ": " << run.err;
        // The simulator logs a connect at once; a refusal must not make one.
        std::this_thread::sleep_for(std::chrono::milliseconds(c.connects ? 0 : 100));
        EXPECT_EQ(connects() > before, c.connects) << c.arguments;
    }
    EXPECT_EQ(cli("--version").out, "tessarine-cli " TESSARINE_VERSION_TEXT "\n");
}

TEST_F(CliSession, SiValuesCarryTheirNamesBesideTheWireNames) {
    const auto events = nlohmann::json::parse(cli("--json si events").out);
    ASSERT_FALSE(events.empty());
    for (const auto& e : events) {
        EXPECT_EQ(e["event_id"], e["value0"]);
        EXPECT_EQ(e["service_id"], e["value4"]);
        std::tm parts{};
        ASSERT_NE(::strptime(e["start"].get<std::string>().c_str(), "%Y-%m-%dT%H:%M:%SZ", &parts), nullptr) << e;
        EXPECT_EQ(::timegm(&parts), e["value1"].get<std::time_t>());
    }
    EXPECT_FALSE(nlohmann::json::parse(cli("--json --wire-names si events").out)[0].contains("event_id"));
    EXPECT_EQ(cli("si services").out.rfind("SERVICE_ID  ONID  TSID", 0), 0u);
}

TEST_F(CliSession, ABusyBridgeTimesOutWithItsLikelyCauseAsJson) {
    client::ClientOptions options;
    options.socketPath = sockets.file("ipc.socket");
    client::ControlClient first(options);
    ASSERT_TRUE(first.connect());
    const CliRun run = cli("--json --timeout 300 si services");
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(run.err.rfind(R"({"error":{"code":"timed_out","message":"timed out: no answer to)", 0), 0u) << run.err;
    EXPECT_NE(run.err.find("another client"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace tessarine
