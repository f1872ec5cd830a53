// What reaches the table decoders: repeats of decoded versions are held
// back, and the decoders still see every loss and duplicate.

#include <gtest/gtest.h>

#include <bitstream/mpeg/psi.h>
#include <bitstream/mpeg/ts.h>

#include "StreamFiles.h"
#include "sim/broadcast/RepeatGate.h"

namespace tessarine::broadcast::test {
namespace {

constexpr uint16_t SDT = 0x11;

struct Section {
    uint8_t table;
    uint16_t extension;
    uint8_t version;
    uint16_t length;
};

// A packet whose payload starts the given sections back to back.
Bytes packet(uint8_t cc, std::initializer_list<Section> sections) {
    Bytes p(TS_SIZE, 0xFF);
    ts_init(p.data());
    ts_set_pid(p.data(), SDT);
    ts_set_unitstart(p.data());
    ts_set_payload(p.data());
    ts_set_cc(p.data(), cc);
    p[4] = 0;  // pointer field
    uint8_t* s = p.data() + 5;
    for (const Section& section : sections) {
        psi_init(s, true);
        psi_set_tableid(s, section.table);
        psi_set_length(s, section.length);
        psi_set_tableidext(s, section.extension);
        psi_set_version(s, section.version);
        psi_set_current(s);
        s += PSI_HEADER_SIZE + section.length;
    }
    return p;
}

TEST(RepeatGate, HoldsBackDecodedVersionsAndRenumbersAroundThem) {
    RepeatGate gate;
    uint8_t out[TS_SIZE];
    auto admit = [&](const Bytes& p, bool idle = true) { return gate.admit(SDT, p.data(), idle, out); };

    ASSERT_TRUE(admit(packet(5, {{0x42, 1, 3, 20}})));
    EXPECT_EQ(ts_get_cc(out), 5);
    gate.decoded(SDT, 0x42, 1, 3, true);
    gate.ignored(SDT, 0x46, 9);
    EXPECT_FALSE(admit(packet(6, {{0x42, 1, 3, 20}})));
    EXPECT_FALSE(admit(packet(7, {{0x42, 1, 3, 20}, {0x46, 9, 17, 30}})));
    Bytes continuation = packet(8, {});
    continuation[1] &= ~0x40;  // no unit start
    EXPECT_FALSE(admit(continuation)) << "idle decoders ignore a packet where no section starts";

    EXPECT_TRUE(admit(packet(9, {{0x42, 1, 3, 20}}), false)) << "a decoder in the middle of a section";
    EXPECT_EQ(ts_get_cc(out), 6) << "held-back packets do not look like a loss";
    EXPECT_TRUE(admit(packet(10, {{0x42, 1, 4, 20}})));
    EXPECT_TRUE(admit(packet(11, {{0x42, 1, 3, 20}, {0x42, 2, 3, 20}})));
    Bytes cut = packet(12, {{0x42, 1, 3, 175}});
    cut[183] = 0x42;  // a second section whose header the packet's end cuts
    EXPECT_TRUE(admit(cut));
    EXPECT_EQ(ts_get_cc(out), 9);

    EXPECT_TRUE(admit(packet(12, {{0x42, 1, 3, 20}})));
    EXPECT_EQ(ts_get_cc(out), 9) << "a duplicate stays one";
    EXPECT_TRUE(admit(packet(15, {{0x42, 1, 3, 20}})));
    EXPECT_EQ(ts_get_cc(out), 11) << "a loss stays one";
    EXPECT_TRUE(admit(packet(0, {{0x42, 1, 3, 20}}))) << "after a loss the decoders build their tables anew";
}

TEST(RepeatGate, RemembersABoundedNumberOfTables) {
    RepeatGate gate;
    uint8_t out[TS_SIZE];
    gate.decoded(SDT, 0x42, 0, 1, true);
    EXPECT_TRUE(gate.admit(SDT, packet(0, {{0x42, 0, 1, 20}}).data(), true, out)) << "a PID's first packet";
    EXPECT_FALSE(gate.admit(SDT, packet(1, {{0x42, 0, 1, 20}}).data(), true, out));
    for (uint16_t extension = 1; extension <= RepeatGate::MAX_TABLES; ++extension)
        gate.decoded(SDT, 0x42, extension, 1, true);
    EXPECT_TRUE(gate.admit(SDT, packet(2, {{0x42, 0, 1, 20}}).data(), true, out));
}

}  // namespace
}  // namespace tessarine::broadcast::test
