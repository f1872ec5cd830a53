#pragma once

#include <cstddef>

#include "tessarine/protocol/Limits.h"

// Where each field of a control record lies: byte offsets from the start of
// the 1960-byte record. Fields of the SI records are those of their wire
// structures (program_event::wire and the others), from SI_ITEM_OFFSET on.
namespace tessarine {

// --- Every record ---

inline constexpr std::size_t TYPE_OFFSET = 0;
inline constexpr std::size_t CODE_OFFSET = 8;  // bytes 4-7 are padding
inline constexpr std::size_t PAYLOAD_OFFSET = 12;
// video_data, audio_data, system_property and tuner_data overlay the record
// from `code` on, so that `code` is their first field.
inline constexpr std::size_t TYPED_PAYLOAD_OFFSET = CODE_OFFSET;
// The two text fields that many record types share.
inline constexpr std::size_t FIRST_TEXT_OFFSET = PAYLOAD_OFFSET;
inline constexpr std::size_t SECOND_TEXT_OFFSET = FIRST_TEXT_OFFSET + TEXT_FIELD_SIZE;  // 267
// The one-byte answer of MSG_VERSION, and of the client to MSG_APP_STATE.
inline constexpr std::size_t RESULT_BYTE_OFFSET = PAYLOAD_OFFSET;

// --- MSG_VIDEO ---

inline constexpr std::size_t VIDEO_BOUNDS_OFFSET = PAYLOAD_OFFSET;  // x, y, width, height as in video_region
inline constexpr std::size_t VIDEO_FLAG_OFFSET = PAYLOAD_OFFSET;    // one byte
inline constexpr std::size_t VIDEO_RATE_OFFSET = PAYLOAD_OFFSET;    // int32 answer

// --- MSG_AUDIO ---

inline constexpr std::size_t AUDIO_LEVEL_OFFSET = 16;  // double, 8-byte aligned
inline constexpr std::size_t AUDIO_MUTE_OFFSET = 16;   // one byte

// --- MSG_TUNER ---

inline constexpr std::size_t TUNER_PARAMETER_OFFSET = PAYLOAD_OFFSET;  // argument of a list query
inline constexpr std::size_t TUNER_ID_OFFSET = PAYLOAD_OFFSET;         // int32 answer and list items

// --- MSG_SI ---

inline constexpr std::size_t SI_ITEM_OFFSET = PAYLOAD_OFFSET;  // answers and list items
inline constexpr std::size_t SI_ID_OFFSET = 12;                // word 3: the one argument
inline constexpr std::size_t SI_FIRST_OFFSET = 20;             // word 5
inline constexpr std::size_t SI_SECOND_OFFSET = 24;            // word 6

// --- MSG_MEDIA: the player handle, then arguments and results ---

inline constexpr std::size_t MEDIA_HANDLE_OFFSET = PAYLOAD_OFFSET;
inline constexpr std::size_t MEDIA_LOCATOR_OFFSET = 16;  // to its first NUL, at most MAX_LOCATOR_LENGTH
inline constexpr std::size_t MEDIA_RESULT_OFFSET = 16;   // int32, or one byte for a bool
inline constexpr std::size_t MEDIA_FIRST_OFFSET = 16;    // int32 arguments of setCurrentTime
inline constexpr std::size_t MEDIA_SECOND_OFFSET = 20;
inline constexpr std::size_t MEDIA_BOUNDS_OFFSET = 16;   // x, y, width, height as in video_region
inline constexpr std::size_t MEDIA_FLAG_OFFSET = 16;     // one byte
inline constexpr std::size_t MEDIA_LEVEL_OFFSET = 16;    // double, 8-byte aligned

// --- Events ---

inline constexpr std::size_t GRAPHICS_FIRST_OFFSET = 12;   // a Rectangle_t: x, y, width, height
inline constexpr std::size_t GRAPHICS_SECOND_OFFSET = 28;
inline constexpr std::size_t END_OF_MEDIA_HANDLE_OFFSET = MEDIA_HANDLE_OFFSET;
inline constexpr std::size_t DSMCC_VALUE_OFFSET = 16;  // 64 bits as they lie in memory
inline constexpr std::size_t DSMCC_BYTE_OFFSET = 24;
inline constexpr std::size_t DSMCC_TEXT_OFFSET = 25;
inline constexpr std::size_t DSMCC_TEXT_SIZE = 1928;   // bytes 25-1952

static_assert(SECOND_TEXT_OFFSET == 267, "the second text field follows the first");
static_assert(AUDIO_LEVEL_OFFSET % 8 == 0 && MEDIA_LEVEL_OFFSET % 8 == 0 && DSMCC_VALUE_OFFSET % 8 == 0,
              "64-bit values sit at multiples of 8");
static_assert(MAX_LOCATOR_LENGTH == MESSAGE_SIZE - MEDIA_LOCATOR_OFFSET - 1, "a locator ends within the record");
static_assert(DSMCC_TEXT_SIZE > CHUNK_SIZE && DSMCC_TEXT_OFFSET + DSMCC_TEXT_SIZE < MESSAGE_SIZE,
              "a chunk and its NUL fit the text area, which fits the record");
static_assert(GRAPHICS_SECOND_OFFSET == GRAPHICS_FIRST_OFFSET + 16, "the rectangles are adjacent");

}  // namespace tessarine
