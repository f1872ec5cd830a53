#pragma once

#include <cstddef>

#include "tessarine/descriptor.h"
#include "tessarine/network.h"
#include "tessarine/pmt.h"
#include "tessarine/program_event.h"
#include "tessarine/protocol/Offsets.h"
#include "tessarine/protocol/Table.h"
#include "tessarine/service.h"
#include "tessarine/service_component.h"
#include "tessarine/system_property.h"
#include "tessarine/transport_stream.h"
#include "tessarine/tuner_data.h"
#include "tessarine/video_region.h"

// The fields of every request, answer, list item and event of the control
// channel, as tables: name (as the C++ record names it), byte offset in the
// record, width and kind. Requests.h and Events.h say which table each uses.
namespace tessarine {
namespace protocol {

enum class FieldKind {
    Int32,      // two's complement, host byte order
    UInt32,
    UInt16,
    Int64,
    Byte,       // an unsigned byte
    Bool,       // one byte: 0 is false, anything else true; the bridge writes 1 or 0
    Double,     // IEEE-754 binary64 in host byte order, never scaled
    TextField,  // TEXT_FIELD_SIZE bytes: at most 254 characters, NUL-padded
    Text,       // characters up to the first NUL, never past `width` bytes
    Handle,     // 4 bytes that readers ignore: the list travels as trailing data
};

struct Field {
    const char* name;
    std::size_t offset;  // from the start of the record
    std::size_t width;   // in bytes
    FieldKind kind;
};

using Fields = Table<Field>;

namespace field {
constexpr Field int32(const char* name, std::size_t offset) { return {name, offset, 4, FieldKind::Int32}; }
constexpr Field uint32(const char* name, std::size_t offset) { return {name, offset, 4, FieldKind::UInt32}; }
constexpr Field uint16(const char* name, std::size_t offset) { return {name, offset, 2, FieldKind::UInt16}; }
constexpr Field int64(const char* name, std::size_t offset) { return {name, offset, 8, FieldKind::Int64}; }
constexpr Field byte(const char* name, std::size_t offset) { return {name, offset, 1, FieldKind::Byte}; }
constexpr Field boolean(const char* name, std::size_t offset) { return {name, offset, 1, FieldKind::Bool}; }
constexpr Field float64(const char* name, std::size_t offset) { return {name, offset, 8, FieldKind::Double}; }
constexpr Field textField(const char* name, std::size_t offset) {
    return {name, offset, TEXT_FIELD_SIZE, FieldKind::TextField};
}
constexpr Field text(const char* name, std::size_t offset, std::size_t width) {
    return {name, offset, width, FieldKind::Text};
}
constexpr Field handle(const char* name, std::size_t offset) { return {name, offset, 4, FieldKind::Handle}; }
}  // namespace field

// A field of a C++ record that lies in the message from `base` on, named as the record names it.
#define TESSARINE_MEMBER(make, base, record, member) field::make(#member, (base) + offsetof(record, member))
#define TESSARINE_RECTANGLE(prefix, base)                                                          \
    field::int32(prefix ".x", (base) + offsetof(video_region, x)),                                 \
        field::int32(prefix ".y", (base) + offsetof(video_region, y)),                             \
        field::int32(prefix ".width", (base) + offsetof(video_region, width)),                     \
        field::int32(prefix ".height", (base) + offsetof(video_region, height))

// --- MSG_VIDEO ---
inline constexpr Field VIDEO_BOUNDS_FIELDS[] = {
    TESSARINE_MEMBER(int32, VIDEO_BOUNDS_OFFSET, video_region, x),
    TESSARINE_MEMBER(int32, VIDEO_BOUNDS_OFFSET, video_region, y),
    TESSARINE_MEMBER(int32, VIDEO_BOUNDS_OFFSET, video_region, width),
    TESSARINE_MEMBER(int32, VIDEO_BOUNDS_OFFSET, video_region, height),
};
inline constexpr Field VIDEO_TEXT_FIELDS[] = {field::textField("text", FIRST_TEXT_OFFSET)};
inline constexpr Field VIDEO_FLAG_FIELDS[] = {field::boolean("flag", VIDEO_FLAG_OFFSET)};
inline constexpr Field VIDEO_LANGUAGE_FIELDS[] = {field::textField("language", FIRST_TEXT_OFFSET)};
inline constexpr Field VIDEO_RATE_FIELDS[] = {field::int32("rate", VIDEO_RATE_OFFSET)};

// --- MSG_AUDIO (audio_data) ---
inline constexpr Field AUDIO_LEVEL_FIELDS[] = {field::float64("level", AUDIO_LEVEL_OFFSET)};
inline constexpr Field AUDIO_MUTE_FIELDS[] = {field::boolean("mute", AUDIO_MUTE_OFFSET)};

// --- MSG_PROPERTY (system_property) ---
inline constexpr Field PROPERTY_NAME_FIELDS[] = {
    TESSARINE_MEMBER(textField, TYPED_PAYLOAD_OFFSET, system_property, name)};
inline constexpr Field PROPERTY_VALUE_FIELDS[] = {
    TESSARINE_MEMBER(textField, TYPED_PAYLOAD_OFFSET, system_property, value)};
inline constexpr Field PROPERTY_FIELDS[] = {
    TESSARINE_MEMBER(textField, TYPED_PAYLOAD_OFFSET, system_property, name),
    TESSARINE_MEMBER(textField, TYPED_PAYLOAD_OFFSET, system_property, value),
};

// --- MSG_TUNER (tuner_data) ---
inline constexpr Field TUNER_PARAMETER_FIELDS[] = {
    TESSARINE_MEMBER(int32, TYPED_PAYLOAD_OFFSET, tuner_data, parameter)};
inline constexpr Field TUNER_ID_FIELDS[] = {field::int32("id", TUNER_ID_OFFSET)};

// --- MSG_CAROUSEL ---
inline constexpr Field CAROUSEL_NAME_FIELDS[] = {field::textField("name", FIRST_TEXT_OFFSET)};
inline constexpr Field CAROUSEL_MOUNT_POINT_FIELDS[] = {field::textField("mountPoint", SECOND_TEXT_OFFSET)};

// --- MSG_SI: arguments, in-place answers and the records of lists ---
inline constexpr Field SI_ID_FIELDS[] = {field::int32("id", SI_ID_OFFSET)};
inline constexpr Field SI_FIRST_SECOND_FIELDS[] = {field::int32("first", SI_FIRST_OFFSET),
                                                   field::int32("second", SI_SECOND_OFFSET)};
inline constexpr Field SI_TEXT_FIELDS[] = {field::textField("text", SI_ITEM_OFFSET)};
inline constexpr Field SI_PROTECTED_FIELDS[] = {field::boolean("protected", SI_ITEM_OFFSET)};
inline constexpr Field SI_CURRENT_SERVICE_FIELDS[] = {field::int32("service", SI_ITEM_OFFSET)};
inline constexpr Field SI_CA_SYSTEM_ID_FIELDS[] = {field::int32("id", SI_ITEM_OFFSET)};

inline constexpr Field PROGRAM_EVENT_FIELDS[] = {
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, program_event::wire, value0),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, program_event::wire, value1),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, program_event::wire, value2),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, program_event::wire, value3),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, program_event::wire, value4),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, program_event::wire, value5),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, program_event::wire, value6),
    TESSARINE_MEMBER(textField, SI_ITEM_OFFSET, program_event::wire, text0),
    TESSARINE_MEMBER(textField, SI_ITEM_OFFSET, program_event::wire, text1),
    TESSARINE_MEMBER(textField, SI_ITEM_OFFSET, program_event::wire, text2),
    TESSARINE_MEMBER(uint32, SI_ITEM_OFFSET, program_event::wire, byte_count0),
    TESSARINE_MEMBER(uint32, SI_ITEM_OFFSET, program_event::wire, byte_count1),
    TESSARINE_MEMBER(uint32, SI_ITEM_OFFSET, program_event::wire, byte_count2),
    TESSARINE_MEMBER(uint32, SI_ITEM_OFFSET, program_event::wire, string_count0),
    TESSARINE_MEMBER(uint32, SI_ITEM_OFFSET, program_event::wire, string_count1),
    TESSARINE_MEMBER(uint32, SI_ITEM_OFFSET, program_event::wire, string_count2),
    TESSARINE_MEMBER(handle, SI_ITEM_OFFSET, program_event::wire, bytes0),
    TESSARINE_MEMBER(handle, SI_ITEM_OFFSET, program_event::wire, bytes1),
    TESSARINE_MEMBER(handle, SI_ITEM_OFFSET, program_event::wire, bytes2),
    TESSARINE_MEMBER(handle, SI_ITEM_OFFSET, program_event::wire, strings0),
    TESSARINE_MEMBER(handle, SI_ITEM_OFFSET, program_event::wire, strings1),
    TESSARINE_MEMBER(handle, SI_ITEM_OFFSET, program_event::wire, strings2),
};
inline constexpr Field SERVICE_FIELDS[] = {
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, service::wire, value0),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, service::wire, value1),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, service::wire, value2),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, service::wire, value3),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, service::wire, value4),
    TESSARINE_MEMBER(textField, SI_ITEM_OFFSET, service::wire, text0),
};
inline constexpr Field SERVICE_COMPONENT_FIELDS[] = {
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, service_component, value0),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, service_component, value1),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, service_component, value2),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, service_component, value3),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, service_component, value4),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, service_component, value5),
};
inline constexpr Field PMT_FIELDS[] = {
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, pmt, value0),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, pmt, value1),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, pmt, value2),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, pmt, value3),
};
inline constexpr Field DESCRIPTOR_FIELDS[] = {
    TESSARINE_MEMBER(uint16, SI_ITEM_OFFSET, descriptor::wire, id),
    TESSARINE_MEMBER(uint32, SI_ITEM_OFFSET, descriptor::wire, length),
    TESSARINE_MEMBER(handle, SI_ITEM_OFFSET, descriptor::wire, data),
};
inline constexpr Field NETWORK_FIELDS[] = {
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, network::wire, value0),
    TESSARINE_MEMBER(textField, SI_ITEM_OFFSET, network::wire, text0),
};
inline constexpr Field TRANSPORT_STREAM_FIELDS[] = {
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, transport_stream::wire, value0),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, transport_stream::wire, value1),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, transport_stream::wire, value2),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, transport_stream::wire, value3),
    TESSARINE_MEMBER(int32, SI_ITEM_OFFSET, transport_stream::wire, value4),
};

