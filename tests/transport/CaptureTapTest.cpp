#include "transport/CaptureTap.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/TempDir.h"
#include "tessarine/message.h"
#include "tools/cli/CaptureReader.h"

namespace tessarine {
namespace {

using testing::TempDir;

struct Read {
    std::size_t packets = 0;
    std::uint64_t dropped = 0;
    std::string comment;
    std::string error;
};

Read readBack(const std::string& path) {
    Read r;
    cli::CaptureReader reader;
    if (!reader.open(path)) return {0, 0, "", reader.error()};
    cli::CaptureBlock block;
    while (reader.next(block)) {
        r.packets += block.kind == cli::CaptureBlock::PACKET;
        r.dropped += block.dropped;
        r.comment += block.comment;
    }
    r.error = reader.error();
    return r;
}

TEST(CaptureTap, RecordsThatFindTheQueueFullAreCountedAndTheCountEndsTheFile) {
    TempDir dir;
    CaptureTap tap(3 * MESSAGE_SIZE);
    ASSERT_TRUE(tap.start(dir.file("c.pcapng"), 0));
    message record;
    record.clear();
    constexpr std::size_t OFFERED = 40;
    for (std::size_t i = 0; i < OFFERED; ++i) tap.record(CaptureTap::CONTROL, 1, record.bytes(), MESSAGE_SIZE);
    tap.stop();
    const Read r = readBack(dir.file("c.pcapng"));
    EXPECT_EQ(r.error, "");
    EXPECT_GT(tap.dropped(), 0u);
    EXPECT_EQ(r.dropped, tap.dropped());
    EXPECT_EQ(r.packets + r.dropped, OFFERED);
    EXPECT_NE(r.comment.find(std::to_string(r.dropped) + " dropped"), std::string::npos) << r.comment;
}

TEST(CaptureTap, AFileAtItsLimitEndsWithAClosingNoteAndNothingLeaks) {
    TempDir dir;
    const std::size_t descriptors = testing::entriesIn("/proc/self/fd"), threads = testing::entriesIn("/proc/self/task");
    CaptureTap tap;
    constexpr std::uint64_t LIMIT = 16384;
    ASSERT_TRUE(tap.start(dir.file("c.pcapng"), LIMIT));
    message record;
    record.clear();
    for (int i = 0; i < 50 && tap.active(); ++i) {
        tap.record(CaptureTap::SECTIONS, 2, record.bytes(), MESSAGE_SIZE);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_FALSE(tap.active());  // ended by the limit, not by stop()
    tap.stop();
    const Read r = readBack(dir.file("c.pcapng"));
    EXPECT_EQ(r.error, "");
    EXPECT_GT(r.packets, 0u);
    EXPECT_LE(std::filesystem::file_size(dir.file("c.pcapng")), LIMIT);
    EXPECT_NE(r.comment.find("limit"), std::string::npos) << r.comment;
    EXPECT_EQ(testing::entriesIn("/proc/self/fd"), descriptors);
    EXPECT_EQ(testing::entriesIn("/proc/self/task"), threads);
    EXPECT_FALSE(tap.start(dir.file("missing/c.pcapng"), 0));
    EXPECT_FALSE(tap.active());
}

}  // namespace
}  // namespace tessarine
