// The capture of a simulated receiver, read back by tessarine-cli and by
// tshark with the Lua dissector.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "sim/SimProcess.h"
#include "support/Command.h"
#include "support/TempDir.h"
#include "tessarine/client/ControlClient.h"
#include "tessarine/client/DemuxClient.h"

namespace tessarine {
namespace {

using namespace std::chrono_literals;
using Json = nlohmann::json;
using testing::SimProcess;
using testing::TempDir;

bool haveTshark() { return std::system("command -v tshark >/dev/null 2>&1") == 0; }

// tshark's -T fields output of `fields` for the frames `filter` selects, one line a frame.
testing::CommandRun tshark(const std::string& file, const std::string& filter, const std::string& fields) {
    return testing::runCommand("tshark -X lua_script:" TESSARINE_SOURCE_DIR "/tools/wireshark/tessarine.lua -r " + file + " -Y '" +
                   filter + "' -T fields " + fields + " 2>/dev/null");
}

class Capture : public ::testing::Test {
protected:
    std::unique_ptr<SimProcess> serve(const std::string& capture, const std::string& script) {
        std::ofstream(files.file("script")) << script;
        auto sim = std::make_unique<SimProcess>(
            std::vector<std::string>{"--socket-dir", sockets.path(), "--capture", capture, "--script",
                                     files.file("script"), "--quiet"},
            files.path());
        EXPECT_TRUE(sim->waitUntilServing()) << sim->err();
        return sim;
    }
    client::ClientOptions options() const {
        client::ClientOptions o;
        o.socketPath = sockets.file("ipc.socket");
        return o;
    }
    std::vector<Json> decoded() const {
        std::vector<Json> blocks;
        std::istringstream lines(testing::runCommand(TESSARINE_CLI_PATH " --json capture decode " + file()).out);
        for (std::string line; std::getline(lines, line);) blocks.push_back(Json::parse(line));
        return blocks;
    }
    // The decoder's view: control requests other than the application's
    // answers, outbound roles (items counted apart) and section commands.
    struct Sequence {
        std::vector<std::string> requests, outbound, commands;
        std::size_t items = 0;
    };
    Sequence sequence() const {
        Sequence q;
        for (const Json& b : decoded()) {
            if (!b.contains("role")) continue;  // the closing statistics
            const std::string what = b.value("type", "") + " " + b.value("code", "");
            if (b["channel"] == "sections") {
                if (b["direction"] == "in") q.commands.push_back(what);
            } else if (b["role"] == "request") {
                EXPECT_EQ(b["direction"], "in") << b;
                if (b["type"] != "MSG_APP_STATE") q.requests.push_back(what);
            } else {
                EXPECT_EQ(b["direction"], "out") << b;
                q.items += b["role"] == "item";
                if (b["role"] != "item") q.outbound.push_back(b["role"].get<std::string>() + " " + what);
            }
        }
        return q;
    }
    std::string file() const { return files.file("wire.pcapng"); }

