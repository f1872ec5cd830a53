// Facade records to wire records: what is cut, what is copied whole, what
// never reaches the wire.
#include <gtest/gtest.h>

#include <cstring>

#include "binding/RecordConverter.h"

namespace {

using namespace middlewarefacade;
using tessarine::binding::toWire;

const std::string text254(254, 'a');
const std::string text300 = std::string(254, 'b') + std::string(46, 'c');

TEST(RecordConverter, ProgramEventCutsItsTextsButCarriesListsWhole) {
    ProgramEvent_ event{1, 2, 3, 4, text300, text254, "", 99, 5, 6, 7, {0x01, 0xff}, {}, {0x00},
                        {text300, ""}, {}, {"x"}};
    const tessarine::program_event wire = toWire(event);

    EXPECT_EQ((std::vector<int>{wire.value0, wire.value1, wire.value2, wire.value3, wire.value4, wire.value5,
                                wire.value6}),
              (std::vector<int>{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(wire.text0, text300.substr(0, 254));
    EXPECT_EQ(wire.text1, text254);
    EXPECT_EQ(wire.bytes0, (std::vector<unsigned char>{0x01, 0xff}));
    EXPECT_TRUE(wire.bytes1.empty());
    EXPECT_EQ(wire.bytes2, (std::vector<unsigned char>{0x00}));
    EXPECT_EQ(wire.strings0, (std::vector<std::string>{text300, ""}));  // list strings are never cut
    EXPECT_EQ(wire.strings2, (std::vector<std::string>{"x"}));

    unsigned char bytes[tessarine::program_event::WIRE_SIZE];
    wire.encode(bytes);
    EXPECT_EQ(bytes[32 + 253], 'b');
    EXPECT_EQ(bytes[32 + 254], 0) << "a 300-character text ends after 254 characters";
    EXPECT_EQ(tessarine::program_event::counts(bytes), (std::array<std::uint32_t, 6>{2, 0, 1, 2, 0, 1}));
    int reserved;
    std::memcpy(&reserved, bytes + 16, 4);
    EXPECT_EQ(reserved, 0) << "the facade's unread word does not travel";
}

TEST(RecordConverter, TransportStreamKeepsOnlyKnownKinds) {
    const struct {
        int kind;
        int onWire;
    } cases[] = {{1, 1}, {2, 2}, {3, 3}, {0, 0}, {4, 0}, {-1, 0}};
    for (const auto& c : cases) {
        TransportStream_ stream{10, 11, "never sent", 77, 13, c.kind, 12};
        const tessarine::transport_stream wire = toWire(stream);
        EXPECT_EQ(wire.value4, c.onWire) << "kind " << c.kind;
        EXPECT_EQ((std::vector<int>{wire.value0, wire.value1, wire.value2, wire.value3}),
                  (std::vector<int>{10, 11, 12, 13}));
    }
}

TEST(RecordConverter, SecondServiceTextNeverReachesTheWire) {
    Service_ source{1, 2, 3, text300, 4, 5, "secret"};
    const tessarine::service wire = toWire(source);
    unsigned char bytes[tessarine::service::WIRE_SIZE];
    wire.encode(bytes);
    EXPECT_EQ(wire.text0, text300.substr(0, 254));
    EXPECT_EQ((std::vector<int>{wire.value0, wire.value1, wire.value2, wire.value3, wire.value4}),
              (std::vector<int>{1, 2, 3, 4, 5}));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes), sizeof bytes).find("secret"), std::string::npos);
}

TEST(RecordConverter, PropertyFieldsFollowTheTextFieldRule) {
    const struct {
        std::string value;
        std::size_t kept;
    } cases[] = {{text254, 254}, {std::string(400, 'v'), 254}, {"", 0}};
    for (const auto& c : cases) {
        const tessarine::system_property wire = toWire(Property_{"name", c.value});
        EXPECT_EQ(wire.code, 0);
        EXPECT_STREQ(wire.name, "name");
        EXPECT_EQ(strnlen(wire.value, sizeof wire.value), c.kept);
        EXPECT_EQ(wire.value[254], '\0');
    }
}

}  // namespace
