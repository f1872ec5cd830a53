// The demux client against the real section-filter server.
#include <gtest/gtest.h>

#include "support/RecordingFilter.h"
#include "support/TempDir.h"
#include "tessarine/IpcDemuxServer.h"
#include "tessarine/client/DemuxClient.h"

namespace tessarine {
namespace {

using client::DemuxClient;
using client::ErrorCode;
using namespace std::chrono_literals;
using Bytes = std::vector<unsigned char>;
using testing::hex;
using testing::RecordingFilter;

class DemuxClientTest : public ::testing::Test {
protected:
    DemuxClientTest() : server(dir.file("ipcdemux.socket")) {
        server.setListener(&filter);
        server.start();
        client::DemuxOptions options;
        options.socketPath = dir.file("ipcdemux.socket");
        options.timeout = 3000ms;
        demux = std::make_unique<DemuxClient>(options);
    }
    ~DemuxClientTest() override {
        filter.release();
        demux.reset();
        server.stop();
    }

    testing::TempDir dir;
    RecordingFilter filter;
    IpcDemuxServer server;
    std::unique_ptr<DemuxClient> demux;
};

TEST_F(DemuxClientTest, EveryCommandArrivesWithItsArguments) {
    filter.section = {0x4e, 0xf0, 0x00, 0xff};
    ASSERT_TRUE(demux->start());
    ASSERT_TRUE(demux->setPid(0x12));
    ASSERT_TRUE(demux->setTableId(0x4e));
    ASSERT_TRUE(demux->setPositiveFilter(0, {0x42}, {0xff}));
    ASSERT_TRUE(demux->setGreaterThanFilter(-1, {}, {1, 2}));
    ASSERT_TRUE(demux->setLessThanFilter(3, Bytes(4096, 0xaa), {}));
    ASSERT_TRUE(demux->setXorFilter(4, {1}, {2}, {3, 4}));
    ASSERT_TRUE(demux->setTimeOut(2000));
    ASSERT_TRUE(demux->clearTableId());
    ASSERT_TRUE(demux->clearPositiveFilter());
    ASSERT_TRUE(demux->clearLessThanFilter());
    ASSERT_TRUE(demux->clearXorFilter());
    ASSERT_TRUE(demux->stop());
    auto section = demux->readSection();
    ASSERT_TRUE(section) << section.error().message();
    EXPECT_EQ(*section, filter.section);

    EXPECT_EQ(filter.calls.snapshot(), (std::vector<std::string>{"start", "pid 18", "table 78", "positive 0 [42] [ff]",
                                                       "greater -1 [] [0102]", "less 3 [" + hex(Bytes(4096, 0xaa)) + "] []",
                                                       "xor 4 [01] [02] [0304]", "timeout 2000", "clear table",
                                                       "clear positive", "clear less", "clear xor", "stop"}));
    filter.section.clear();
    EXPECT_TRUE(demux->readSection()->empty());
    EXPECT_EQ(demux->setPositiveFilter(0, Bytes(4097), {}).error().code(), ErrorCode::InvalidArgument);
}

TEST_F(DemuxClientTest, ASlowSectionTimesOutAndTheNextReadReconnects) {
    filter.holdSections = true;
    filter.section = {1, 2, 3};
    auto late = demux->readSection(200ms);
    ASSERT_FALSE(late);
    EXPECT_EQ(late.error().code(), ErrorCode::TimedOut);
    filter.release();  // the late section goes to the closed connection
    auto next = demux->readSection();
    ASSERT_TRUE(next) << next.error().message();
    EXPECT_EQ(*next, (Bytes{1, 2, 3}));
}

TEST_F(DemuxClientTest, OversizedSectionsRestartedAndAbsentServers) {
    filter.section.assign(5000, 0x55);
    auto big = demux->readSection();
    ASSERT_FALSE(big);
    EXPECT_EQ(big.error().code(), ErrorCode::MalformedAnswer);
    filter.section.assign(demux->options().maxSectionLength, 0x56);  // the longest that is taken
    EXPECT_EQ(demux->readSection()->size(), filter.section.size());

    server.stop();  // a bridge that restarts between two calls: the next one connects anew
    server.start();
    EXPECT_TRUE(demux->setPid(7));
    server.stop();
    demux->disconnect();
    auto absent = demux->setPid(1);
    ASSERT_FALSE(absent);
    EXPECT_EQ(absent.error().code(), ErrorCode::NotConnected);
}

}  // namespace
}  // namespace tessarine
