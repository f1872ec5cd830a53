// Creation and deletion of the adapter: one instance, the wiring in order,
// and nothing of the bridge left running or reaching a facade once deleted.
#include <thread>

#include "BridgeTest.h"

namespace tessarine {
namespace testing {
namespace {

using Calls = std::vector<std::string>;

class LifecycleTest : public ::testing::Test {
protected:
    TempDir dir;
    void SetUp() override { ASSERT_TRUE(IpcServerManager::setSocketDirectory(dir.path())); }

    // Connects both channels and proves that each reaches `fakes`.
    void useBothChannels(FakeFacades& fakes) {
        ControlTestClient control(dir.file("ipc.socket"));
        DemuxTestClient demux(dir.file("ipcdemux.socket"));
        ASSERT_TRUE(control.connected() && demux.connected());
        ASSERT_TRUE(control.send(makeRecord(MSG_VERSION, 9)));
        ASSERT_TRUE(control.receive());
        EXPECT_TRUE(demux.readSection());
        EXPECT_EQ(fakes.version.log.calls().back(), "checkVersionFlag(9)");
        EXPECT_EQ(fakes.demux.log.calls().back(), "read_section()");
    }
};

TEST_F(LifecycleTest, ConcurrentFirstCallsBuildOneAdapterWiredInOrder) {
    FakeFacades fakes;
    FacadeSelection::select(fakes);
    MiddlewareIpc* seen[2] = {};
    std::thread other([&] { seen[1] = MiddlewareIpc::getInstance(); });
    seen[0] = MiddlewareIpc::getInstance();
    other.join();
    ASSERT_NE(seen[0], nullptr);
    EXPECT_EQ(seen[0], seen[1]);
    MiddlewareIpc* adapter = seen[0];

    const auto graphics = static_cast<const void*>(static_cast<middlewarefacade::GraphicsSettingsListener*>(adapter));
    const auto commands = static_cast<const void*>(static_cast<middlewarefacade::DsmCCCommandListener*>(adapter));
    EXPECT_EQ(fakes.video.log.calls(), Calls{callText("addGraphicsSettingsListener", graphics)});
    EXPECT_EQ(fakes.dsmcc.log.calls(), Calls{callText("addCommandListener", "nclEditingCommand", commands)});

    ::testing::internal::CaptureStdout();
    delete adapter;
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "deleting middleware ipc\n");

    EXPECT_EQ(fakes.video.log.calls(), (Calls{callText("addGraphicsSettingsListener", graphics),
                                              callText("removeGraphicsSettingsListener", graphics), "release()"}));
    EXPECT_EQ(fakes.dsmcc.log.calls(),
              (Calls{callText("addCommandListener", "nclEditingCommand", commands),
                     callText("removeCommandListener", "nclEditingCommand", commands), "release()"}));
    for (CallLog* log : {&fakes.property.log, &fakes.si.log, &fakes.carousel.log, &fakes.demux.log, &fakes.tuner.log})
        EXPECT_EQ(log->calls(), Calls{"release()"});
    EXPECT_TRUE(fakes.version.log.calls().empty()) << "the version facade is never released";
}

TEST_F(LifecycleTest, AfterDeleteNeitherChannelReachesAFacade) {
    FakeFacades fakes;
    FacadeSelection::select(fakes);
    MiddlewareIpc* adapter = MiddlewareIpc::getInstance();
    ControlTestClient control(dir.file("ipc.socket"));
    DemuxTestClient demux(dir.file("ipcdemux.socket"));
    ASSERT_TRUE(control.connected() && demux.connected());
    ASSERT_TRUE(demux.readSection());  // the demux client is being served

    // The application keeps sending on both channels while the adapter goes away.
    std::atomic<bool> sending{true};
    std::thread demuxFiller([&] {
        while (sending && demux.sendWord(2) && demux.sendWord(0x10)) {
        }
    });
    std::thread controlFiller([&] {
        while (sending && control.send(request(MSG_TUNER, 0)) && control.send(request(MSG_VIDEO, 2))) {
        }
    });
    ASSERT_TRUE(fakes.demux.log.waitFor(2) && fakes.tuner.log.waitFor(1));  // both channels are busy
    delete adapter;
    const std::size_t demuxCalls = fakes.demux.log.count();
    const std::size_t tunerCalls = fakes.tuner.log.count();
    const std::size_t videoCalls = fakes.video.log.count();
    sending = false;
    demuxFiller.join();
    controlFiller.join();

    EXPECT_TRUE(control.closedByPeer());
    EXPECT_TRUE(demux.closedByPeer());
    ControlTestClient lateControl(dir.file("ipc.socket"), std::chrono::milliseconds(100));
    DemuxTestClient lateDemux(dir.file("ipcdemux.socket"), std::chrono::milliseconds(100));
    EXPECT_FALSE(lateControl.connected());
    EXPECT_FALSE(lateDemux.connected());
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(fakes.demux.log.count(), demuxCalls);
    EXPECT_EQ(fakes.tuner.log.count(), tunerCalls);
    EXPECT_EQ(fakes.video.log.count(), videoCalls);
    for (CallLog* log : {&fakes.demux.log, &fakes.tuner.log, &fakes.video.log})
        EXPECT_EQ(log->calls().back(), "release()") << "nothing reaches a facade after its release";
}

TEST_F(LifecycleTest, RepeatedCyclesLeaveNoDescriptorOrThreadAndServeTheNewFacades) {
    auto warmUp = std::make_unique<FakeFacades>();
    FacadeSelection::select(*warmUp);
    delete MiddlewareIpc::getInstance();
    const std::size_t descriptors = entriesIn("/proc/self/fd");
    const std::size_t threads = entriesIn("/proc/self/task");

    std::unique_ptr<FakeFacades> previous;
    for (int cycle = 0; cycle < 50; ++cycle) {
        auto fakes = std::make_unique<FakeFacades>();
        FacadeSelection::select(*fakes);
        MiddlewareIpc* adapter = MiddlewareIpc::getInstance();
        useBothChannels(*fakes);
        if (previous) {
            EXPECT_EQ(previous->demux.log.calls().back(), "release()") << "cycle " << cycle;
        }
        delete adapter;
        previous = std::move(fakes);
    }
    EXPECT_EQ(entriesIn("/proc/self/fd"), descriptors);
    EXPECT_EQ(entriesIn("/proc/self/task"), threads);
}

}  // namespace
}  // namespace testing
}  // namespace tessarine
