#include <gtest/gtest.h>

#include "support/HubFixture.h"

namespace tessarine {
namespace {

using testing::HubTest;
using FanOutRulesTest = HubTest;

TEST_F(FanOutRulesTest, NoListenerGivesEachRulesDefault) {
    EXPECT_EQ(hub->getCurrentService(), -1);
    EXPECT_FALSE(hub->isProtectedService());
    EXPECT_EQ(hub->checkVersionFlag(1), 0);
    EXPECT_EQ(hub->getProgramEvent().value1, -1);
    int x = 1, y = 2, width = 3, height = 4;  // not preset: they stay as they came
    hub->getMainVideoBounds(x, y, width, height);
    EXPECT_EQ(std::vector<int>({x, y, width, height}), std::vector<int>({1, 2, 3, 4}));
}

TEST_F(FanOutRulesTest, FirstValidAndFirstTrueStopAtTheLowerAddressWhenItAnswers) {
    hub->addIpcServerListener(&upper);
    hub->addIpcServerListener(&lower);
    lower.number = 0;
    upper.number = 7;
    EXPECT_EQ(hub->getCurrentService(), 0);
    EXPECT_EQ(upper.calls.size(), 0u) << "0 is an answer: the second listener is not asked";
    lower.number = -1;
    EXPECT_EQ(hub->getDuration(1), 7);

    upper.yes = true;
    upper.number = 3;
    lower.number = 0;
    EXPECT_TRUE(hub->isProtectedService());
    EXPECT_EQ(hub->checkVersionFlag(5), 3);
    EXPECT_EQ(lower.calls.snapshot().back(), "checkVersionFlag 5");
}

TEST_F(FanOutRulesTest, FirstNonEmptyAndFirstCompleteTakeTheFirstAcceptableOrTheLastAnswer) {
    hub->addIpcServerListener(&lower);
    hub->addIpcServerListener(&upper);
    upper.services.resize(2);
    upper.text = "later";
    EXPECT_EQ(hub->getServices().size(), 2u);
    EXPECT_EQ(hub->getServiceDescription(), "later");

    lower.event.value0 = 5;
    upper.event.value0 = 6;
    EXPECT_EQ(hub->getProgramEvent().value0, 6) << "none complete: the last answer";
    lower.event.value1 = 0;
    EXPECT_EQ(hub->getProgramEvent().value0, 5);
    upper.stream.value1 = 9;
    EXPECT_EQ(hub->getTransportStream().value1, 9);
}

TEST_F(FanOutRulesTest, BoundsRulesUntilAllFourSetAndAllWithSharedOutParameters) {
    hub->addIpcServerListener(&lower);
    hub->addIpcServerListener(&upper);
    lower.bounds = {10, 20, 30, testing::ScriptedListener::KEEP};
    upper.bounds.height = 40;
    int x = -1, y = -1, width = -1, height = -1;
    hub->getMainVideoBounds(x, y, width, height);
    EXPECT_EQ(std::vector<int>({x, y, width, height}), std::vector<int>({10, 20, 30, 40}));
    lower.bounds.height = 4;
    const auto upperCalls = upper.calls.size();
    hub->getMainVideoBounds(x, y, width, height);
    EXPECT_EQ(height, 4);
    EXPECT_EQ(upper.calls.size(), upperCalls) << "all four set: the second listener is not asked";

    upper.bounds = {testing::ScriptedListener::KEEP, 99, testing::ScriptedListener::KEEP, 0};
    hub->getMediaBounds(3, x, y, width, height);  // rule all: every listener writes in turn
    EXPECT_EQ(std::vector<int>({x, y, width, height}), std::vector<int>({10, 99, 30, 0}));
}

TEST_F(FanOutRulesTest, AListenerAddedTwiceAndRemovedOnceIsGone) {
    hub->addIpcServerListener(&lower);
    hub->addIpcServerListener(&lower);
    hub->umountCarousel("c");
    EXPECT_EQ(lower.calls.size(), 1u);
    hub->removeIpcServerListener(&lower);
    hub->umountCarousel("c");
    EXPECT_EQ(lower.calls.size(), 1u);
}

}  // namespace
}  // namespace tessarine
