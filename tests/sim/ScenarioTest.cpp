#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "sim/Scenario.h"

namespace tessarine {
namespace sim {
namespace {

std::vector<ScenarioProblem> problemsOf(const std::string& text) {
    std::vector<ScenarioProblem> problems;
    Scenario::parse(text, problems);
    return problems;
}

struct BrokenCase {
    const char* what;
    const char* json;
    const char* path;
    const char* message;  // part of "expected ..., found ..."
};

std::string nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }
const std::string DEEP = nested(100000);
const std::string DEEP_PROPERTY = R"({"properties": {"a": )" + nested(100000) + "}}";

class BrokenScenario : public ::testing::TestWithParam<BrokenCase> {};

TEST_P(BrokenScenario, IsReportedWithItsPathAndWhatWasExpected) {
    const auto problems = problemsOf(GetParam().json);
    ASSERT_EQ(problems.size(), 1u) << (problems.empty() ? "" : problems[0].describe());
    EXPECT_EQ(problems[0].path, GetParam().path);
    EXPECT_NE(problems[0].describe().find(GetParam().message), std::string::npos) << problems[0].describe();
}

INSTANTIATE_TEST_SUITE_P(
    Table, BrokenScenario,
    ::testing::Values(
        BrokenCase{"invalid JSON", R"({"video": {)", "$", "expected valid JSON, found"},
        BrokenCase{"not an object", "[1, 2]", "$", "expected an object, found an array"},
        BrokenCase{"unknown top-level key", R"({"vidoe": {}})", "$.vidoe", "no such key"},
        BrokenCase{"unknown nested key", R"({"media": [{"locator": "a", "duration": 5, "lenght": 1}]})",
                   "$.media[0].lenght", "found an unknown key"},
        BrokenCase{"wrong type", R"({"video": {"bounds": {"x": "0", "y": 0, "width": 1, "height": 1}}})",
                   "$.video.bounds.x", "expected a 32-bit integer, found string \"0\""},
        BrokenCase{"out of range", R"({"tuner": {"currentTransportStreamId": 4294967296}})",
                   "$.tuner.currentTransportStreamId", "from -2147483648 to 2147483647"},
        BrokenCase{"bad hex", R"({"sections": [{"pid": 0, "data": "00 b0 0g"}]})", "$.sections[0].data",
                   "expected hex bytes"},
        BrokenCase{"odd hex digit", R"({"si": {"descriptors": {"network": [{"id": 64, "data": "4"}]}}})",
                   "$.si.descriptors.network[0].data", "found string \"4\""},
        BrokenCase{"missing field", R"({"streamEvents": [{"at": 1, "text": "x"}]})", "$.streamEvents[0].code",
                   "expected a value (required), found nothing"},
        BrokenCase{"negative time", R"({"graphics": [{"at": -1, "first": {"x":0,"y":0,"width":1,"height":1},
                   "second": {"x":0,"y":0,"width":1,"height":1}}]})", "$.graphics[0].at", "from 0 to 2592000"},
        BrokenCase{"period beyond a month", R"({"streamEvents": [{"at": 1, "every": 1e300, "code": 1}]})",
                   "$.streamEvents[0].every", "from 0.001 to 2592000"},
        BrokenCase{"period under a millisecond", R"({"streamEvents": [{"at": 1, "every": 1e-12, "code": 1}]})",
                   "$.streamEvents[0].every", "from 0.001"},
        BrokenCase{"download after a month", R"({"carousels": [{"name": "c", "mount": "m", "downloads": [{"after": 1e300, "first": "f"}]}]})",
                   "$.carousels[0].downloads[0].after", "from 0 to 2592000"},
        BrokenCase{"number beyond a double", R"({"versionFlags": [1e400]})", "$", "number overflow"},
        BrokenCase{"deep nesting", DEEP.c_str(), "$", "nested deeper than 64"},
        BrokenCase{"deep nesting in a value", DEEP_PROPERTY.c_str(), "$", "nested deeper than 64"},
        BrokenCase{"byte above 255", R"({"streamEvents": [{"at": 1, "code": 1, "byte": 256}]})",
                   "$.streamEvents[0].byte", "a byte from 0 to 255"},
        BrokenCase{"rates of the wrong length", R"({"video": {"rates": [1, 2]}})", "$.video.rates",
                   "an array of 8 integers"},
        BrokenCase{"empty stream source", R"({"ts": ""})", "$.ts", "expected a file, \"-\" or udp://ADDR:PORT"},
        BrokenCase{"property that is no string", R"({"properties": {"a": 1}})", "$.properties.a",
                   "expected a string"}),
    [](const ::testing::TestParamInfo<BrokenCase>& info) {
        std::string name = info.param.what;
        for (char& c : name)
            if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
        return name;
    });

