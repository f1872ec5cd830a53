#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

// Every limit of the two channels, each with its reason. Self-contained, so
// that the client library can install it with its own headers.
namespace tessarine {

// --- The control record ---

// Every record on the control socket has exactly this size, in both directions.
inline constexpr std::size_t MESSAGE_SIZE = 1960;
// A fixed text field: at most TEXT_FIELD_CHARACTERS characters and always a NUL.
inline constexpr std::size_t TEXT_FIELD_SIZE = 255;
inline constexpr std::size_t TEXT_FIELD_CHARACTERS = TEXT_FIELD_SIZE - 1;
// Characters of a DSM-CC command text carried by one record; longer texts go in chunks.
inline constexpr std::size_t CHUNK_SIZE = 1920;
// A chunked text has at least two pieces: a text that fits one record goes whole.
inline constexpr std::size_t MIN_CHUNK_COUNT = 2;
// A media locator starts at byte 16 and must end, NUL included, within the record.
inline constexpr std::size_t MAX_LOCATOR_LENGTH = 1943;

// --- The sockets ---

// A socket address holds 108 path bytes, the last for the NUL.
inline constexpr std::size_t MAX_SOCKET_PATH_LENGTH = 107;
// One client at a time: a second one waits in the backlog until the first leaves.
inline constexpr int LISTEN_BACKLOG = 1;
// A client of either channel that takes no byte of an answer for this long
// (measured once per answer) is treated as gone and its connection dropped:
// a stuck application must never hold a server's or a host's thread longer.
inline constexpr std::chrono::seconds SEND_TIME_LIMIT{5};

// --- The section-filter channel ---

// A transport stream's packet identifier has 13 bits, a table id 8.
inline constexpr std::int32_t MAX_PID = 0x1FFF;
inline constexpr std::int32_t MAX_TABLE_ID = 0xFF;
// The longest section of a transport stream.
inline constexpr std::size_t MAX_SECTION_LENGTH = 4096;
// No filter over a section can use more; a longer byte string ends the
// connection instead of being allocated.
inline constexpr std::int32_t MAX_FILTER_LENGTH = 4096;

// --- The client library's defaults ---

// Time limit of a call, covering the wait for earlier calls, connecting,
// sending and the whole answer.
inline constexpr std::chrono::milliseconds CLIENT_TIME_LIMIT{5000};
// Bounds on what the bridge may announce; an answer beyond them is refused as
// malformed before anything is allocated for it.
// Items of one list: room for the 100 000 services of a full network scan.
inline constexpr std::size_t CLIENT_MAX_LIST_ITEMS = 131072;
inline constexpr std::size_t CLIENT_MAX_TRAILING_BYTES = 1 << 20;  // one byte list, string or descriptor
inline constexpr std::size_t CLIENT_MAX_STRINGS_PER_LIST = 65536;
inline constexpr std::size_t CLIENT_MAX_DSMCC_CHUNKS = 1024;       // about 2 MB of command text
// The trailing data of one whole answer, in units of the per-item bound.
inline constexpr std::size_t CLIENT_ANSWER_TRAILING_ITEMS = 64;

}  // namespace tessarine
