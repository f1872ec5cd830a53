#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tessarine/message.h"
#include "tessarine/protocol/Requests.h"

namespace tessarine {
namespace client {
namespace detail {

using protocol::ItemCode;
using protocol::Trailing;

// What the answer to a request looks like, so that the reader can frame it
// and tell it from events. The protocol has no request identifiers: the
// answer is recognised by type and code alone.
struct Expectation {
    enum class Kind {
        Single,    // one record with `type` and `code`
        List,      // a list header, then items of `type` (code by itemCode)
        Anything,  // any one record that is not an event (raw requests)
    };
    Kind kind = Kind::Single;
    std::int32_t type = 0;
    std::int32_t code = 0;
    ItemCode itemCode = ItemCode::Fixed;
    Trailing trailing = Trailing::None;
    protocol::Fields fields;  // of the answer record or of each item: where trailing counts lie
    // For a list: takes each item as it arrives, so the caller decodes it at
    // once and the answer keeps no record, only the items' trailing data (on
    // the calling thread, which reads its own answer). For a single record
    // without trailing data: takes that record, and the answer keeps none.
    // The record's 1960 bytes, valid during the call only.
    std::function<void(const unsigned char* record)> onItem;
};

// The answer that the bridge gives to the request (type, code), as the
// protocol's request table describes it, or nothing for requests that it
// does not answer.
std::optional<Expectation> expectationFor(std::int32_t type, std::int32_t code);

// "MSG_SI code 6", for error texts.
std::string describeRecord(std::int32_t type, std::int32_t code);

// The data after one record, in the order of its layout: a program event's
// three byte lists and three string lists, or a descriptor's bytes (bytes[0]).
// Fixed arrays, so that an item's data costs no allocation of its own.
struct TrailingData {
    static constexpr std::size_t MAX_PARTS = 3;  // of each kind, as a program event has
    std::array<std::vector<std::uint8_t>, MAX_PARTS> bytes;
    std::array<std::vector<std::string>, MAX_PARTS> strings;
};

// An answer as read from the stream: the list header (for lists), the
// records, and the trailing data of each record when the answer has any.
// The header lives apart, so that moving an answer moves no record.
struct Answer {
    std::unique_ptr<const message> header;
    std::vector<message> records;
    std::vector<TrailingData> trailing;
};

}  // namespace detail
}  // namespace client
}  // namespace tessarine