// --- MSG_MEDIA: the player handle, then arguments and results ---
inline constexpr Field MEDIA_HANDLE_FIELDS[] = {field::int32("handle", MEDIA_HANDLE_OFFSET)};
inline constexpr Field MEDIA_OPEN_FIELDS[] = {
    field::int32("handle", MEDIA_HANDLE_OFFSET),
    field::text("locator", MEDIA_LOCATOR_OFFSET, MESSAGE_SIZE - MEDIA_LOCATOR_OFFSET)};
inline constexpr Field MEDIA_OPENED_FIELDS[] = {field::int32("handle", MEDIA_HANDLE_OFFSET),
                                                field::boolean("opened", MEDIA_RESULT_OFFSET)};
inline constexpr Field MEDIA_DURATION_FIELDS[] = {field::int32("duration", MEDIA_RESULT_OFFSET)};
inline constexpr Field MEDIA_TIME_FIELDS[] = {field::int32("time", MEDIA_RESULT_OFFSET)};
inline constexpr Field MEDIA_RESULT_FIELDS[] = {field::int32("result", MEDIA_RESULT_OFFSET)};
inline constexpr Field MEDIA_PLAYING_FIELDS[] = {field::boolean("playing", MEDIA_RESULT_OFFSET)};
inline constexpr Field MEDIA_SET_TIME_FIELDS[] = {field::int32("handle", MEDIA_HANDLE_OFFSET),
                                                  field::int32("first", MEDIA_FIRST_OFFSET),
                                                  field::int32("second", MEDIA_SECOND_OFFSET)};
