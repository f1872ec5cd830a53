#pragma once

#include <cstdint>

#include "tessarine/protocol/Codes.h"
#include "tessarine/protocol/Requests.h"
#include "tessarine/protocol/Table.h"

// The record types of the control channel, and what the bridge does with a
// record that has no request of its own (Requests.h): the dispatcher's one
// table for unknown types and codes.
namespace tessarine {
namespace protocol {

// What a code of an accepted type gets when no request row matches it.
enum class UnknownCode {
    Ignored,  // nothing: no answer, no line
    Logged,   // no answer; RecordType::unknownCodeReport and the code on standard error
    Served,   // cannot happen: the type's ANY_CODE row serves every code
};

// Written, with the type, when the client sends a type outside 0-10 or one
// that only the bridge sends.
inline constexpr const char* UNKNOWN_TYPE_REPORT = "Unknown message: ";

struct RecordType {
    message_type type;
    const char* name;
    bool fromClient;  // false: the bridge sends it, a client's one is an unknown type
    UnknownCode unknownCode;
    const char* unknownCodeReport;  // the line's text when Logged
};

#define TESSARINE_TYPE(type) type, #type

inline constexpr RecordType RECORD_TYPES[] = {
    {TESSARINE_TYPE(MSG_VIDEO), true, UnknownCode::Ignored, nullptr},
    {TESSARINE_TYPE(MSG_APP_STATE), true, UnknownCode::Served, nullptr},
    {TESSARINE_TYPE(MSG_PROPERTY), true, UnknownCode::Ignored, nullptr},
    {TESSARINE_TYPE(MSG_AUDIO), true, UnknownCode::Served, nullptr},
    {TESSARINE_TYPE(MSG_TUNER), true, UnknownCode::Served, nullptr},
    {TESSARINE_TYPE(MSG_CAROUSEL), true, UnknownCode::Ignored, nullptr},
    {TESSARINE_TYPE(MSG_SI), true, UnknownCode::Logged, "Unknown si message type:  "},
    {TESSARINE_TYPE(MSG_LIST_HEADER), false, UnknownCode::Ignored, nullptr},
    {TESSARINE_TYPE(MSG_MEDIA), true, UnknownCode::Ignored, nullptr},
    {TESSARINE_TYPE(MSG_DSMCC), false, UnknownCode::Ignored, nullptr},
    {TESSARINE_TYPE(MSG_VERSION), true, UnknownCode::Served, nullptr},
};

#undef TESSARINE_TYPE

// The record type `type`, or null outside 0-10 (negative values too).
constexpr const RecordType* findRecordType(std::int32_t type) { return rowOf(RECORD_TYPES, type); }

namespace check {
// Rows in type order; a type has an ANY_CODE row exactly when it serves
// every code; requests come only in types the client may send.
constexpr bool recordTypesAreConsistent() {
    if (!inCodeOrder(RECORD_TYPES, [](const RecordType& kind) { return kind.type; })) return false;
    for (const RecordType& kind : RECORD_TYPES) {
        bool any = false, some = false;
        for (const Request& r : REQUESTS) {
            if (r.type != kind.type) continue;
            some = true;
            any = any || r.code == ANY_CODE;
        }
        if (some != kind.fromClient) return false;
        if (any != (kind.unknownCode == UnknownCode::Served)) return false;
        if ((kind.unknownCodeReport != nullptr) != (kind.unknownCode == UnknownCode::Logged)) return false;
    }
    return true;
}
static_assert(recordTypesAreConsistent(), "the record types agree with the requests");
}  // namespace check

}  // namespace protocol
}  // namespace tessarine