TEST(Scenario, EveryProblemIsReportedNotOnlyTheFirst) {
    const auto problems = problemsOf(R"({"media": [{"locator": 1}], "versionFlags": "x", "extra": true})");
    ASSERT_EQ(problems.size(), 4u);
    EXPECT_EQ(problems[0].path, "$.extra");
    EXPECT_EQ(problems[1].path, "$.versionFlags");
    EXPECT_EQ(problems[2].path, "$.media[0].locator");
    EXPECT_EQ(problems[3].path, "$.media[0].duration");
}

TEST(Scenario, ValuesLandInTheFacadeRecords) {
    std::vector<ScenarioProblem> problems;
    const Scenario scenario = Scenario::parse(R"({
        "properties": {"b": "2", "a": "1"},
        "si": {"programEvents": [{"value1": 7, "text0": "News", "bytes1": "0A ff", "strings2": ["x", ""]}],
               "descriptors": {"programEvent": [{"for": [1, 2], "descriptors": [{"id": 77, "data": "01 02"}]}]}},
        "streamEvents": [{"at": 0.5, "every": 2, "code": 3, "value": -9000000000, "byte": 255, "text": "t"}]
    })", problems);
    ASSERT_TRUE(problems.empty()) << problems[0].describe();
    // File order is kept.
    EXPECT_EQ(scenario.properties.front().name, "b");
    const auto& event = scenario.si.programEvents.front();
    EXPECT_EQ(event.value1, 7);
    EXPECT_EQ(event.text0, "News");
    EXPECT_EQ(event.bytes1, (std::list<unsigned char>{0x0A, 0xFF}));
    EXPECT_EQ(event.strings2, (std::list<std::string>{"x", ""}));
    const auto& descriptors = scenario.si.programEventDescriptors.at({1, 2});
    EXPECT_EQ(descriptors.front().id, 77);
    EXPECT_EQ(descriptors.front().data, (std::list<unsigned char>{1, 2}));
    // Absent records keep the "none" markers.
    EXPECT_EQ(scenario.si.network.value0, -1);
    EXPECT_EQ(scenario.si.transportStream.value1, -1);
    const auto& stream = scenario.streamEvents.front();
    EXPECT_EQ(stream.command.commandValue, -9000000000LL);
    EXPECT_EQ(stream.command.commandByte, 255);
    EXPECT_EQ(stream.name, "nclEditingCommand");
    ASSERT_TRUE(stream.every.has_value());
    EXPECT_DOUBLE_EQ(*stream.every, 2.0);
}

std::string readSource(const std::string& path) {
    std::ifstream in(std::string(TESSARINE_SOURCE_DIR) + "/" + path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(Scenario, TheGuideShowsTheBuiltInScenarioAsItIs) {
    const std::string scenario = Scenario::defaultText();
    ASSERT_FALSE(scenario.empty());
    EXPECT_EQ(readSource("sim/default-scenario.json"), scenario);
    EXPECT_NE(readSource("docs/SIMULATOR.md").find("```json\n" + scenario + "```"), std::string::npos)
        << "docs/SIMULATOR.md no longer shows sim/default-scenario.json";
}

}  // namespace
}  // namespace sim
}  // namespace tessarine
