#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tessarine/SendBatch.h"
#include "tessarine/TextField.h"
#include "transport/ChunkedText.h"
#include "transport/ListEncoder.h"

namespace tessarine {
namespace {

message recordAt(const SendBatch& batch, std::size_t index) {
    message record;
    std::memcpy(record.bytes(), batch.bytes().data() + index * MESSAGE_SIZE, MESSAGE_SIZE);
    return record;
}

TEST(TextField, CutsAt254AndPadsWithNul) {
    message record;
    std::memset(record.bytes(), 0xAB, MESSAGE_SIZE);
    writeTextField(record, FIRST_TEXT_OFFSET, std::string(254, 'x'));
    EXPECT_EQ(readText(record, FIRST_TEXT_OFFSET), std::string(254, 'x'));
    EXPECT_EQ(record.bytes()[FIRST_TEXT_OFFSET + 254], 0);
    EXPECT_EQ(record.bytes()[SECOND_TEXT_OFFSET], 0xAB) << "the field is exactly 255 bytes";

    writeTextField(record, FIRST_TEXT_OFFSET, std::string(300, 'y'));
    EXPECT_EQ(readText(record, FIRST_TEXT_OFFSET), std::string(254, 'y'));

    writeTextField(record, FIRST_TEXT_OFFSET, std::string("ab\0cd", 5));
    EXPECT_EQ(readText(record, FIRST_TEXT_OFFSET), "ab");
    for (std::size_t i = 2; i < TEXT_FIELD_SIZE; ++i) ASSERT_EQ(record.bytes()[FIRST_TEXT_OFFSET + i], 0) << i;
    EXPECT_EQ(cutText(std::string(255, 'z')).size(), 254u);
}

TEST(TextField, ReadingNeverPassesTheRecordEnd) {
    message record;
    std::memset(record.bytes(), 'q', MESSAGE_SIZE);
    EXPECT_EQ(readText(record, 16).size(), MESSAGE_SIZE - 16);
    EXPECT_EQ(readText(record, MESSAGE_SIZE), "");
}

TEST(ListEncoder, HeaderThenItemsInTheRequestRecord) {
    message request;
    request.clear();
    request.type = MSG_TUNER;
    request.code = 1;
    request.put<std::int32_t>(40, 777);  // a byte no item writes
    SendBatch batch;
    const std::vector<int> ids{5, 9};
    encodeList(batch, request, 2, ids, [](message& r, int id) { r.put<std::int32_t>(12, id); });

    ASSERT_EQ(batch.byteCount(), 3 * MESSAGE_SIZE);
    const message header = recordAt(batch, 0);
    EXPECT_EQ(header.type, MSG_LIST_HEADER);
    EXPECT_EQ(header.code, 2);
    EXPECT_EQ(header.get<std::int32_t>(40), 777) << "the header keeps the request's other bytes";
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const message item = recordAt(batch, i + 1);
        EXPECT_EQ(item.type, MSG_TUNER);
        EXPECT_EQ(item.code, 2);
        EXPECT_EQ(item.get<std::int32_t>(12), ids[i]);
        EXPECT_EQ(item.get<std::int32_t>(40), 777) << "bytes are not cleared between items";
    }

    SendBatch empty;
    encodeList(empty, request, 6, std::vector<int>{}, [](message&, int) {});
    ASSERT_EQ(empty.byteCount(), MESSAGE_SIZE);
    EXPECT_EQ(recordAt(empty, 0).code, 0);
}

TEST(ListEncoder, TrailingDataFollowsEachItem) {
    message request;
    request.clear();
    request.type = MSG_SI;
    SendBatch batch;
    const std::vector<std::string> items{"ab", "", "c"};
    encodeList(
        batch, request, 3, items, [](message& r, const std::string& s) { r.put<std::uint32_t>(16, s.size()); },
        [](SendBatch& b, const std::string& s) {
            if (!s.empty()) b.addRaw(s.data(), s.size());
        });
    ASSERT_EQ(batch.byteCount(), 4 * MESSAGE_SIZE + 3);
    const auto& bytes = batch.bytes();
    EXPECT_EQ(std::string(bytes.begin() + 2 * MESSAGE_SIZE, bytes.begin() + 2 * MESSAGE_SIZE + 2), "ab");
    EXPECT_EQ(bytes[4 * MESSAGE_SIZE + 2], 'c');
}

// The DSM-CC text area: bytes 25 to 1952.
constexpr std::size_t AREA = 25;
constexpr std::size_t AREA_SIZE = 1928;

std::string chunkText(const message& record) {
    return std::string(reinterpret_cast<const char*>(record.bytes() + AREA),
                       strnlen(reinterpret_cast<const char*>(record.bytes() + AREA), AREA_SIZE));
}

TEST(ChunkedText, SplitsAbove1920WithAHeaderOfNPlusOne) {
    struct Case {
        std::size_t length;
        std::vector<std::size_t> chunks;  // empty: a single record without header
    };
    const Case cases[] = {{0, {}}, {1920, {}}, {1921, {1920, 1}}, {3840, {1920, 1920, 0}},
                          {4000, {1920, 1920, 160}}, {5000, {1920, 1920, 1160}}};
    for (const Case& c : cases) {
        std::string text(c.length, '\0');
        for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>('a' + i % 26);
        message record;
        record.clear();
        record.type = MSG_DSMCC;
        record.code = 42;
        record.bytes()[24] = 7;
        std::memset(record.bytes() + AREA, 'Z', AREA_SIZE);  // stale bytes must be cleared
        SendBatch batch;
        encodeChunkedText(batch, record, AREA, AREA_SIZE, text);

        if (c.chunks.empty()) {
            ASSERT_EQ(batch.byteCount(), MESSAGE_SIZE) << c.length;
            EXPECT_EQ(chunkText(recordAt(batch, 0)), text);
            continue;
        }
        ASSERT_EQ(batch.byteCount(), (c.chunks.size() + 1) * MESSAGE_SIZE) << c.length;
        const message header = recordAt(batch, 0);
        EXPECT_EQ(header.type, MSG_LIST_HEADER);
        EXPECT_EQ(header.code, static_cast<std::int32_t>(c.chunks.size()));
        for (std::size_t i = 12; i < MESSAGE_SIZE; ++i) ASSERT_EQ(header.bytes()[i], 0) << "header byte " << i;
        std::string joined;
        for (std::size_t i = 0; i < c.chunks.size(); ++i) {
            const message chunk = recordAt(batch, i + 1);
            EXPECT_EQ(chunk.type, MSG_DSMCC);
            EXPECT_EQ(chunk.code, 42);
            EXPECT_EQ(chunk.bytes()[24], 7);
            EXPECT_EQ(chunkText(chunk).size(), c.chunks[i]) << c.length << " chunk " << i;
            joined += chunkText(chunk);
        }
        EXPECT_EQ(joined, text);
    }
}

}  // namespace
}  // namespace tessarine
