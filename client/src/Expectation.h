#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tessarine/message.h"

namespace tessarine {
namespace client {
namespace detail {

// How the items of a list answer carry their code.
enum class ItemCode {
    Exact,        // a fixed code (the request's, or the SI item code)
    EqualsCount,  // the list's count (video languages, tuner identifiers)
    Any,          // meaningless (property lists: the item's first word)
};

// Raw bytes that follow a record on the stream.
enum class Trailing { None, ProgramEvent, Descriptor };

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
    ItemCode itemCode = ItemCode::Exact;
    Trailing trailing = Trailing::None;
};

// The answer that the bridge gives to the request (type, code), or nothing
// for requests that it does not answer.
std::optional<Expectation> expectationFor(std::int32_t type, std::int32_t code);

// "MSG_SI code 6", for error texts.
std::string describeRecord(std::int32_t type, std::int32_t code);

// The data after one record: a program event's three byte lists and three
// string lists, or a descriptor's bytes (in bytes[0]).
struct TrailingData {
    std::array<std::vector<std::uint8_t>, 3> bytes;
    std::array<std::vector<std::string>, 3> strings;
};

// An answer as read from the stream: the list header (for lists), the
// records, and the trailing data of each record when the answer has any.
struct Answer {
    std::optional<message> header;
    std::vector<message> records;
    std::vector<TrailingData> trailing;
};

}  // namespace detail
}  // namespace client
}  // namespace tessarine
