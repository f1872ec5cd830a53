// The section filter: its comparison forms, and sections read from the test
// streams against the sections biTStream finds in the same files.

#include <gtest/gtest.h>

#include <chrono>

#include "StreamFiles.h"
#include "sim/broadcast/SectionFilter.h"

namespace tessarine::broadcast::test {
namespace {

using Clock = std::chrono::steady_clock;

// An EIT p/f header: table 0x4E, service 0x0065, version 3, section 1.
const Bytes SECTION = {0x4E, 0xF0, 0x0F, 0x00, 0x65, 0xC7, 0x01, 0x01, 0x04, 0x21, 0x20, 0x01};

bool matches(const FilterSettings& f) { return sectionMatches(f, SECTION.data(), SECTION.size()); }

TEST(SectionMatching, TableIdAndPositiveForm) {
    FilterSettings f;
    EXPECT_TRUE(matches(f));
    f.tableId = 0x4E;
    EXPECT_TRUE(matches(f));
    f.positive = Comparison{3, {0x00, 0x65}, {}, {}};  // service id, whole bytes
    EXPECT_TRUE(matches(f));
    f.positive = Comparison{3, {0x00, 0x66}, {0xFF, 0xFE}, {}};  // last bit masked out
    EXPECT_FALSE(matches(f));
    f.positive = Comparison{3, {0x00, 0x64}, {0xFF, 0xFE}, {}};
    EXPECT_TRUE(matches(f));
    f.positive = Comparison{11, {0x01, 0x00}, {}, {}};  // runs past the end
    EXPECT_FALSE(matches(f));
    f.positive.reset();
    f.tableId = 0x4F;
    EXPECT_FALSE(matches(f));
}

TEST(SectionMatching, GreaterAndLessCompareMaskedBytesAsOneNumber) {
    FilterSettings f;
    f.greater = Comparison{3, {0x00, 0x64}, {}, {}};
    EXPECT_TRUE(matches(f));
    f.greater = Comparison{3, {0x00, 0x65}, {}, {}};
    EXPECT_FALSE(matches(f));  // equal is not greater
    f.greater.reset();
    f.less = Comparison{3, {0x01, 0x00}, {}, {}};
    EXPECT_TRUE(matches(f));
    f.less = Comparison{6, {0x01}, {}, {}};  // section_number 1 < 1 fails
    EXPECT_FALSE(matches(f));
}

TEST(SectionMatching, XorFormWaitsForAChangedVersion) {
    FilterSettings f;
    f.exclusive = Comparison{5, {0xC7}, {0x3E}, {}};  // version bits must differ from 3
    EXPECT_FALSE(matches(f));
    f.exclusive = Comparison{5, {0xC5}, {0x3E}, {}};  // version 2 is known: 3 differs
    EXPECT_TRUE(matches(f));
    // Mode bits 1 must be equal: table id equal, version different.
    f.exclusive = Comparison{0, {0x4E, 0, 0, 0, 0, 0xC5}, {0xFF, 0, 0, 0, 0, 0x3E}, {0xFF}};
    EXPECT_TRUE(matches(f));
    f.exclusive->value[0] = 0x4F;
    EXPECT_FALSE(matches(f));
}

class FilterOnStream : public ::testing::Test {
protected:
    Bytes ts = readFile(dataFile("broadcast.ts"));
    SiModel model;
    TsInput input{model};
    SectionFilter filter{input};

    std::vector<Bytes> readAll() {
        filter.set_time_out(0);
        std::vector<Bytes> sections;
        for (Bytes s; !(s = filter.read_section()).empty();) sections.push_back(s);
        return sections;
    }
};

TEST_F(FilterOnStream, SdtAndEitPresentFollowingAreWholeAndByteIdentical) {
    for (auto [pid, table] : {std::pair<int, int>{0x11, 0x42}, {0x12, 0x4E}}) {
        filter.set_pid(pid);
        filter.set_table_id(table);
        feedAll(input, ts);
        std::vector<Bytes> read = readAll();
        std::set<Bytes> inFile = sectionsInFile(ts, static_cast<uint16_t>(pid), static_cast<uint8_t>(table));
        ASSERT_FALSE(inFile.empty());
        EXPECT_GE(read.size(), inFile.size()) << "repetitions are delivered too";
        std::set<Bytes> distinct(read.begin(), read.end());
        EXPECT_EQ(distinct, inFile);
        for (const Bytes& s : read) EXPECT_TRUE(psi_check_crc(s.data()));
    }
}

TEST_F(FilterOnStream, PositiveFilterSelectsOneServicesFollowingEvent) {
    filter.set_pid(0x12);
    filter.set_table_id(0x4E);
    filter.set_positive_filter(3, {0x00, 0x66, 0x00, 0x01}, {0xFF, 0xFF, 0x00, 0xFF});
    feedAll(input, ts);
    std::vector<Bytes> read = readAll();
    ASSERT_FALSE(read.empty());
    for (const Bytes& s : read) {
        EXPECT_EQ(psi_get_tableidext(s.data()), 0x66);
        EXPECT_EQ(psi_get_section(s.data()), 1);
    }
}

TEST_F(FilterOnStream, NoMatchTimesOutEmptyAndStopPauses) {
    filter.set_pid(0x11);
    filter.set_table_id(0x46);  // SDT other: not in the stream
    filter.set_time_out(200);
    feedAll(input, ts);
    auto begin = Clock::now();
    EXPECT_TRUE(filter.read_section().empty());
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(190));

    filter.set_table_id(0x42);
    filter.stop();
    feedAll(input, ts);
    EXPECT_TRUE(readAll().empty());
    filter.start();
    feedAll(input, ts);
    EXPECT_FALSE(readAll().empty());
}

TEST_F(FilterOnStream, QueueIsBoundedAndDropsCounted) {
    filter.set_pid(0x00);  // PAT, ten times a second
    for (int i = 0; i < 4; ++i) feedAll(input, ts);
    EXPECT_EQ(readAll().size(), SectionFilter::QUEUE_LIMIT);
    EXPECT_GT(input.counters().sectionsDropped, 0u);
}

TEST_F(FilterOnStream, XorFilterCatchesTheVersionChange) {
    Bytes changing = readFile(dataFile("broadcast-version.ts"));
    filter.set_pid(0x12);
    filter.set_table_id(0x4E);
    filter.set_xor_filter(5, {0xC1}, {0x3E}, {});  // anything but version 0
    feedAll(input, changing);
    std::vector<Bytes> read = readAll();
    ASSERT_FALSE(read.empty());
    for (const Bytes& s : read) EXPECT_EQ(psi_get_version(s.data()), 1);
    filter.clear_xor_filter();
    feedAll(input, changing);
    std::set<int> versions;
    for (const Bytes& s : readAll()) versions.insert(psi_get_version(s.data()));
    EXPECT_EQ(versions, (std::set<int>{0, 1}));
}

}  // namespace
}  // namespace tessarine::broadcast::test
