#pragma once

#include <cstdint>

#include "tessarine/SendBatch.h"
#include "tessarine/message.h"

namespace tessarine {

struct NoTrailingData {
    template <typename Item>
    void operator()(SendBatch&, const Item&) const {}
};

// The list convention: the request record goes out as a MSG_LIST_HEADER with
// the item count (its other bytes as the request left them); then the record
// takes back the request's type and `itemCode`, and for each item
// `writeItem(record, item)` fills its fields and the record is appended.
// Bytes an item does not write keep what the previous item left.
// `trailer(batch, item)` appends data that follows an item's record.
// Encoding stops when the batch can take no more (its connection failed).
template <typename Items, typename WriteItem, typename Trailer = NoTrailingData>
void encodeList(SendBatch& batch, message& record, std::int32_t itemCode, const Items& items,
                WriteItem writeItem, Trailer trailer = {}) {
    const std::int32_t type = record.type;
    record.type = MSG_LIST_HEADER;
    record.code = static_cast<std::int32_t>(items.size());
    const bool open = batch.add(record);
    record.type = type;
    record.code = itemCode;
    if (!open) return;
    for (const auto& item : items) {
        writeItem(record, item);
        if (!batch.add(record)) return;
        trailer(batch, item);
    }
}

}  // namespace tessarine