inline constexpr Field MEDIA_HANDLE_BOUNDS_FIELDS[] = {
    field::int32("handle", MEDIA_HANDLE_OFFSET),
    TESSARINE_MEMBER(int32, MEDIA_BOUNDS_OFFSET, video_region, x),
    TESSARINE_MEMBER(int32, MEDIA_BOUNDS_OFFSET, video_region, y),
    TESSARINE_MEMBER(int32, MEDIA_BOUNDS_OFFSET, video_region, width),
    TESSARINE_MEMBER(int32, MEDIA_BOUNDS_OFFSET, video_region, height),
};
inline constexpr Field MEDIA_BOUNDS_FIELDS[] = {
    TESSARINE_MEMBER(int32, MEDIA_BOUNDS_OFFSET, video_region, x),
    TESSARINE_MEMBER(int32, MEDIA_BOUNDS_OFFSET, video_region, y),
    TESSARINE_MEMBER(int32, MEDIA_BOUNDS_OFFSET, video_region, width),
    TESSARINE_MEMBER(int32, MEDIA_BOUNDS_OFFSET, video_region, height),
};
inline constexpr Field MEDIA_FREEZE_FIELDS[] = {field::int32("handle", MEDIA_HANDLE_OFFSET),
                                                field::boolean("freeze", MEDIA_FLAG_OFFSET)};
