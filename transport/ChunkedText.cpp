#include "transport/ChunkedText.h"

#include <cstring>

namespace tessarine {

namespace {

void writeChunk(message& record, std::size_t areaOffset, std::size_t areaSize, const char* chunk,
                std::size_t length) {
    std::memset(record.bytes() + areaOffset, 0, areaSize);
    std::memcpy(record.bytes() + areaOffset, chunk, length);
}

}  // namespace

void encodeChunkedText(SendBatch& batch, message& record, std::size_t areaOffset, std::size_t areaSize,
                       const std::string& text) {
    static_assert(CHUNK_SIZE < MESSAGE_SIZE, "a chunk fits a record");
    if (text.size() <= CHUNK_SIZE) {
        writeChunk(record, areaOffset, areaSize, text.data(), text.size());
        batch.add(record);
        return;
    }
    const std::size_t fullChunks = text.size() / CHUNK_SIZE;
    message header;
    header.clear();
    header.type = MSG_LIST_HEADER;
    header.code = static_cast<std::int32_t>(fullChunks + 1);
    batch.add(header);
    for (std::size_t i = 0; i <= fullChunks; ++i) {
        const std::size_t begin = i * CHUNK_SIZE;
        const std::size_t length = i < fullChunks ? CHUNK_SIZE : text.size() - begin;
        writeChunk(record, areaOffset, areaSize, text.data() + begin, length);
        batch.add(record);
    }
}

}  // namespace tessarine
