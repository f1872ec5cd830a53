// SI decoded from the test streams, checked against an independent reader
// (ffprobe) and against what the generator says it wrote.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>

#include "StreamFiles.h"
#include "sim/broadcast/SiModel.h"
#include "sim/broadcast/TsInput.h"

namespace tessarine::broadcast::test {
namespace {

namespace mf = middlewarefacade;

class SiFromStream : public ::testing::Test {
protected:
    void SetUp() override { feedAll(input, readFile(dataFile("broadcast.ts"))); }
    SiModel model;
    TsInput input{model};
};

TEST_F(SiFromStream, ServicesPmtsAndStreamsMatchFfprobe) {
    auto probe = nlohmann::json::parse(
        commandOutput("ffprobe -v error -show_programs -of json '" + dataFile("broadcast.ts") + "'"));
    ASSERT_EQ(probe["programs"].size(), 2u);
    auto services = model.getServices();
    ASSERT_EQ(services.size(), 2u);
    for (const auto& program : probe["programs"]) {
        const int number = program["program_num"];
        auto service = std::find_if(services.begin(), services.end(), [&](auto& s) { return s.value0 == number; });
        ASSERT_NE(service, services.end()) << number;
        EXPECT_EQ(service->text0, program["tags"]["service_name"]);
        EXPECT_EQ(service->text1, program["tags"]["service_provider"]);
        EXPECT_EQ(service->value1, 0x2001);  // original network id
        EXPECT_EQ(service->value3, 1);       // digital television
        model.setCurrentService(number);
        EXPECT_EQ(model.getServiceDescription(), program["tags"]["service_provider"]);

        auto pmts = model.getPMTs(number);
        ASSERT_EQ(pmts.size(), 1u);
        EXPECT_EQ(pmts.front().value1, program["pmt_pid"]);
        EXPECT_EQ(pmts.front().value2, program["pcr_pid"]);
        auto components = model.getServiceComponents(number);
        ASSERT_EQ(components.size(), program["streams"].size());
        auto c = components.begin();
        for (const auto& stream : program["streams"]) {
            EXPECT_EQ(c->value0, std::stoi(stream["id"].get<std::string>(), nullptr, 16));
            EXPECT_EQ(c->value1, std::stoi(stream["codec_tag"].get<std::string>(), nullptr, 16));
            EXPECT_EQ(c->value4, stream["codec_type"] == "video" ? 1 : 2);
            ++c;
        }
    }
    EXPECT_EQ(model.getPMTs(-1).size(), 2u);
}

TEST_F(SiFromStream, EventsMatchWhatTheGeneratorWrote) {
    auto events = model.getProgramEvents();
    size_t checked = 0;
    for (const auto& row : manifest("broadcast.tsv")) {
        if (row[0] == "event") {
            auto e = std::find_if(events.begin(), events.end(), [&](auto& e) {
                return e.value4 == std::stoi(row[1]) && e.value0 == std::stoi(row[2]);
            });
            ASSERT_NE(e, events.end()) << row[5];
            EXPECT_EQ(e->value1, std::stol(row[3]));
            EXPECT_EQ(e->value2, std::stoi(row[4]));
            EXPECT_EQ(e->text0, row[5]);
            EXPECT_FALSE(e->text1.empty());
            EXPECT_FALSE(e->text2.empty());
            EXPECT_EQ(e->strings0, std::list<std::string>{"Presenter"});
            EXPECT_EQ(e->strings1, std::list<std::string>{"A. Tester"});
            EXPECT_EQ(std::string(e->bytes0.begin(), e->bytes0.end()), "eng");
            EXPECT_EQ(e->bytes1.size(), 1u);
            EXPECT_EQ(std::string(e->bytes2.begin(), std::next(e->bytes2.begin(), 3)), "GBR");
            std::set<int> tags;
            for (const auto& d : model.getProgramEventDescriptors(e->value4, e->value0)) tags.insert(d.id);
            EXPECT_EQ(tags, (std::set<int>{0x4D, 0x4E, 0x54, 0x55}));
            ++checked;
        } else if (row[0] == "present") {
            model.setCurrentService(std::stoi(row[1]));
            auto present = model.getProgramEvent();
            ASSERT_TRUE(present.has_value());
            EXPECT_EQ(present->value0, std::stoi(row[2]));
            EXPECT_EQ(present->value3, 4);  // running
        }
    }
    EXPECT_EQ(checked, 6u);
    EXPECT_EQ(events.size(), 6u);  // p/f and schedule copies of an event count once
    auto film = std::find_if(events.begin(), events.end(), [](auto& e) { return e.text0 == "Late Film: The Test Card"; });
    EXPECT_EQ(film->value6, 15);  // parental rating 0x0C: from 15 years
}

TEST_F(SiFromStream, NetworkTransportStreamAndDescriptors) {
    auto network = model.getNetwork();
    ASSERT_TRUE(network.has_value());
    auto row = manifest("broadcast.tsv").back();
    EXPECT_EQ(network->value0, std::stoi(row[1]));
    EXPECT_EQ(network->text0, row[2]);
    ASSERT_EQ(model.getNetworkDescriptors().size(), 1u);
    EXPECT_EQ(model.getNetworkDescriptors().front().id, 0x40);

    auto ts = model.getTransportStream();
    ASSERT_TRUE(ts.has_value());
    EXPECT_EQ(ts->value0, 0x0421);
    EXPECT_EQ(ts->value1, 0x2001);
    EXPECT_EQ(ts->value2, 0x3001);
    EXPECT_EQ(ts->value4, 3);  // terrestrial delivery
    std::vector<int> tags;
    for (const auto& d : model.getTransportStreamDescriptors(-1)) tags.push_back(d.id);
    EXPECT_EQ(tags, (std::vector<int>{0x41, 0x5A}));
    EXPECT_TRUE(model.getTransportStreamDescriptors(0x0999).empty());

    auto service = model.getServiceDescriptors(101);
    ASSERT_EQ(service.size(), 1u);
    EXPECT_EQ(service.front().id, 0x48);
    auto audio = model.getServiceComponentDescriptors(0x201);
    ASSERT_FALSE(audio.empty());
    EXPECT_EQ(audio.front().id, 0x0A);  // ISO 639 language
    EXPECT_EQ(std::string(audio.front().data.begin(), std::next(audio.front().data.begin(), 3)), "eng");
    EXPECT_EQ(model.getSICodingFormat(), "DVB");
    EXPECT_EQ(model.getCurrentService(), 101);
    EXPECT_EQ(model.isProtectedService(), false);
    EXPECT_TRUE(model.getCASystemIds().empty());
}

TEST(SiModel, ProtectionFromCaDescriptorsAndScrambledComponents) {
    SiModel model;
    EXPECT_FALSE(model.isProtectedService().has_value());
    model.setPat(1, 0, {{0, 0x10}, {7, 0x100}});
    model.setPmt({7, 0x100, 0x200, 0, {{0x09, {0x0B, 0x00, 0xE1, 0x00}}},
                  {{0x02, 0x200, {}}, {0x03, 0x201, {{0x09, {0x18, 0x02, 0xE1, 0x01}}}}}});
    EXPECT_EQ(model.getCASystemIds(), (std::list<int>{0x0B00, 0x1802}));
    EXPECT_EQ(model.isProtectedService(), true);

    model.setPmt({7, 0x100, 0x200, 1, {}, {{0x02, 0x200, {}}}});
    EXPECT_EQ(model.isProtectedService(), false);
    model.markScrambled(0x200);
    EXPECT_EQ(model.isProtectedService(), true);
    EXPECT_EQ(model.getPMTs(7).front().value3, 1);  // the newer version replaced the old
}

TEST(SiVersions, NewVersionsReplaceTheOld) {
    SiModel model;
    TsInput input(model);
    Bytes ts = readFile(dataFile("broadcast-version.ts"));
    const size_t firstSecond = 188 * 664;  // 1 Mbit/s: the change comes at 1.5 s
    feedAll(input, Bytes(ts.begin(), ts.begin() + firstSecond));
    model.setCurrentService(102);
    ASSERT_TRUE(model.getProgramEvent().has_value());
    EXPECT_EQ(model.getProgramEvent()->text0, "Wildlife Hour");
    EXPECT_EQ(model.getNetwork()->text0, "Tessarine Test Network");

    feedAll(input, Bytes(ts.begin() + firstSecond, ts.end()));
    EXPECT_EQ(model.getProgramEvent()->text0, "Quiz Night");
    EXPECT_EQ(model.getNetwork()->text0, "Tessarine Test Network (updated)");
    EXPECT_EQ(input.counters().warnings(), 0u);
}

}  // namespace
}  // namespace tessarine::broadcast::test