inline constexpr Field MEDIA_MUTE_FIELDS[] = {field::int32("handle", MEDIA_HANDLE_OFFSET),
                                              field::boolean("mute", MEDIA_FLAG_OFFSET)};
inline constexpr Field MEDIA_LEVEL_FIELDS[] = {field::int32("handle", MEDIA_HANDLE_OFFSET),
                                               field::float64("level", MEDIA_LEVEL_OFFSET)};

// --- MSG_VERSION answers, and the client's MSG_APP_STATE answer ---
inline constexpr Field RESULT_BYTE_FIELDS[] = {field::byte("result", RESULT_BYTE_OFFSET)};

// --- Events (ipcutil::Rectangle_t has the layout of video_region) ---
inline constexpr Field GRAPHICS_SETTINGS_FIELDS[] = {TESSARINE_RECTANGLE("first", GRAPHICS_FIRST_OFFSET),
                                                     TESSARINE_RECTANGLE("second", GRAPHICS_SECOND_OFFSET)};
inline constexpr Field DOWNLOAD_COMPLETE_FIELDS[] = {field::textField("first", FIRST_TEXT_OFFSET),
                                                     field::textField("second", SECOND_TEXT_OFFSET)};
inline constexpr Field END_OF_MEDIA_FIELDS[] = {field::int32("handle", END_OF_MEDIA_HANDLE_OFFSET)};
inline constexpr Field DSMCC_FIELDS[] = {field::int64("commandValue", DSMCC_VALUE_OFFSET),
                                         field::byte("commandByte", DSMCC_BYTE_OFFSET),
                                         field::text("commandText", DSMCC_TEXT_OFFSET, DSMCC_TEXT_SIZE)};

#undef TESSARINE_RECTANGLE
#undef TESSARINE_MEMBER

// The field of `fields` called `name`, or null.
constexpr const Field* findField(Fields fields, const char* name) {
    for (const Field& f : fields) {
        if (sameName(f.name, name)) return &f;
    }
    return nullptr;
}

}  // namespace protocol
}  // namespace tessarine
