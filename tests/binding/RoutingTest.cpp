// The routing edge cases: codes that are not queries, texts and values at
// their limits, what only in-process callers ask. Which operation each
// request reaches is the request table's job.
#include <cstring>

#include "BridgeTest.h"

namespace tessarine {
namespace testing {
namespace {

using Calls = std::vector<std::string>;

TEST_F(BridgeTest, VideoRateQueriesStopAtTheirCodeRange) {
    fakes.video.rates = {{109, 110, 111, 112, 113, 114, 115, 116}};
    const std::size_t before = fakes.video.log.count();
    // Commands 8 and 17 are not queries: ask the binding's rate query directly.
    EXPECT_EQ(adapter->getVideoProperty(static_cast<command>(8)), -1);
    EXPECT_EQ(adapter->getVideoProperty(static_cast<command>(16)), 116);
    EXPECT_EQ(adapter->getVideoProperty(static_cast<command>(17)), -1);
    const auto calls = fakes.video.log.calls();
    EXPECT_EQ(Calls(calls.begin() + static_cast<long>(before), calls.end()), Calls{"getRate16()"});
    fakes.video.languages = {"por"};
    EXPECT_EQ(adapter->getVideoLanguage(static_cast<command>(4)), "") << "4 asks the list, not one language";
}

// Values the binding reads its own way: 0 is a service, and only the
// version flag's low byte travels.
TEST_F(BridgeTest, ValuesAtTheirLimits) {
    fakes.si.currentService = 0;
    EXPECT_EQ(ask(request(MSG_SI, 7)).get<std::int32_t>(12), 0);
    fakes.version.answer = 0x101;
    EXPECT_EQ(ask(request(MSG_VERSION, 6)).bytes()[12], 0x01);
}

// Channel queries serve in-process callers only.
TEST_F(BridgeTest, ChannelQueriesReachTheTuner) {
    fakes.tuner.channelName = "Canal";
    fakes.tuner.channelNumber = 7;
    EXPECT_EQ(IpcServerManager::getInstance()->getChannelName(1, 2), "Canal");
    EXPECT_EQ(IpcServerManager::getInstance()->getVirtualChannelNumber(3, 4), 7);
    EXPECT_EQ(fakes.tuner.log.calls().back(), "getVirtualChannelNumber(3, 4)");
}

// The byte layout of lists with trailing data is the hub's (SiRequestsTest);
// here, what only in-process callers and the section channel ask.
TEST_F(BridgeTest, InProcessDescriptorQueriesAndEmptySections) {
    fakes.si.descriptors = {{0x48, {0xde, 0xad}}, {0x4d, {}}};
    EXPECT_EQ(IpcServerManager::getInstance()->getServiceDescriptors(44).size(), 2u);
    EXPECT_EQ(fakes.si.log.calls().back(), "getServiceDescriptors(44)");

    auto demux = connectDemux();
    ASSERT_TRUE(demux->connected());
    EXPECT_EQ(demux->readSection(), std::vector<unsigned char>{});
    EXPECT_EQ(fakes.demux.log.calls(), Calls{"read_section()"});
}

}  // namespace
}  // namespace testing
}  // namespace tessarine
