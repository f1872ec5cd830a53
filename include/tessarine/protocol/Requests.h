#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "tessarine/protocol/Codes.h"
#include "tessarine/protocol/Fields.h"
#include "tessarine/protocol/Table.h"

// Every request the client may send on the control channel, and the answer
// the bridge gives to it. A request is a whole record of its type and code
// carrying `fields`; answers come back on the same stream, recognised by the
// type and code of the request (there are no request identifiers).
namespace tessarine {
namespace protocol {

enum class AnswerShape {
    None,     // nothing at all is sent back
    InPlace,  // the request record itself comes back with `fields` written;
              // its other bytes are as the request carried them
    List,     // a MSG_LIST_HEADER record whose code is the number of items
              // (its other bytes as the request carried them), then one record
              // per item: the request's type, the item code, the item's
              // `fields`; bytes an item does not write keep the previous one's
};

// The code of each item record of a list answer.
enum class ItemCode {
    Fixed,     // Answer::item
    Count,     // the number of items, as in the header
    ItemWord,  // the item's own first word (property lists: it means nothing)
};

// Raw bytes that follow records on the stream, outside the record framing.
enum class Trailing {
    None,
    ProgramEvent,  // after all records of the answer, each event's in order (PROGRAM_EVENT_TRAILING)
    Descriptor,    // right after each descriptor's record (DESCRIPTOR_TRAILING)
};

struct Answer {
    AnswerShape shape = AnswerShape::None;
    Fields fields;
    ItemCode itemCode = ItemCode::Fixed;
    std::int32_t item = 0;
    Trailing trailing = Trailing::None;
};

struct Request {
    std::int32_t type;
    std::int32_t code;      // ANY_CODE: every other code of the type
    const char* name;       // the code's name
    const char* operation;  // the IpcServerListener operation it reaches
    Fields fields;          // what the request carries besides type and code
    Answer answer;
};

// How trailing data is laid out: one part per count field of the record
// that precedes it, in this order.
enum class TrailingElement {
    Bytes,    // that many raw bytes
    Strings,  // that many strings, each a uint32 length (host byte order) and its bytes, no NUL
};
struct TrailingPart {
    const char* count;  // the record's field holding the number of elements
    TrailingElement element;
};
inline constexpr TrailingPart PROGRAM_EVENT_TRAILING[] = {
    {"byte_count0", TrailingElement::Bytes},     {"byte_count1", TrailingElement::Bytes},
    {"byte_count2", TrailingElement::Bytes},     {"string_count0", TrailingElement::Strings},
    {"string_count1", TrailingElement::Strings}, {"string_count2", TrailingElement::Strings},
};
inline constexpr TrailingPart DESCRIPTOR_TRAILING[] = {{"length", TrailingElement::Bytes}};

constexpr Table<TrailingPart> trailingParts(Trailing trailing) {
    switch (trailing) {
    case Trailing::ProgramEvent: return table(PROGRAM_EVENT_TRAILING);
    case Trailing::Descriptor: return table(DESCRIPTOR_TRAILING);
    case Trailing::None: break;
    }
    return {};
}

namespace answer {
constexpr Answer none() { return {}; }
template <std::size_t N>
constexpr Answer inPlace(const Field (&fields)[N], Trailing trailing = Trailing::None) {
    return {AnswerShape::InPlace, table(fields), ItemCode::Fixed, 0, trailing};
}
template <std::size_t N>
constexpr Answer list(std::int32_t item, const Field (&fields)[N], Trailing trailing = Trailing::None) {
    return {AnswerShape::List, table(fields), ItemCode::Fixed, item, trailing};
}
template <std::size_t N>
constexpr Answer listCoded(ItemCode itemCode, const Field (&fields)[N]) {
    return {AnswerShape::List, table(fields), itemCode, 0, Trailing::None};
}
}  // namespace answer

// The code and its name, from one spelling.
#define TESSARINE_CODE(code) code, #code

inline constexpr Fields NO_FIELDS{};

inline constexpr Request REQUESTS[] = {
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_SET_BOUNDS), "setVideoProperty", table(VIDEO_BOUNDS_FIELDS), answer::none()},
    // The listeners start from the request's values and write what they know.
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_BOUNDS), "getMainVideoBounds", table(VIDEO_BOUNDS_FIELDS),
     answer::inPlace(VIDEO_BOUNDS_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_RESET), "setVideoProperty", NO_FIELDS, answer::none()},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_LANGUAGE_3), "getVideoLanguage", NO_FIELDS,
     answer::inPlace(VIDEO_LANGUAGE_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_LANGUAGES), "getVideoLanguages", NO_FIELDS,
     answer::listCoded(ItemCode::Count, VIDEO_LANGUAGE_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_LANGUAGE_5), "getVideoLanguage", NO_FIELDS,
     answer::inPlace(VIDEO_LANGUAGE_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_SET_TEXT_6), "setVideoProperty", table(VIDEO_TEXT_FIELDS), answer::none()},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_SET_FLAG_7), "setVideoProperty", table(VIDEO_FLAG_FIELDS), answer::none()},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_SET_FLAG_8), "setVideoProperty", table(VIDEO_FLAG_FIELDS), answer::none()},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_RATE_9), "getVideoProperty", NO_FIELDS, answer::inPlace(VIDEO_RATE_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_RATE_10), "getVideoProperty", NO_FIELDS, answer::inPlace(VIDEO_RATE_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_RATE_11), "getVideoProperty", NO_FIELDS, answer::inPlace(VIDEO_RATE_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_RATE_12), "getVideoProperty", NO_FIELDS, answer::inPlace(VIDEO_RATE_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_RATE_13), "getVideoProperty", NO_FIELDS, answer::inPlace(VIDEO_RATE_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_RATE_14), "getVideoProperty", NO_FIELDS, answer::inPlace(VIDEO_RATE_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_RATE_15), "getVideoProperty", NO_FIELDS, answer::inPlace(VIDEO_RATE_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GET_RATE_16), "getVideoProperty", NO_FIELDS, answer::inPlace(VIDEO_RATE_FIELDS)},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_GRAPHICS_SETTINGS), "setVideoProperty", NO_FIELDS, answer::none()},
    {MSG_VIDEO, TESSARINE_CODE(VIDEO_UPDATE_REGION), "updateGraphicsRegion", table(VIDEO_BOUNDS_FIELDS),
     answer::none()},

    // The client's answer to an application-state request (the code is the state asked for).
    {MSG_APP_STATE, ANY_CODE, "MSG_APP_STATE", "setApplicationState", table(RESULT_BYTE_FIELDS), answer::none()},

    {MSG_PROPERTY, TESSARINE_CODE(PROPERTY_GET), "getSystemProperty", table(PROPERTY_NAME_FIELDS),
     answer::inPlace(PROPERTY_VALUE_FIELDS)},
    {MSG_PROPERTY, TESSARINE_CODE(PROPERTY_LIST), "getSystemProperties", NO_FIELDS,
     answer::listCoded(ItemCode::ItemWord, PROPERTY_FIELDS)},
    {MSG_PROPERTY, TESSARINE_CODE(PROPERTY_SET), "setSystemProperty", table(PROPERTY_FIELDS), answer::none()},
    {MSG_PROPERTY, TESSARINE_CODE(PROPERTY_REMOVE), "removeSystemProperty", table(PROPERTY_NAME_FIELDS),
     answer::none()},

    {MSG_AUDIO, TESSARINE_CODE(AUDIO_SOUND_LEVEL), "setVideoAudio", table(AUDIO_LEVEL_FIELDS), answer::none()},
    {MSG_AUDIO, TESSARINE_CODE(AUDIO_BALANCE_LEVEL), "setVideoAudio", table(AUDIO_LEVEL_FIELDS), answer::none()},
    {MSG_AUDIO, TESSARINE_CODE(AUDIO_BASS_LEVEL), "setVideoAudio", table(AUDIO_LEVEL_FIELDS), answer::none()},
    {MSG_AUDIO, TESSARINE_CODE(AUDIO_TREBLE_LEVEL), "setVideoAudio", table(AUDIO_LEVEL_FIELDS), answer::none()},
    {MSG_AUDIO, TESSARINE_CODE(AUDIO_MUTE), "setVideoAudio", table(AUDIO_MUTE_FIELDS), answer::none()},
    // Any other selector reaches the listeners too, and changes nothing there.
    {MSG_AUDIO, ANY_CODE, "MSG_AUDIO", "setVideoAudio", NO_FIELDS, answer::none()},

    {MSG_TUNER, TESSARINE_CODE(TUNER_CURRENT_TS_ID), "getCurrentTransportStreamID", NO_FIELDS,
     answer::inPlace(TUNER_ID_FIELDS)},
    // Any other code is the kind of identifier list asked for (TUNER_IDS_1 to TUNER_IDS_4).
    {MSG_TUNER, ANY_CODE, "TUNER_IDS", "getAllIDs", table(TUNER_PARAMETER_FIELDS),
     answer::listCoded(ItemCode::Count, TUNER_ID_FIELDS)},

    {MSG_CAROUSEL, TESSARINE_CODE(CAROUSEL_MOUNT), "mountCarousel", table(CAROUSEL_NAME_FIELDS),
     answer::inPlace(CAROUSEL_MOUNT_POINT_FIELDS)},
    {MSG_CAROUSEL, TESSARINE_CODE(CAROUSEL_UMOUNT), "umountCarousel", table(CAROUSEL_NAME_FIELDS), answer::none()},
    {MSG_CAROUSEL, TESSARINE_CODE(CAROUSEL_ADD_LISTENER), "addCarouselListener", NO_FIELDS, answer::none()},
    {MSG_CAROUSEL, TESSARINE_CODE(CAROUSEL_REMOVE_LISTENER), "removeCarouselListener", NO_FIELDS, answer::none()},

    {MSG_SI, TESSARINE_CODE(SI_CODING_FORMAT), "getSICodingFormat", NO_FIELDS, answer::inPlace(SI_TEXT_FIELDS)},
    {MSG_SI, TESSARINE_CODE(SI_PROGRAM_EVENTS), "getProgramEvents", NO_FIELDS,
     answer::list(SI_PROGRAM_EVENTS, PROGRAM_EVENT_FIELDS, Trailing::ProgramEvent)},
    {MSG_SI, TESSARINE_CODE(SI_PROGRAM_EVENT), "getProgramEvent", NO_FIELDS,
     answer::inPlace(PROGRAM_EVENT_FIELDS, Trailing::ProgramEvent)},
    {MSG_SI, TESSARINE_CODE(SI_EVENT_DESCRIPTORS), "getProgramEventDescriptors", table(SI_FIRST_SECOND_FIELDS),
     answer::list(SI_EVENT_DESCRIPTORS, DESCRIPTOR_FIELDS, Trailing::Descriptor)},
    {MSG_SI, TESSARINE_CODE(SI_CA_SYSTEM_IDS), "getCASystemIds", NO_FIELDS,
     answer::list(SI_CA_SYSTEM_IDS, SI_CA_SYSTEM_ID_FIELDS)},
    {MSG_SI, TESSARINE_CODE(SI_PROTECTED_SERVICE), "isProtectedService", NO_FIELDS,
     answer::inPlace(SI_PROTECTED_FIELDS)},
    {MSG_SI, TESSARINE_CODE(SI_SERVICES), "getServices", NO_FIELDS, answer::list(SI_SERVICES, SERVICE_FIELDS)},
    {MSG_SI, TESSARINE_CODE(SI_CURRENT_SERVICE), "getCurrentService", NO_FIELDS,
     answer::inPlace(SI_CURRENT_SERVICE_FIELDS)},
    {MSG_SI, TESSARINE_CODE(SI_SERVICE_DESCRIPTION), "getServiceDescription", NO_FIELDS,
     answer::inPlace(SI_TEXT_FIELDS)},
    {MSG_SI, TESSARINE_CODE(SI_EVENT_DESCRIPTORS_9), "getProgramEventDescriptors", table(SI_FIRST_SECOND_FIELDS),
     answer::list(SI_EVENT_DESCRIPTORS, DESCRIPTOR_FIELDS, Trailing::Descriptor)},
    {MSG_SI, TESSARINE_CODE(SI_SERVICE_COMPONENTS), "getServiceComponents", table(SI_ID_FIELDS),
     answer::list(SI_SERVICE_COMPONENTS, SERVICE_COMPONENT_FIELDS)},
    {MSG_SI, TESSARINE_CODE(SI_COMPONENT_DESCRIPTORS), "getServiceComponentDescriptors", table(SI_ID_FIELDS),
     answer::list(SI_COMPONENT_DESCRIPTORS, DESCRIPTOR_FIELDS, Trailing::Descriptor)},
    {MSG_SI, TESSARINE_CODE(SI_TRANSPORT_STREAM), "getTransportStream", NO_FIELDS,
     answer::inPlace(TRANSPORT_STREAM_FIELDS)},
    {MSG_SI, TESSARINE_CODE(SI_TRANSPORT_STREAM_DESCRIPTORS), "getTransportStreamDescriptors", table(SI_ID_FIELDS),
     answer::list(SI_EVENT_DESCRIPTORS, DESCRIPTOR_FIELDS, Trailing::Descriptor)},
    {MSG_SI, TESSARINE_CODE(SI_NETWORK), "getNetwork", NO_FIELDS, answer::inPlace(NETWORK_FIELDS)},
    {MSG_SI, TESSARINE_CODE(SI_NETWORK_DESCRIPTORS), "getNetworkDescriptors", NO_FIELDS,
     answer::list(SI_EVENT_DESCRIPTORS, DESCRIPTOR_FIELDS, Trailing::Descriptor)},
    {MSG_SI, TESSARINE_CODE(SI_PMTS), "getPMTs", table(SI_ID_FIELDS), answer::list(SI_PMTS, PMT_FIELDS)},

    {MSG_MEDIA, TESSARINE_CODE(MEDIA_OPEN), "open", table(MEDIA_OPEN_FIELDS), answer::inPlace(MEDIA_OPENED_FIELDS)},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_GET_DURATION), "getDuration", table(MEDIA_HANDLE_FIELDS),
     answer::inPlace(MEDIA_DURATION_FIELDS)},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_GET_CURRENT_TIME), "getCurrentTime", table(MEDIA_HANDLE_FIELDS),
     answer::inPlace(MEDIA_TIME_FIELDS)},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_SET_CURRENT_TIME), "setCurrentTime", table(MEDIA_SET_TIME_FIELDS),
     answer::inPlace(MEDIA_RESULT_FIELDS)},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_ADD_LISTENER), "addMediaListener", table(MEDIA_HANDLE_FIELDS), answer::none()},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_PLAY), "play", table(MEDIA_HANDLE_FIELDS), answer::inPlace(MEDIA_PLAYING_FIELDS)},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_CLOSE), "close", table(MEDIA_HANDLE_FIELDS), answer::none()},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_STOP), "stop", table(MEDIA_HANDLE_FIELDS), answer::none()},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_SET_BOUNDS), "setMediaBounds", table(MEDIA_HANDLE_BOUNDS_FIELDS),
     answer::inPlace(MEDIA_RESULT_FIELDS)},
    // Bounds that no listener writes come back as the request carried them.
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_GET_BOUNDS), "getMediaBounds", table(MEDIA_HANDLE_BOUNDS_FIELDS),
     answer::inPlace(MEDIA_BOUNDS_FIELDS)},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_SET_FREEZE), "setMediaFreeze", table(MEDIA_FREEZE_FIELDS), answer::none()},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_SET_BALANCE_LEVEL), "setMediaBalanceLevel", table(MEDIA_LEVEL_FIELDS),
     answer::none()},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_SET_SOUND_LEVEL), "setMediaSoundLevel", table(MEDIA_LEVEL_FIELDS),
     answer::none()},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_SET_MUTE), "setMediaMute", table(MEDIA_MUTE_FIELDS), answer::none()},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_SET_BASS_LEVEL), "setMediaBassLevel", table(MEDIA_LEVEL_FIELDS), answer::none()},
    {MSG_MEDIA, TESSARINE_CODE(MEDIA_SET_TREBLE_LEVEL), "setMediaTrebleLevel", table(MEDIA_LEVEL_FIELDS),
     answer::none()},

    // The code is the flag to check; the answer is the result's low 8 bits.
    {MSG_VERSION, ANY_CODE, "MSG_VERSION", "checkVersionFlag", NO_FIELDS, answer::inPlace(RESULT_BYTE_FIELDS)},
};

