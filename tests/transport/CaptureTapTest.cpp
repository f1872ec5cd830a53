#include "transport/CaptureTap.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "support/TempDir.h"
#include "tessarine/message.h"
#include "tools/cli/CaptureReader.h"

namespace tessarine {
namespace {

using testing::TempDir;

// The packets of a capture, the drops and comments of its closing statistics.
struct ReadBack {
    explicit ReadBack(const std::string& path) {
        cli::CaptureReader reader;
        cli::CaptureBlock block;
        EXPECT_TRUE(reader.open(path)) << reader.error();
        while (reader.next(block)) {
            packets += block.kind == cli::CaptureBlock::PACKET;
            dropped += block.dropped;
            comment += block.comment;
        }
        EXPECT_EQ(reader.error(), "");
    }
    std::size_t packets = 0;
    std::uint64_t dropped = 0;
    std::string comment;
};

TEST(CaptureTap, RecordsThatFindTheQueueFullAreCountedAndTheCountEndsTheFile) {
    TempDir dir;
    CaptureTap tap(MESSAGE_SIZE);  // one record: the writer cannot take them as fast as they come
    ASSERT_TRUE(tap.start(dir.file("c.pcapng"), 0));
    message record;
    record.clear();
    constexpr std::size_t THREADS = 4, EACH = 100, OFFERED = THREADS * EACH;  // as host threads send events
    std::vector<std::thread> hosts;
    for (std::size_t t = 0; t < THREADS; ++t) {
        hosts.emplace_back([&] {
            for (std::size_t i = 0; i < EACH; ++i) tap.record(CaptureTap::CONTROL, 2, record.bytes(), MESSAGE_SIZE);
        });
    }
    for (auto& host : hosts) host.join();
    tap.stop();
    const std::uint64_t dropped = tap.dropped();
    ASSERT_TRUE(tap.start(dir.file("c.pcapng"), 0));  // the same file again: a section more, nothing lost
    tap.record(CaptureTap::CONTROL, 1, record.bytes(), MESSAGE_SIZE);
    tap.stop();
    const ReadBack file(dir.file("c.pcapng"));
    EXPECT_GT(dropped, 0u);
    EXPECT_EQ(file.dropped, dropped);
    EXPECT_EQ(file.packets + file.dropped, OFFERED + 1);
    EXPECT_NE(file.comment.find(std::to_string(file.dropped) + " dropped"), std::string::npos) << file.comment;
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
    EXPECT_TRUE(tap.start(dir.file("again.pcapng"), 0));  // the ended capture does not hold the tap
    tap.stop();
    const ReadBack file(dir.file("c.pcapng"));
    EXPECT_GT(file.packets, 0u);
    EXPECT_LE(std::filesystem::file_size(dir.file("c.pcapng")), LIMIT);
    EXPECT_NE(file.comment.find("limit"), std::string::npos) << file.comment;
    EXPECT_EQ(testing::entriesIn("/proc/self/fd"), descriptors);
    EXPECT_EQ(testing::entriesIn("/proc/self/task"), threads);
    EXPECT_FALSE(tap.start(dir.file("missing/c.pcapng"), 0));
}

}  // namespace
}  // namespace tessarine
