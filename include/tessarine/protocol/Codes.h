#pragma once

#include <cstdint>

// Every number that names something on the two channels: the record types,
// the codes of each record type, and the section-filter command words. What
// each carries is in Requests.h, Events.h and DemuxCommands.h.
namespace tessarine {

// The `type` of a control record.
enum message_type : std::int32_t {
    MSG_VIDEO = 0,
    MSG_APP_STATE = 1,
    MSG_PROPERTY = 2,
    MSG_AUDIO = 3,
    MSG_TUNER = 4,
    MSG_CAROUSEL = 5,
    MSG_SI = 6,
    MSG_LIST_HEADER = 7,  // code: the number of records that follow
    MSG_MEDIA = 8,
    MSG_DSMCC = 9,
    MSG_VERSION = 10,  // code: the flag to check
};

// The `code` of a MSG_VIDEO record and the first field of video_data.
enum command : std::int32_t {
    VIDEO_SET_BOUNDS = 0,
    VIDEO_GET_BOUNDS = 1,
    VIDEO_RESET = 2,  // also the end-of-connection record's code
    VIDEO_GET_LANGUAGE_3 = 3,
    VIDEO_GET_LANGUAGES = 4,
    VIDEO_GET_LANGUAGE_5 = 5,
    VIDEO_SET_TEXT_6 = 6,
    VIDEO_SET_FLAG_7 = 7,
    VIDEO_SET_FLAG_8 = 8,
    VIDEO_GET_RATE_9 = 9,
    VIDEO_GET_RATE_10 = 10,
    VIDEO_GET_RATE_11 = 11,
    VIDEO_GET_RATE_12 = 12,
    VIDEO_GET_RATE_13 = 13,
    VIDEO_GET_RATE_14 = 14,
    VIDEO_GET_RATE_15 = 15,
    VIDEO_GET_RATE_16 = 16,
    VIDEO_GRAPHICS_SETTINGS = 17,  // also the graphics-settings event's code
    VIDEO_UPDATE_REGION = 18,
};

// The `code` of a MSG_AUDIO record: which setting of the main video.
enum audio_selector : std::int32_t {
    AUDIO_SOUND_LEVEL = 0,
    AUDIO_BALANCE_LEVEL = 1,
    AUDIO_BASS_LEVEL = 2,
    AUDIO_TREBLE_LEVEL = 3,
    AUDIO_MUTE = 4,
};

// The `code` of a MSG_PROPERTY record.
enum property_code : std::int32_t {
    PROPERTY_GET = 0,
    PROPERTY_LIST = 1,
    PROPERTY_SET = 2,
    PROPERTY_REMOVE = 3,
};

// The `code` of a MSG_TUNER record: 0 asks the current transport stream id,
// any other code a list of identifiers of that kind.
enum tuner_code : std::int32_t {
    TUNER_CURRENT_TS_ID = 0,
    TUNER_IDS_1 = 1,
    TUNER_IDS_2 = 2,
    TUNER_IDS_3 = 3,
    TUNER_IDS_4 = 4,
};

// The `code` of a MSG_CAROUSEL record.
enum carousel_code : std::int32_t {
    CAROUSEL_MOUNT = 0,
    CAROUSEL_UMOUNT = 1,
    CAROUSEL_DOWNLOAD_COMPLETE = 2,  // the event's; ignored as a request
    CAROUSEL_ADD_LISTENER = 3,
    CAROUSEL_REMOVE_LISTENER = 4,
};

// The `code` of a MSG_SI record.
enum si_code : std::int32_t {
    SI_CODING_FORMAT = 0,
    SI_PROGRAM_EVENTS = 1,
    SI_PROGRAM_EVENT = 2,
    SI_EVENT_DESCRIPTORS = 3,
    SI_CA_SYSTEM_IDS = 4,
    SI_PROTECTED_SERVICE = 5,
    SI_SERVICES = 6,
    SI_CURRENT_SERVICE = 7,
    SI_SERVICE_DESCRIPTION = 8,
    SI_EVENT_DESCRIPTORS_9 = 9,  // the same request as 3
    SI_SERVICE_COMPONENTS = 10,
    SI_COMPONENT_DESCRIPTORS = 11,
    SI_TRANSPORT_STREAM = 12,
    SI_TRANSPORT_STREAM_DESCRIPTORS = 13,
    SI_NETWORK = 14,
    SI_NETWORK_DESCRIPTORS = 15,
    SI_PMTS = 16,
};

// The `code` of a MSG_MEDIA record.
enum media_code : std::int32_t {
    MEDIA_OPEN = 0,
    MEDIA_GET_DURATION = 1,
    MEDIA_GET_CURRENT_TIME = 2,
    MEDIA_SET_CURRENT_TIME = 3,
    MEDIA_ADD_LISTENER = 4,
    MEDIA_PLAY = 5,
    MEDIA_CLOSE = 6,
    MEDIA_STOP = 7,
    MEDIA_SET_BOUNDS = 8,
    MEDIA_GET_BOUNDS = 9,
    MEDIA_SET_FREEZE = 10,
    MEDIA_SET_BALANCE_LEVEL = 11,
    MEDIA_SET_SOUND_LEVEL = 12,
    MEDIA_SET_MUTE = 13,
    MEDIA_SET_BASS_LEVEL = 14,
    MEDIA_SET_TREBLE_LEVEL = 15,
    MEDIA_END_OF_MEDIA = 16,  // the event's
};

// The command words of the section-filter channel.
enum demux_command : std::int32_t {
    DEMUX_START = 0,
    DEMUX_STOP = 1,
    DEMUX_SET_PID = 2,
    DEMUX_SET_TABLE_ID = 3,
    DEMUX_SET_POSITIVE_FILTER = 4,
    DEMUX_SET_GREATER_THAN_FILTER = 5,
    DEMUX_SET_LESS_THAN_FILTER = 6,
    DEMUX_SET_XOR_FILTER = 7,
    DEMUX_SET_TIME_OUT = 8,
    DEMUX_CLEAR_TABLE_ID = 9,
    DEMUX_CLEAR_POSITIVE_FILTER = 10,
    DEMUX_CLEAR_LESS_THAN_FILTER = 11,
    DEMUX_CLEAR_XOR_FILTER = 12,
    DEMUX_READ_SECTION = 13,
};

static_assert(sizeof(message_type) == 4 && sizeof(command) == 4 && sizeof(demux_command) == 4,
              "codes are 32 bits on the wire");

}  // namespace tessarine
