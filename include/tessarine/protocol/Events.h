#pragma once

#include <cstdint>

#include "tessarine/protocol/Codes.h"
#include "tessarine/protocol/Fields.h"
#include "tessarine/protocol/Table.h"

// The records the bridge sends on its own initiative: events from the
// middleware and the application-state request. Each is built from a cleared
// record: every byte that `fields` does not name is zero.
namespace tessarine {
namespace protocol {

struct Event {
    std::int32_t type;
    std::int32_t code;          // ANY_CODE: the code carries a value (see the row)
    const char* name;
    const char* operation;      // the IpcServerManager operation that sends it
    Fields fields;
    // The field whose text is cut into CHUNK_SIZE pieces when it is longer:
    // then a MSG_LIST_HEADER record (all zero but its code, the number of
    // pieces) comes first, and one record per piece follows, each with the
    // same other fields and the piece NUL-padded in the field; the last piece
    // may be empty. A text of at most CHUNK_SIZE characters is one record.
    const char* chunked = nullptr;
};

#define TESSARINE_CODE(code) code, #code

inline constexpr Event EVENTS[] = {
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GRAPHICS_SETTINGS), "changeGraphicsSettings", table(GRAPHICS_SETTINGS_FIELDS)},
    {MSG_CAROUSEL, TESSARINE_CODE(CAROUSEL_DOWNLOAD_COMPLETE), "downloadComplete", table(DOWNLOAD_COMPLETE_FIELDS)},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_END_OF_MEDIA), "endOfMedia", table(END_OF_MEDIA_FIELDS)},
    // The code is the command's commandCode.
    {MSG_DSMCC, ANY_CODE, "MSG_DSMCC", "sendDsmCCCommand", table(DSMCC_FIELDS), "commandText"},
    // The code is the state asked for; the client answers with MSG_APP_STATE (Requests.h).
    {MSG_APP_STATE, ANY_CODE, "MSG_APP_STATE", "setApplicationState", Fields{}},
};

#undef TESSARINE_CODE

// The event (type, code), or null.
constexpr const Event* findEvent(std::int32_t type, std::int32_t code) {
    for (const Event& event : EVENTS) {
        if (event.type == type && (event.code == code || event.code == ANY_CODE)) return &event;
    }
    return nullptr;
}

namespace check {
constexpr bool eventsAreConsistent() {
    for (const Event& e : EVENTS) {
        for (const Field& f : e.fields) {
            if (f.offset < PAYLOAD_OFFSET || f.offset + f.width > MESSAGE_SIZE) return false;
        }
        if (e.chunked != nullptr) {
            const Field* text = findField(e.fields, e.chunked);
            if (text == nullptr || text->kind != FieldKind::Text || text->width <= CHUNK_SIZE) return false;
        }
    }
    return true;
}
static_assert(eventsAreConsistent(), "every chunk and its NUL fit its field");
}  // namespace check

}  // namespace protocol
}  // namespace tessarine
