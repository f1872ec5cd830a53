#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "SimProcess.h"
#include "tessarine/protocol/Sockets.h"
#include "support/ControlTestClient.h"
#include "support/TempDir.h"

namespace tessarine {
namespace {

using namespace std::chrono_literals;
using testing::ControlTestClient;
using testing::makeRecord;
using testing::SimProcess;
using testing::TempDir;

constexpr auto EXIT_PATIENCE = 10000ms;

class SimProgram : public ::testing::Test {
protected:
    std::string writeFile(const std::string& name, const std::string& text) {
        std::ofstream(files.file(name)) << text;
        return files.file(name);
    }
    std::unique_ptr<SimProcess> start(const std::string& scenario, std::vector<std::string> more = {}) {
        std::vector<std::string> arguments{"--scenario", writeFile("scenario.json", scenario), "--socket-dir",
                                           sockets.path()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return std::make_unique<SimProcess>(arguments, files.path());
    }
    std::unique_ptr<SimProcess> startServing(const std::string& scenario, std::vector<std::string> more = {}) {
        auto sim = start(scenario, std::move(more));
        EXPECT_TRUE(sim->waitUntilServing()) << sim->err();
        return sim;
    }
    std::string controlPath() const { return sockets.path() + "/ipc.socket"; }

    // A request answered by one record with the request's type and code.
    message ask(ControlTestClient& client, const message& request) {
        const message answer = client.ask(request);
        EXPECT_EQ(std::make_pair(answer.type, answer.code), std::make_pair(request.type, request.code));
        return answer;
    }

    TempDir files;
    TempDir sockets;
};

// What each problem says is the scenario parser's test; here, that a
// problem ends the program before it serves.
TEST_F(SimProgram, ABadScenarioFileIsRefusedWithItsMessageBeforeAnySocketExists) {
    auto sim = start("{\"media\": [");
    EXPECT_EQ(sim->waitExit(EXIT_PATIENCE), 2);
    EXPECT_NE(sim->err().find("scenario.json: $: expected valid JSON, found"), std::string::npos) << sim->err();
    EXPECT_TRUE(std::filesystem::is_empty(sockets.path()));
}

TEST_F(SimProgram, PathsInTheWayAndFailedBindsEndTheProgramWith2) {
    std::ofstream(sockets.file("ipc.socket")) << "keep";
    std::filesystem::create_directory(sockets.file("ipcdemux.socket"));
    auto sim = start("{}");
    EXPECT_EQ(sim->waitExit(EXIT_PATIENCE), 2);
    EXPECT_NE(sim->err().find("ipc.socket is not a socket"), std::string::npos) << sim->err();
    EXPECT_NE(sim->err().find("ipcdemux.socket is not a socket"), std::string::npos);
    EXPECT_EQ(std::filesystem::file_size(sockets.file("ipc.socket")), 4u) << "left as it is";
    SimProcess unbindable({"--socket-dir", "/proc", "--quiet"}, files.path());
    EXPECT_EQ(unbindable.waitExit(EXIT_PATIENCE), 2) << "nothing can be bound in /proc";
    EXPECT_EQ(unbindable.err().find("serving"), std::string::npos) << unbindable.err();
}

TEST_F(SimProgram, ALiveServerIsLeftAloneAStaleOneReplacedAndItsOwnSocketsRemoved) {
    auto first = startServing("{}");
    TempDir secondOutput;
    SimProcess second({"--socket-dir", sockets.path(), "--quiet"}, secondOutput.path());
    EXPECT_EQ(second.waitExit(EXIT_PATIENCE), 2);
    EXPECT_NE(second.err().find("ipc.socket is served by a running process"), std::string::npos) << second.err();
    EXPECT_TRUE(ControlTestClient(controlPath(), 5000ms).connected()) << "the first still serves";
    first->signal(SIGKILL);  // leaves its socket files behind
    first->waitExit(EXIT_PATIENCE);
    std::filesystem::remove(files.file("stderr"));  // so that the next "serving" is the third's
    auto third = startServing("{}");
    third->signal(SIGTERM);
    EXPECT_EQ(third->waitExit(EXIT_PATIENCE), 0);
    EXPECT_TRUE(std::filesystem::is_empty(sockets.path()));
}

TEST_F(SimProgram, ExitCodesSayWhetherTheCommandLineOrAScriptCommandFailed) {
    SimProcess misused({"--no-such-option"}, files.path());
    EXPECT_EQ(misused.waitExit(EXIT_PATIENCE), 2);
    auto sim = startServing("{}", {"--script", writeFile("script", "appstate 4\nquit\n")});
    EXPECT_TRUE(sim->waitForOutput("application state 4 not sent: no client connected", 5000ms)) << sim->out();
    EXPECT_EQ(sim->waitExit(EXIT_PATIENCE), 1);
}

TEST_F(SimProgram, TheSocketDirectoryVariableAStreamAloneAndAWaitingClient) {
    ::setenv(SOCKET_DIRECTORY_VARIABLE, sockets.path().c_str(), 1);
    SimProcess sim({"--ts", TESSARINE_TEST_DATA "/broadcast.ts"}, files.path());
    ::unsetenv(SOCKET_DIRECTORY_VARIABLE);
    ASSERT_TRUE(sim.waitUntilServing()) << sim.err();
    EXPECT_NE(sim.err().find("serving " + controlPath()), std::string::npos) << sim.err();
    EXPECT_NE(sim.err().find("from the empty scenario"), std::string::npos) << sim.err();
    ControlTestClient served(controlPath(), 5000ms), waiting(controlPath(), 5000ms);
    EXPECT_TRUE(sim.waitForOutput("another client is waiting", 5000ms, true)) << sim.err();
    sim.signal(SIGTERM);
    EXPECT_EQ(sim.waitExit(EXIT_PATIENCE), 0);
}

TEST_F(SimProgram, SigtermWithAClientConnectedEndsTheProgramCleanly) {
    auto sim = std::make_unique<SimProcess>(std::vector<std::string>{"--socket-dir", sockets.path(), "--quiet"},
                                            files.path());
    ASSERT_TRUE(sim->waitUntilServing()) << sim->err();
    ControlTestClient client(controlPath(), 5000ms);
    ASSERT_TRUE(client.connected()) << sim->err();
    EXPECT_EQ(ask(client, makeRecord(MSG_VERSION, 1)).payload[0], 1) << "the built-in scenario sets flag 1";
    sim->signal(SIGTERM);
    EXPECT_EQ(sim->waitExit(EXIT_PATIENCE), 0) << sim->err();
    EXPECT_NE(sim->out().find("deleting middleware ipc"), std::string::npos);
    EXPECT_EQ(sim->err().find("request"), std::string::npos) << "--quiet";
}

}  // namespace
}  // namespace tessarine