    TempDir files;
    TempDir sockets;
};

TEST_F(Capture, AScriptedSessionComesBackInOrderFromTheDecoderAndTshark) {
    auto sim = serve(file(), "waitclient\nsleep 1\ngraphics 1 2 3 4 5 6 7 8\nappstate 3\nsleep 60\n");
    client::ControlClient control(options());
    std::atomic<bool> asked{false};
    control.onAppStateRequest([&](std::int32_t) { asked = true; return std::uint8_t{7}; });
    const auto version = control.checkVersion(1);
    const auto bounds = control.videoBounds();
    const auto properties = control.systemProperties();
    ASSERT_TRUE(control.setSoundLevel(0.5));
    const auto stream = control.currentTransportStreamId();
    const auto mount = control.mountCarousel("carousel");
    const auto services = control.services();
    const auto media = control.openMedia("file:///a.ts");
    ASSERT_TRUE(version && bounds && properties && stream && mount && services && media);
    for (int i = 0; i < 500 && !asked; ++i) std::this_thread::sleep_for(20ms);
    client::DemuxOptions demuxOptions;
    demuxOptions.socketPath = sockets.file("ipcdemux.socket");
    client::DemuxClient demux(demuxOptions);
    ASSERT_TRUE(demux.setPid(32) && demux.start());
    const auto section = demux.readSection();
    ASSERT_TRUE(section && asked);
    sim->signal(SIGTERM);
    ASSERT_EQ(sim->waitExit(10s), 0) << sim->err();

    // The decoder: every request in order, inbound; every answer and event outbound.
    const Sequence seen = sequence();
    const auto& [requests, outbound, commands, items] = seen;
    EXPECT_EQ(requests, (std::vector<std::string>{"MSG_VERSION 1", "MSG_VIDEO VIDEO_GET_BOUNDS",
                                                  "MSG_PROPERTY PROPERTY_LIST", "MSG_AUDIO AUDIO_SOUND_LEVEL",
                                                  "MSG_TUNER TUNER_CURRENT_TS_ID", "MSG_CAROUSEL CAROUSEL_MOUNT",
                                                  "MSG_SI SI_SERVICES", "MSG_MEDIA MEDIA_OPEN"}));
    EXPECT_EQ(items, properties->size() + services->size());
    for (const char* expected : {"answer MSG_VERSION 1", "list header MSG_LIST_HEADER", "answer MSG_MEDIA MEDIA_OPEN",
                                 "event MSG_VIDEO VIDEO_GRAPHICS_SETTINGS", "event MSG_APP_STATE 3"}) {
        const bool found = std::any_of(outbound.begin(), outbound.end(),
                                       [&](const std::string& s) { return s.rfind(expected, 0) == 0; });
        EXPECT_TRUE(found) << expected;
    }
    EXPECT_EQ(commands, (std::vector<std::string>{" DEMUX_SET_PID", " DEMUX_START", " DEMUX_READ_SECTION"}));

    if (!haveTshark()) GTEST_SKIP() << "tshark is not installed";
    std::string names;
    for (const auto& s : *services) names += s.text0 + "\n";
    EXPECT_EQ(tshark(file(), "tessarine.si.code == 6 && tessarine.role == \"item\"", "-e tessarine.si.text0").out, names);
    EXPECT_EQ(tshark(file(), "tessarine.type == 10 && frame.packet_flags_direction == 2", "-e tessarine.version.result").out,
              std::to_string(*version) + "\n");
    EXPECT_EQ(tshark(file(), "tessarine.media.code == 0 && tessarine.role == \"answer\"", "-e tessarine.media.handle").out,
              std::to_string(media->value_or(-1)) + "\n");
    EXPECT_EQ(tshark(file(), "tessarine.section.length > 0", "-e tessarine.section.length").out,
              std::to_string(section->size()) + "\n");
    EXPECT_EQ(tshark(file(), "_ws.expert.severity == error", "-e frame.number").out, "");
}

TEST_F(Capture, AKilledHostLeavesAReadableFile) {
    auto sim = serve(file(), "sleep 60\n");
    client::ControlClient control(options());
    for (int i = 0; i < 20; ++i) ASSERT_TRUE(control.checkVersion(i));
    std::this_thread::sleep_for(1s);  // more than the writer's interval
    sim->signal(SIGKILL);
    sim->waitExit(10s);
    EXPECT_EQ(decoded().size(), 40u);  // each request and its answer, no closing statistics
    if (!haveTshark()) GTEST_SKIP() << "tshark is not installed";
    const auto read = tshark(file(), "tessarine.type == 10", "-e tessarine.type");
    EXPECT_EQ(read.out.size(), 40 * 3u);
    EXPECT_EQ(read.exitCode, 0);
}

TEST_F(Capture, AnUnwritableFileIsReportedOnceAndServingGoesOn) {
    auto sim = serve(files.file("missing/wire.pcapng"), "sleep 60\n");
    client::ControlClient control(options());
    EXPECT_TRUE(control.checkVersion(1));
    EXPECT_TRUE(control.services());
    const std::string err = sim->err();
    const auto first = err.find("Can't capture to");
    EXPECT_NE(first, std::string::npos) << err;
    EXPECT_EQ(err.find("Can't capture to", first + 1), std::string::npos) << err;
}

}  // namespace
}  // namespace tessarine