#undef TESSARINE_CODE

// Where each type's rows lie: both ends look a request up on every call, so
// a lookup scans only the rows of its type.
struct TypeRows {
    std::size_t first = 0;
    std::size_t count = 0;
};
constexpr std::array<TypeRows, MSG_VERSION + 1> rowsByType() {
    std::array<TypeRows, MSG_VERSION + 1> rows{};
    for (std::size_t i = std::size(REQUESTS); i-- > 0;) {
        TypeRows& type = rows[static_cast<std::size_t>(REQUESTS[i].type)];
        type.first = i;
        ++type.count;
    }
    return rows;
}
inline constexpr std::array<TypeRows, MSG_VERSION + 1> ROWS_BY_TYPE = rowsByType();

// The request (type, code), or null when the bridge has none of that type
// and code: the row of the code itself, else the type's ANY_CODE row.
constexpr const Request* findRequest(std::int32_t type, std::int32_t code) {
    if (type < 0 || type > MSG_VERSION) return nullptr;
    const TypeRows rows = ROWS_BY_TYPE[static_cast<std::size_t>(type)];
    const Request* any = nullptr;
    for (std::size_t i = rows.first; i < rows.first + rows.count; ++i) {
        const Request& request = REQUESTS[i];
        if (request.code == code) return &request;
        if (request.code == ANY_CODE) any = &request;
    }
    return any;
}

