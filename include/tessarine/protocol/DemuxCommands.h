#pragma once

#include "tessarine/protocol/Codes.h"
#include "tessarine/protocol/Table.h"

// The section-filter channel: a byte stream of 32-bit command words (host
// byte order), each followed by its arguments, nothing between commands.
// A word is a 32-bit integer; a byte string is a 32-bit length L and then L
// bytes (L of zero or less: empty, no bytes follow). Only DEMUX_READ_SECTION
// is answered: a 32-bit length N and the section's N bytes. A word above 13
// (or negative), or any word while no listener is set, is dropped alone.
namespace tessarine {
namespace protocol {

enum class DemuxArgumentKind { Word, ByteString };

struct DemuxArgument {
    const char* name;  // as the IpcDemuxServerListener operation names it
    DemuxArgumentKind kind;
};

struct DemuxCommand {
    demux_command word;
    const char* name;
    const char* operation;  // the IpcDemuxServerListener operation it reaches
    Table<DemuxArgument> arguments;
    bool answered;  // with the section read: its length and bytes
};

inline constexpr DemuxArgument PID_ARGUMENTS[] = {{"pid", DemuxArgumentKind::Word}};
inline constexpr DemuxArgument TABLE_ID_ARGUMENTS[] = {{"tableId", DemuxArgumentKind::Word}};
inline constexpr DemuxArgument TIME_OUT_ARGUMENTS[] = {{"timeout", DemuxArgumentKind::Word}};
inline constexpr DemuxArgument FILTER_ARGUMENTS[] = {{"value", DemuxArgumentKind::Word},
                                                     {"first", DemuxArgumentKind::ByteString},
                                                     {"second", DemuxArgumentKind::ByteString}};
inline constexpr DemuxArgument XOR_FILTER_ARGUMENTS[] = {{"value", DemuxArgumentKind::Word},
                                                         {"first", DemuxArgumentKind::ByteString},
                                                         {"second", DemuxArgumentKind::ByteString},
                                                         {"third", DemuxArgumentKind::ByteString}};

#define TESSARINE_WORD(word) word, #word

inline constexpr DemuxCommand DEMUX_COMMANDS[] = {
    {TESSARINE_WORD(DEMUX_START), "start", {}, false},
    {TESSARINE_WORD(DEMUX_STOP), "stop", {}, false},
    {TESSARINE_WORD(DEMUX_SET_PID), "set_pid", table(PID_ARGUMENTS), false},
    {TESSARINE_WORD(DEMUX_SET_TABLE_ID), "set_table_id", table(TABLE_ID_ARGUMENTS), false},
    {TESSARINE_WORD(DEMUX_SET_POSITIVE_FILTER), "set_positive_filter", table(FILTER_ARGUMENTS), false},
    {TESSARINE_WORD(DEMUX_SET_GREATER_THAN_FILTER), "set_greater_than_filter", table(FILTER_ARGUMENTS), false},
    {TESSARINE_WORD(DEMUX_SET_LESS_THAN_FILTER), "set_less_than_filter", table(FILTER_ARGUMENTS), false},
    {TESSARINE_WORD(DEMUX_SET_XOR_FILTER), "set_xor_filter", table(XOR_FILTER_ARGUMENTS), false},
    {TESSARINE_WORD(DEMUX_SET_TIME_OUT), "set_time_out", table(TIME_OUT_ARGUMENTS), false},
    {TESSARINE_WORD(DEMUX_CLEAR_TABLE_ID), "clear_table_id", {}, false},
    {TESSARINE_WORD(DEMUX_CLEAR_POSITIVE_FILTER), "clear_positive_filter", {}, false},
    {TESSARINE_WORD(DEMUX_CLEAR_LESS_THAN_FILTER), "clear_less_than_filter", {}, false},
    {TESSARINE_WORD(DEMUX_CLEAR_XOR_FILTER), "clear_xor_filter", {}, false},
    {TESSARINE_WORD(DEMUX_READ_SECTION), "read_section", {}, true},
};

#undef TESSARINE_WORD

// The command of `word`, or null for a word that is dropped.
constexpr const DemuxCommand* findDemuxCommand(std::int32_t word) { return rowOf(DEMUX_COMMANDS, word); }

static_assert(inCodeOrder(DEMUX_COMMANDS, [](const DemuxCommand& command) { return command.word; }),
              "one row per command word, in order");

}  // namespace protocol
}  // namespace tessarine
