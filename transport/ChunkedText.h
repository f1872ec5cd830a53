#pragma once

#include <cstddef>
#include <string>

#include "tessarine/SendBatch.h"
#include "tessarine/message.h"

namespace tessarine {

// Appends `record` carrying `text` in its text area [areaOffset, areaOffset +
// areaSize). A text of at most CHUNK_SIZE characters goes in one record. A
// longer one goes as a MSG_LIST_HEADER record (all zero but its type and
// code = N + 1, N = length / CHUNK_SIZE) followed by N + 1 copies of `record`
// whose areas hold the consecutive chunks; the last holds the remainder,
// possibly nothing. The area is cleared before each chunk.
void encodeChunkedText(SendBatch& batch, message& record, std::size_t areaOffset, std::size_t areaSize,
                       const std::string& text);

}  // namespace tessarine