namespace check {
constexpr bool fieldsFit(Fields fields) {
    for (const Field& f : fields) {
        if (f.offset < PAYLOAD_OFFSET || f.offset + f.width > MESSAGE_SIZE) return false;
    }
    return true;
}
// Every field lies in the payload, and every count of trailing data is a
// uint32 field of the record that announces it.
constexpr bool requestsAreConsistent() {
    for (const Request& r : REQUESTS) {
        if (!fieldsFit(r.fields) || !fieldsFit(r.answer.fields)) return false;
        for (const TrailingPart& part : trailingParts(r.answer.trailing)) {
            const Field* count = findField(r.answer.fields, part.count);
            if (count == nullptr || count->kind != FieldKind::UInt32) return false;
        }
    }
    return true;
}
// The rows of one type lie together, as the lookup by type assumes.
constexpr bool typesAreContiguous() {
    for (std::size_t i = 0; i < std::size(REQUESTS); ++i) {
        const TypeRows rows = ROWS_BY_TYPE[static_cast<std::size_t>(REQUESTS[i].type)];
        if (i < rows.first || i >= rows.first + rows.count) return false;
    }
    return true;
}
static_assert(requestsAreConsistent(), "the request table agrees with itself");
static_assert(typesAreContiguous(), "the rows of each type lie together");
}  // namespace check

}  // namespace protocol
}  // namespace tessarine
