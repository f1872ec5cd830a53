-- Wireshark dissector for the two channels of the tessarine bridge, as the
-- bridge captures them (TESSARINE_CAPTURE=FILE, see docs/CAPTURE.md): the
-- control channel of 1960-byte records (link type USER0) and the
-- section-filter channel of command words and sections (USER1).
-- Install: copy to ~/.local/lib/wireshark/plugins/, or run
--   tshark -X lua_script:tools/wireshark/tessarine.lua -r FILE
-- Values are read little-endian, the byte order of the receivers served.
-- The tables between the GENERATED marks come from the C++ protocol
-- description (tools/wireshark/GenerateLuaTables.cpp); a test keeps them equal.

-- BEGIN GENERATED from include/tessarine/protocol by generate-lua-tables
local T = {}
T.MESSAGE_SIZE = 1960
T.TYPE_OFFSET = 0
T.CODE_OFFSET = 8
T.LIST_HEADER = 7
T.types = {
  [0] = {name = "MSG_VIDEO", family = "video"},
  [1] = {name = "MSG_APP_STATE", family = "app_state"},
  [2] = {name = "MSG_PROPERTY", family = "property"},
  [3] = {name = "MSG_AUDIO", family = "audio"},
  [4] = {name = "MSG_TUNER", family = "tuner"},
  [5] = {name = "MSG_CAROUSEL", family = "carousel"},
  [6] = {name = "MSG_SI", family = "si"},
  [7] = {name = "MSG_LIST_HEADER", family = "list_header"},
  [8] = {name = "MSG_MEDIA", family = "media"},
  [9] = {name = "MSG_DSMCC", family = "dsmcc"},
  [10] = {name = "MSG_VERSION", family = "version"},
}
T.fields = {
  {"tessarine.video.x", "int32"},
  {"tessarine.video.y", "int32"},
  {"tessarine.video.width", "int32"},
  {"tessarine.video.height", "int32"},
  {"tessarine.video.language", "text"},
  {"tessarine.video.text", "text"},
  {"tessarine.video.flag", "bool"},
  {"tessarine.video.rate", "int32"},
  {"tessarine.app_state.result", "byte"},
  {"tessarine.property.name", "text"},
  {"tessarine.property.value", "text"},
  {"tessarine.audio.level", "double"},
  {"tessarine.audio.mute", "bool"},
  {"tessarine.tuner.id", "int32"},
  {"tessarine.tuner.parameter", "int32"},
  {"tessarine.carousel.name", "text"},
  {"tessarine.carousel.mountPoint", "text"},
  {"tessarine.si.text", "text"},
  {"tessarine.si.value0", "int32"},
  {"tessarine.si.value1", "int32"},
  {"tessarine.si.value2", "int32"},
  {"tessarine.si.value3", "int32"},
  {"tessarine.si.value4", "int32"},
  {"tessarine.si.value5", "int32"},
  {"tessarine.si.value6", "int32"},
  {"tessarine.si.text0", "text"},
  {"tessarine.si.text1", "text"},
  {"tessarine.si.text2", "text"},
  {"tessarine.si.byte_count0", "uint32"},
  {"tessarine.si.byte_count1", "uint32"},
  {"tessarine.si.byte_count2", "uint32"},
  {"tessarine.si.string_count0", "uint32"},
  {"tessarine.si.string_count1", "uint32"},
  {"tessarine.si.string_count2", "uint32"},
  {"tessarine.si.bytes0", "handle"},
  {"tessarine.si.bytes1", "handle"},
  {"tessarine.si.bytes2", "handle"},
  {"tessarine.si.strings0", "handle"},
  {"tessarine.si.strings1", "handle"},
  {"tessarine.si.strings2", "handle"},
  {"tessarine.si.first", "int32"},
  {"tessarine.si.second", "int32"},
  {"tessarine.si.id", "uint16"},
  {"tessarine.si.length", "uint32"},
  {"tessarine.si.data", "handle"},
  {"tessarine.si.id_int32", "int32"},
  {"tessarine.si.protected", "bool"},
  {"tessarine.si.service", "int32"},
  {"tessarine.media.handle", "int32"},
  {"tessarine.media.locator", "text"},
  {"tessarine.media.opened", "bool"},
  {"tessarine.media.duration", "int32"},
  {"tessarine.media.time", "int32"},
  {"tessarine.media.first", "int32"},
  {"tessarine.media.second", "int32"},
  {"tessarine.media.result", "int32"},
  {"tessarine.media.playing", "bool"},
  {"tessarine.media.x", "int32"},
  {"tessarine.media.y", "int32"},
  {"tessarine.media.width", "int32"},
  {"tessarine.media.height", "int32"},
  {"tessarine.media.freeze", "bool"},
  {"tessarine.media.level", "double"},
  {"tessarine.media.mute", "bool"},
  {"tessarine.version.result", "byte"},
  {"tessarine.video.first.x", "int32"},
  {"tessarine.video.first.y", "int32"},
  {"tessarine.video.first.width", "int32"},
  {"tessarine.video.first.height", "int32"},
  {"tessarine.video.second.x", "int32"},
  {"tessarine.video.second.y", "int32"},
  {"tessarine.video.second.width", "int32"},
  {"tessarine.video.second.height", "int32"},
  {"tessarine.carousel.first", "text"},
  {"tessarine.carousel.second", "text"},
  {"tessarine.dsmcc.commandValue", "int64"},
  {"tessarine.dsmcc.commandByte", "byte"},
  {"tessarine.dsmcc.commandText", "text"},
}
T.requests = {}
T.requests[0] = {
  [0] = {name = "VIDEO_SET_BOUNDS", fields = {{"tessarine.video.x", 12, 4, "int32"}, {"tessarine.video.y", 16, 4, "int32"}, {"tessarine.video.width", 20, 4, "int32"}, {"tessarine.video.height", 24, 4, "int32"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [1] = {name = "VIDEO_GET_BOUNDS", fields = {{"tessarine.video.x", 12, 4, "int32"}, {"tessarine.video.y", 16, 4, "int32"}, {"tessarine.video.width", 20, 4, "int32"}, {"tessarine.video.height", 24, 4, "int32"}, },
    answer = {shape = "inplace", fields = {{"tessarine.video.x", 12, 4, "int32"}, {"tessarine.video.y", 16, 4, "int32"}, {"tessarine.video.width", 20, 4, "int32"}, {"tessarine.video.height", 24, 4, "int32"}, }, trailing = "none"}},
  [2] = {name = "VIDEO_RESET", fields = {},
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [3] = {name = "VIDEO_GET_LANGUAGE_3", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.video.language", 12, 255, "text"}, }, trailing = "none"}},
  [4] = {name = "VIDEO_GET_LANGUAGES", fields = {},
    answer = {shape = "list", fields = {{"tessarine.video.language", 12, 255, "text"}, }, trailing = "none"}},
  [5] = {name = "VIDEO_GET_LANGUAGE_5", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.video.language", 12, 255, "text"}, }, trailing = "none"}},
  [6] = {name = "VIDEO_SET_TEXT_6", fields = {{"tessarine.video.text", 12, 255, "text"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [7] = {name = "VIDEO_SET_FLAG_7", fields = {{"tessarine.video.flag", 12, 1, "bool"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [8] = {name = "VIDEO_SET_FLAG_8", fields = {{"tessarine.video.flag", 12, 1, "bool"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [9] = {name = "VIDEO_GET_RATE_9", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.video.rate", 12, 4, "int32"}, }, trailing = "none"}},
  [10] = {name = "VIDEO_GET_RATE_10", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.video.rate", 12, 4, "int32"}, }, trailing = "none"}},
  [11] = {name = "VIDEO_GET_RATE_11", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.video.rate", 12, 4, "int32"}, }, trailing = "none"}},
  [12] = {name = "VIDEO_GET_RATE_12", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.video.rate", 12, 4, "int32"}, }, trailing = "none"}},
  [13] = {name = "VIDEO_GET_RATE_13", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.video.rate", 12, 4, "int32"}, }, trailing = "none"}},
  [14] = {name = "VIDEO_GET_RATE_14", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.video.rate", 12, 4, "int32"}, }, trailing = "none"}},
  [15] = {name = "VIDEO_GET_RATE_15", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.video.rate", 12, 4, "int32"}, }, trailing = "none"}},
  [16] = {name = "VIDEO_GET_RATE_16", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.video.rate", 12, 4, "int32"}, }, trailing = "none"}},
  [17] = {name = "VIDEO_GRAPHICS_SETTINGS", fields = {},
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [18] = {name = "VIDEO_UPDATE_REGION", fields = {{"tessarine.video.x", 12, 4, "int32"}, {"tessarine.video.y", 16, 4, "int32"}, {"tessarine.video.width", 20, 4, "int32"}, {"tessarine.video.height", 24, 4, "int32"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
}
T.requests[1] = {
  any = {name = "MSG_APP_STATE", fields = {{"tessarine.app_state.result", 12, 1, "byte"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
}
T.requests[2] = {
  [0] = {name = "PROPERTY_GET", fields = {{"tessarine.property.name", 12, 255, "text"}, },
    answer = {shape = "inplace", fields = {{"tessarine.property.value", 267, 255, "text"}, }, trailing = "none"}},
  [1] = {name = "PROPERTY_LIST", fields = {},
    answer = {shape = "list", fields = {{"tessarine.property.name", 12, 255, "text"}, {"tessarine.property.value", 267, 255, "text"}, }, trailing = "none"}},
  [2] = {name = "PROPERTY_SET", fields = {{"tessarine.property.name", 12, 255, "text"}, {"tessarine.property.value", 267, 255, "text"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [3] = {name = "PROPERTY_REMOVE", fields = {{"tessarine.property.name", 12, 255, "text"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
}
T.requests[3] = {
  [0] = {name = "AUDIO_SOUND_LEVEL", fields = {{"tessarine.audio.level", 16, 8, "double"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [1] = {name = "AUDIO_BALANCE_LEVEL", fields = {{"tessarine.audio.level", 16, 8, "double"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [2] = {name = "AUDIO_BASS_LEVEL", fields = {{"tessarine.audio.level", 16, 8, "double"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [3] = {name = "AUDIO_TREBLE_LEVEL", fields = {{"tessarine.audio.level", 16, 8, "double"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [4] = {name = "AUDIO_MUTE", fields = {{"tessarine.audio.mute", 16, 1, "bool"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  any = {name = "MSG_AUDIO", fields = {},
    answer = {shape = "none", fields = {}, trailing = "none"}},
}
T.requests[4] = {
  [0] = {name = "TUNER_CURRENT_TS_ID", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.tuner.id", 12, 4, "int32"}, }, trailing = "none"}},
  any = {name = "TUNER_IDS", fields = {{"tessarine.tuner.parameter", 12, 4, "int32"}, },
    answer = {shape = "list", fields = {{"tessarine.tuner.id", 12, 4, "int32"}, }, trailing = "none"}},
}
T.requests[5] = {
  [0] = {name = "CAROUSEL_MOUNT", fields = {{"tessarine.carousel.name", 12, 255, "text"}, },
    answer = {shape = "inplace", fields = {{"tessarine.carousel.mountPoint", 267, 255, "text"}, }, trailing = "none"}},
  [1] = {name = "CAROUSEL_UMOUNT", fields = {{"tessarine.carousel.name", 12, 255, "text"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [3] = {name = "CAROUSEL_ADD_LISTENER", fields = {},
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [4] = {name = "CAROUSEL_REMOVE_LISTENER", fields = {},
    answer = {shape = "none", fields = {}, trailing = "none"}},
}
T.requests[6] = {
  [0] = {name = "SI_CODING_FORMAT", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.si.text", 12, 255, "text"}, }, trailing = "none"}},
  [1] = {name = "SI_PROGRAM_EVENTS", fields = {},
    answer = {shape = "list", fields = {{"tessarine.si.value0", 12, 4, "int32"}, {"tessarine.si.value1", 16, 4, "int32"}, {"tessarine.si.value2", 20, 4, "int32"}, {"tessarine.si.value3", 24, 4, "int32"}, {"tessarine.si.value4", 32, 4, "int32"}, {"tessarine.si.value5", 36, 4, "int32"}, {"tessarine.si.value6", 40, 4, "int32"}, {"tessarine.si.text0", 44, 255, "text"}, {"tessarine.si.text1", 299, 255, "text"}, {"tessarine.si.text2", 554, 255, "text"}, {"tessarine.si.byte_count0", 812, 4, "uint32"}, {"tessarine.si.byte_count1", 816, 4, "uint32"}, {"tessarine.si.byte_count2", 820, 4, "uint32"}, {"tessarine.si.string_count0", 824, 4, "uint32"}, {"tessarine.si.string_count1", 828, 4, "uint32"}, {"tessarine.si.string_count2", 832, 4, "uint32"}, {"tessarine.si.bytes0", 836, 4, "handle"}, {"tessarine.si.bytes1", 840, 4, "handle"}, {"tessarine.si.bytes2", 844, 4, "handle"}, {"tessarine.si.strings0", 848, 4, "handle"}, {"tessarine.si.strings1", 852, 4, "handle"}, {"tessarine.si.strings2", 856, 4, "handle"}, }, trailing = "program_event"}},
  [2] = {name = "SI_PROGRAM_EVENT", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.si.value0", 12, 4, "int32"}, {"tessarine.si.value1", 16, 4, "int32"}, {"tessarine.si.value2", 20, 4, "int32"}, {"tessarine.si.value3", 24, 4, "int32"}, {"tessarine.si.value4", 32, 4, "int32"}, {"tessarine.si.value5", 36, 4, "int32"}, {"tessarine.si.value6", 40, 4, "int32"}, {"tessarine.si.text0", 44, 255, "text"}, {"tessarine.si.text1", 299, 255, "text"}, {"tessarine.si.text2", 554, 255, "text"}, {"tessarine.si.byte_count0", 812, 4, "uint32"}, {"tessarine.si.byte_count1", 816, 4, "uint32"}, {"tessarine.si.byte_count2", 820, 4, "uint32"}, {"tessarine.si.string_count0", 824, 4, "uint32"}, {"tessarine.si.string_count1", 828, 4, "uint32"}, {"tessarine.si.string_count2", 832, 4, "uint32"}, {"tessarine.si.bytes0", 836, 4, "handle"}, {"tessarine.si.bytes1", 840, 4, "handle"}, {"tessarine.si.bytes2", 844, 4, "handle"}, {"tessarine.si.strings0", 848, 4, "handle"}, {"tessarine.si.strings1", 852, 4, "handle"}, {"tessarine.si.strings2", 856, 4, "handle"}, }, trailing = "program_event"}},
  [3] = {name = "SI_EVENT_DESCRIPTORS", fields = {{"tessarine.si.first", 20, 4, "int32"}, {"tessarine.si.second", 24, 4, "int32"}, },
    answer = {shape = "list", fields = {{"tessarine.si.id", 12, 2, "uint16"}, {"tessarine.si.length", 16, 4, "uint32"}, {"tessarine.si.data", 20, 4, "handle"}, }, trailing = "descriptor"}},
  [4] = {name = "SI_CA_SYSTEM_IDS", fields = {},
    answer = {shape = "list", fields = {{"tessarine.si.id_int32", 12, 4, "int32"}, }, trailing = "none"}},
  [5] = {name = "SI_PROTECTED_SERVICE", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.si.protected", 12, 1, "bool"}, }, trailing = "none"}},
  [6] = {name = "SI_SERVICES", fields = {},
    answer = {shape = "list", fields = {{"tessarine.si.value0", 12, 4, "int32"}, {"tessarine.si.value1", 16, 4, "int32"}, {"tessarine.si.value2", 20, 4, "int32"}, {"tessarine.si.value3", 24, 4, "int32"}, {"tessarine.si.value4", 28, 4, "int32"}, {"tessarine.si.text0", 36, 255, "text"}, }, trailing = "none"}},
  [7] = {name = "SI_CURRENT_SERVICE", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.si.service", 12, 4, "int32"}, }, trailing = "none"}},
  [8] = {name = "SI_SERVICE_DESCRIPTION", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.si.text", 12, 255, "text"}, }, trailing = "none"}},
  [9] = {name = "SI_EVENT_DESCRIPTORS_9", fields = {{"tessarine.si.first", 20, 4, "int32"}, {"tessarine.si.second", 24, 4, "int32"}, },
    answer = {shape = "list", fields = {{"tessarine.si.id", 12, 2, "uint16"}, {"tessarine.si.length", 16, 4, "uint32"}, {"tessarine.si.data", 20, 4, "handle"}, }, trailing = "descriptor"}},
  [10] = {name = "SI_SERVICE_COMPONENTS", fields = {{"tessarine.si.id_int32", 12, 4, "int32"}, },
    answer = {shape = "list", fields = {{"tessarine.si.value0", 12, 4, "int32"}, {"tessarine.si.value1", 16, 4, "int32"}, {"tessarine.si.value2", 20, 4, "int32"}, {"tessarine.si.value3", 24, 4, "int32"}, {"tessarine.si.value4", 28, 4, "int32"}, {"tessarine.si.value5", 32, 4, "int32"}, }, trailing = "none"}},
  [11] = {name = "SI_COMPONENT_DESCRIPTORS", fields = {{"tessarine.si.id_int32", 12, 4, "int32"}, },
    answer = {shape = "list", fields = {{"tessarine.si.id", 12, 2, "uint16"}, {"tessarine.si.length", 16, 4, "uint32"}, {"tessarine.si.data", 20, 4, "handle"}, }, trailing = "descriptor"}},
  [12] = {name = "SI_TRANSPORT_STREAM", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.si.value0", 12, 4, "int32"}, {"tessarine.si.value1", 16, 4, "int32"}, {"tessarine.si.value2", 20, 4, "int32"}, {"tessarine.si.value3", 28, 4, "int32"}, {"tessarine.si.value4", 32, 4, "int32"}, }, trailing = "none"}},
  [13] = {name = "SI_TRANSPORT_STREAM_DESCRIPTORS", fields = {{"tessarine.si.id_int32", 12, 4, "int32"}, },
    answer = {shape = "list", fields = {{"tessarine.si.id", 12, 2, "uint16"}, {"tessarine.si.length", 16, 4, "uint32"}, {"tessarine.si.data", 20, 4, "handle"}, }, trailing = "descriptor"}},
  [14] = {name = "SI_NETWORK", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.si.value0", 12, 4, "int32"}, {"tessarine.si.text0", 16, 255, "text"}, }, trailing = "none"}},
  [15] = {name = "SI_NETWORK_DESCRIPTORS", fields = {},
    answer = {shape = "list", fields = {{"tessarine.si.id", 12, 2, "uint16"}, {"tessarine.si.length", 16, 4, "uint32"}, {"tessarine.si.data", 20, 4, "handle"}, }, trailing = "descriptor"}},
  [16] = {name = "SI_PMTS", fields = {{"tessarine.si.id_int32", 12, 4, "int32"}, },
    answer = {shape = "list", fields = {{"tessarine.si.value0", 12, 4, "int32"}, {"tessarine.si.value1", 16, 4, "int32"}, {"tessarine.si.value2", 20, 4, "int32"}, {"tessarine.si.value3", 24, 4, "int32"}, }, trailing = "none"}},
}
T.requests[7] = {
}
T.requests[8] = {
  [0] = {name = "MEDIA_OPEN", fields = {{"tessarine.media.handle", 12, 4, "int32"}, {"tessarine.media.locator", 16, 1944, "text"}, },
    answer = {shape = "inplace", fields = {{"tessarine.media.handle", 12, 4, "int32"}, {"tessarine.media.opened", 16, 1, "bool"}, }, trailing = "none"}},
  [1] = {name = "MEDIA_GET_DURATION", fields = {{"tessarine.media.handle", 12, 4, "int32"}, },
    answer = {shape = "inplace", fields = {{"tessarine.media.duration", 16, 4, "int32"}, }, trailing = "none"}},
  [2] = {name = "MEDIA_GET_CURRENT_TIME", fields = {{"tessarine.media.handle", 12, 4, "int32"}, },
    answer = {shape = "inplace", fields = {{"tessarine.media.time", 16, 4, "int32"}, }, trailing = "none"}},
  [3] = {name = "MEDIA_SET_CURRENT_TIME", fields = {{"tessarine.media.handle", 12, 4, "int32"}, {"tessarine.media.first", 16, 4, "int32"}, {"tessarine.media.second", 20, 4, "int32"}, },
    answer = {shape = "inplace", fields = {{"tessarine.media.result", 16, 4, "int32"}, }, trailing = "none"}},
  [4] = {name = "MEDIA_ADD_LISTENER", fields = {{"tessarine.media.handle", 12, 4, "int32"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [5] = {name = "MEDIA_PLAY", fields = {{"tessarine.media.handle", 12, 4, "int32"}, },
    answer = {shape = "inplace", fields = {{"tessarine.media.playing", 16, 1, "bool"}, }, trailing = "none"}},
  [6] = {name = "MEDIA_CLOSE", fields = {{"tessarine.media.handle", 12, 4, "int32"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [7] = {name = "MEDIA_STOP", fields = {{"tessarine.media.handle", 12, 4, "int32"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [8] = {name = "MEDIA_SET_BOUNDS", fields = {{"tessarine.media.handle", 12, 4, "int32"}, {"tessarine.media.x", 16, 4, "int32"}, {"tessarine.media.y", 20, 4, "int32"}, {"tessarine.media.width", 24, 4, "int32"}, {"tessarine.media.height", 28, 4, "int32"}, },
    answer = {shape = "inplace", fields = {{"tessarine.media.result", 16, 4, "int32"}, }, trailing = "none"}},
  [9] = {name = "MEDIA_GET_BOUNDS", fields = {{"tessarine.media.handle", 12, 4, "int32"}, {"tessarine.media.x", 16, 4, "int32"}, {"tessarine.media.y", 20, 4, "int32"}, {"tessarine.media.width", 24, 4, "int32"}, {"tessarine.media.height", 28, 4, "int32"}, },
    answer = {shape = "inplace", fields = {{"tessarine.media.x", 16, 4, "int32"}, {"tessarine.media.y", 20, 4, "int32"}, {"tessarine.media.width", 24, 4, "int32"}, {"tessarine.media.height", 28, 4, "int32"}, }, trailing = "none"}},
  [10] = {name = "MEDIA_SET_FREEZE", fields = {{"tessarine.media.handle", 12, 4, "int32"}, {"tessarine.media.freeze", 16, 1, "bool"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [11] = {name = "MEDIA_SET_BALANCE_LEVEL", fields = {{"tessarine.media.handle", 12, 4, "int32"}, {"tessarine.media.level", 16, 8, "double"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [12] = {name = "MEDIA_SET_SOUND_LEVEL", fields = {{"tessarine.media.handle", 12, 4, "int32"}, {"tessarine.media.level", 16, 8, "double"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [13] = {name = "MEDIA_SET_MUTE", fields = {{"tessarine.media.handle", 12, 4, "int32"}, {"tessarine.media.mute", 16, 1, "bool"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [14] = {name = "MEDIA_SET_BASS_LEVEL", fields = {{"tessarine.media.handle", 12, 4, "int32"}, {"tessarine.media.level", 16, 8, "double"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
  [15] = {name = "MEDIA_SET_TREBLE_LEVEL", fields = {{"tessarine.media.handle", 12, 4, "int32"}, {"tessarine.media.level", 16, 8, "double"}, },
    answer = {shape = "none", fields = {}, trailing = "none"}},
}
T.requests[9] = {
}
T.requests[10] = {
  any = {name = "MSG_VERSION", fields = {},
    answer = {shape = "inplace", fields = {{"tessarine.version.result", 12, 1, "byte"}, }, trailing = "none"}},
}
T.events = {}
T.events[0] = {
  [17] = {name = "VIDEO_GRAPHICS_SETTINGS", fields = {{"tessarine.video.first.x", 12, 4, "int32"}, {"tessarine.video.first.y", 16, 4, "int32"}, {"tessarine.video.first.width", 20, 4, "int32"}, {"tessarine.video.first.height", 24, 4, "int32"}, {"tessarine.video.second.x", 28, 4, "int32"}, {"tessarine.video.second.y", 32, 4, "int32"}, {"tessarine.video.second.width", 36, 4, "int32"}, {"tessarine.video.second.height", 40, 4, "int32"}, }},
}
T.events[1] = {
  any = {name = "MSG_APP_STATE", fields = {}},
}
T.events[2] = {
}
T.events[3] = {
}
T.events[4] = {
}
T.events[5] = {
  [2] = {name = "CAROUSEL_DOWNLOAD_COMPLETE", fields = {{"tessarine.carousel.first", 12, 255, "text"}, {"tessarine.carousel.second", 267, 255, "text"}, }},
}
T.events[6] = {
}
T.events[7] = {
}
T.events[8] = {
  [16] = {name = "MEDIA_END_OF_MEDIA", fields = {{"tessarine.media.handle", 12, 4, "int32"}, }},
}
T.events[9] = {
  any = {name = "MSG_DSMCC", fields = {{"tessarine.dsmcc.commandValue", 16, 8, "int64"}, {"tessarine.dsmcc.commandByte", 24, 1, "byte"}, {"tessarine.dsmcc.commandText", 25, 1928, "text"}, }, chunked = "tessarine.dsmcc.commandText"},
}
T.events[10] = {
}
T.demux = {
  [0] = {name = "DEMUX_START", answered = false, args = {}},
  [1] = {name = "DEMUX_STOP", answered = false, args = {}},
  [2] = {name = "DEMUX_SET_PID", answered = false, args = {{"tessarine.demux.pid", "word"}, }},
  [3] = {name = "DEMUX_SET_TABLE_ID", answered = false, args = {{"tessarine.demux.tableId", "word"}, }},
  [4] = {name = "DEMUX_SET_POSITIVE_FILTER", answered = false, args = {{"tessarine.demux.value", "word"}, {"tessarine.demux.first", "string"}, {"tessarine.demux.second", "string"}, }},
  [5] = {name = "DEMUX_SET_GREATER_THAN_FILTER", answered = false, args = {{"tessarine.demux.value", "word"}, {"tessarine.demux.first", "string"}, {"tessarine.demux.second", "string"}, }},
  [6] = {name = "DEMUX_SET_LESS_THAN_FILTER", answered = false, args = {{"tessarine.demux.value", "word"}, {"tessarine.demux.first", "string"}, {"tessarine.demux.second", "string"}, }},
  [7] = {name = "DEMUX_SET_XOR_FILTER", answered = false, args = {{"tessarine.demux.value", "word"}, {"tessarine.demux.first", "string"}, {"tessarine.demux.second", "string"}, {"tessarine.demux.third", "string"}, }},
  [8] = {name = "DEMUX_SET_TIME_OUT", answered = false, args = {{"tessarine.demux.timeout", "word"}, }},
  [9] = {name = "DEMUX_CLEAR_TABLE_ID", answered = false, args = {}},
  [10] = {name = "DEMUX_CLEAR_POSITIVE_FILTER", answered = false, args = {}},
  [11] = {name = "DEMUX_CLEAR_LESS_THAN_FILTER", answered = false, args = {}},
  [12] = {name = "DEMUX_CLEAR_XOR_FILTER", answered = false, args = {}},
  [13] = {name = "DEMUX_READ_SECTION", answered = true, args = {}},
}
-- END GENERATED

local control = Proto("tessarine", "tessarine control channel")
local sections = Proto("tessarine_sections", "tessarine section-filter channel")

local PF = {}  -- every filter field by its name
local function field(name, make, ...)
    PF[name] = make(name, ...)
    return PF[name]
end

local type_names, family_codes = {}, {}
for t, row in pairs(T.types) do
    type_names[t] = row.name
    local codes = {}
    for code, r in pairs(T.requests[t] or {}) do
        if code ~= "any" then codes[code] = r.name end
    end
    for code, e in pairs(T.events[t] or {}) do
        if code ~= "any" then codes[code] = codes[code] or e.name end
    end
    family_codes[t] = codes
end

field("tessarine.type", ProtoField.int32, "Type", base.DEC, type_names)
field("tessarine.code", ProtoField.int32, "Code", base.DEC)
for t, row in pairs(T.types) do
    field("tessarine." .. row.family .. ".code", ProtoField.int32, row.name .. " code", base.DEC, family_codes[t])
end
field("tessarine.role", ProtoField.string, "Role")
field("tessarine.list.count", ProtoField.int32, "Items that follow")
field("tessarine.trailing", ProtoField.bytes, "Trailing data")
field("tessarine.trailing.length", ProtoField.uint32, "Trailing data length")
field("tessarine.trailing.of", ProtoField.string, "Trailing data of")

local MAKERS = {
    int32 = function(n) return ProtoField.int32(n, n) end,
    uint32 = function(n) return ProtoField.uint32(n, n) end,
    uint16 = function(n) return ProtoField.uint16(n, n) end,
    int64 = function(n) return ProtoField.int64(n, n) end,
    byte = function(n) return ProtoField.uint8(n, n) end,
    bool = function(n) return ProtoField.bool(n, n) end,
    double = function(n) return ProtoField.double(n, n) end,
    text = function(n) return ProtoField.stringz(n, n) end,
    handle = function(n) return ProtoField.uint32(n, n, base.HEX) end,
}
for _, f in ipairs(T.fields) do PF[f[1]] = MAKERS[f[2]](f[1]) end

local demux_names = {}
for word, c in pairs(T.demux) do demux_names[word] = c.name end
field("tessarine.demux.command", ProtoField.int32, "Command", base.DEC, demux_names)
for _, c in pairs(T.demux) do
    for _, a in ipairs(c.args) do
        if not PF[a[1]] then
            if a[2] == "word" then field(a[1], ProtoField.int32, a[1]) else field(a[1], ProtoField.bytes, a[1]) end
        end
    end
end
field("tessarine.demux.length", ProtoField.int32, "Byte string length")
field("tessarine.section.length", ProtoField.int32, "Section length")
field("tessarine.section.table_id", ProtoField.uint8, "Table id", base.HEX)
field("tessarine.section", ProtoField.bytes, "Section")

local all = {}
for _, pf in pairs(PF) do all[#all + 1] = pf end
control.fields = all

local malformed = ProtoExpert.new("tessarine.malformed", "Malformed", expert.group.MALFORMED, expert.severity.ERROR)
control.experts = {malformed}

local direction_field = Field.new("frame.packet_flags_direction")
local INBOUND, OUTBOUND = 1, 2

local function direction()
    local d = direction_field()
    return d and d.value or 0
end

local function add_fields(tree, tvb, fields)
    for _, f in ipairs(fields) do
        local name, offset, width, kind = f[1], f[2], f[3], f[4]
        if offset + width > tvb:len() then return false end
        if kind == "text" then tree:add(PF[name], tvb(offset, width)) else tree:add_le(PF[name], tvb(offset, width)) end
    end
    return true
end

local function row(table, t, code)
    local rows = table[t]
    if not rows then return nil end
    return rows[code] or rows.any
end

-- What each outbound record is follows from what came before it: the
-- request it answers, and how many list items are still due. Worked out on
-- the first pass, in order, and kept per frame for later ones.
local state, roles = {}, {}
function control.init()
    state, roles = {}, {}
end

local function classify(pinfo, dir, t, code, len)
    if pinfo.visited then return roles[pinfo.number] or {} end
    local r = {}
    if dir == INBOUND then
        r.role, r.fields = "request", nil
        local req = row(T.requests, t, code)
        if req then
            r.fields = req.fields
            state = {request = req, last = req, type = t, code = code}
        end
    elseif len ~= T.MESSAGE_SIZE then
        r.role = "trailing"
        r.of = state.last and state.last.answer.trailing
    elseif state.request and state.items and state.items > 0 and t == state.type then
        r.role, r.fields = "item", state.request.answer.fields
        state.items = state.items - 1
    elseif state.request and state.request.answer.shape == "list" and not state.items and t == T.LIST_HEADER then
        r.role = "list header"
        state.items = code
    elseif state.request and state.request.answer.shape == "inplace" and t == state.type and code == state.code then
        r.role, r.fields = "answer", state.request.answer.fields
        state.request = nil
    elseif t == T.LIST_HEADER then
        r.role = "chunk header"
        state.chunks = code
    else
        local ev = row(T.events, t, code)
        r.role = "event"
        if ev then r.fields = ev.fields end
        if ev and ev.chunked and (state.chunks or 0) > 0 then
            r.role = "chunk"
            state.chunks = state.chunks - 1
        end
    end
    roles[pinfo.number] = r
    return r
end

local function dissect_control(tvb, pinfo, tree)
    pinfo.cols.protocol = "TESSARINE"
    local len = tvb:len()
    local dir = direction()
    local item = tree:add(control, tvb(), "tessarine control record")
    if dir == OUTBOUND and len ~= T.MESSAGE_SIZE then
        local r = classify(pinfo, dir, -1, -1, len)
        item:add(PF["tessarine.role"], "trailing")
        if r.of then item:add(PF["tessarine.trailing.of"], r.of) end
        item:add(PF["tessarine.trailing.length"], len)
        if len > 0 then item:add(PF["tessarine.trailing"], tvb()) end
        pinfo.cols.info = "trailing data, " .. len .. " bytes"
        return
    end
    if len < T.CODE_OFFSET + 4 then
        item:add_proto_expert_info(malformed, "record of " .. len .. " bytes, too short for a type and code")
        return
    end
    local t = tvb(T.TYPE_OFFSET, 4):le_int()
    local code = tvb(T.CODE_OFFSET, 4):le_int()
    local r = classify(pinfo, dir, t, code, len)
    item:add_le(PF["tessarine.type"], tvb(T.TYPE_OFFSET, 4))
    item:add_le(PF["tessarine.code"], tvb(T.CODE_OFFSET, 4))
    local info = (dir == INBOUND and "> " or "< ") .. (type_names[t] or ("type " .. t))
    if T.types[t] then
        item:add_le(PF["tessarine." .. T.types[t].family .. ".code"], tvb(T.CODE_OFFSET, 4))
        info = info .. " " .. (family_codes[t][code] or tostring(code))
    else
        item:add_proto_expert_info(malformed, "unknown record type " .. t)
    end
    item:add(PF["tessarine.role"], r.role or "")
    info = info .. " (" .. (r.role or "?") .. ")"
    if t == T.LIST_HEADER then item:add(PF["tessarine.list.count"], tvb(T.CODE_OFFSET, 4), code) end
    if len < T.MESSAGE_SIZE then
        item:add_proto_expert_info(malformed, "record cut short: " .. len .. " of " .. T.MESSAGE_SIZE .. " bytes")
    end
    if r.fields and not add_fields(item, tvb, r.fields) then
        item:add_proto_expert_info(malformed, "fields beyond the record's end")
    end
    pinfo.cols.info = info
end

local function dissect_sections(tvb, pinfo, tree)
    pinfo.cols.protocol = "TESSARINE"
    local len = tvb:len()
    local item = tree:add(sections, tvb(), "tessarine section-filter channel")
    if direction() == OUTBOUND then
        if len < 4 then
            item:add_proto_expert_info(malformed, "section answer without its length")
            return
        end
        local n = tvb(0, 4):le_int()
        item:add_le(PF["tessarine.section.length"], tvb(0, 4))
        if n > 0 and 4 + n <= len then
            item:add(PF["tessarine.section"], tvb(4, n))
            item:add(PF["tessarine.section.table_id"], tvb(4, 1))
        elseif n > 0 then
            item:add_proto_expert_info(malformed, "section shorter than its length")
        end
        pinfo.cols.info = "< section, " .. math.max(n, 0) .. " bytes"
        return
    end
    if len < 4 then
        item:add_proto_expert_info(malformed, "command word cut short")
        return
    end
    local word = tvb(0, 4):le_int()
    item:add_le(PF["tessarine.demux.command"], tvb(0, 4))
    local c = T.demux[word]
    pinfo.cols.info = "> " .. (demux_names[word] or ("word " .. word))
    if not c then return end
    local at = 4
    for _, a in ipairs(c.args) do
        if at + 4 > len then
            -- a value that never came keeps its preset; anything else is cut short
            if at < len or a[2] == "string" then item:add_proto_expert_info(malformed, "command cut short") end
            return
        end
        if a[2] == "word" then
            item:add_le(PF[a[1]], tvb(at, 4))
            at = at + 4
        else
            local n = tvb(at, 4):le_int()
            item:add_le(PF["tessarine.demux.length"], tvb(at, 4))
            at = at + 4
            if n > 0 then
                if at + n > len then
                    item:add_proto_expert_info(malformed, "byte string cut short")
                    return
                end
                item:add(PF[a[1]], tvb(at, n))
                at = at + n
            end
        end
    end
    if at < len then item:add_proto_expert_info(malformed, (len - at) .. " bytes after the command") end
end

-- A dissector error must never stop a capture from being read.
local function guarded(dissect)
    return function(tvb, pinfo, tree)
        local ok, err = pcall(dissect, tvb, pinfo, tree)
        if not ok then tree:add_proto_expert_info(malformed, "cannot decode: " .. tostring(err)) end
        return tvb:len()
    end
end
control.dissector = guarded(dissect_control)
sections.dissector = guarded(dissect_sections)

local encaps = DissectorTable.get("wtap_encap")
encaps:add(wtap_encaps.USER0, control)
encaps:add(wtap_encaps.USER1, sections)
