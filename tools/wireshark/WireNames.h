#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tessarine/protocol/Protocol.h"

namespace wire {

// The names under which the capture tools show the wire: the filter names of
// the Wireshark dissector and the keys of `tessarine-cli capture decode`, both
// made here from the protocol tables.
class WireNames {
public:
    // "video" for MSG_VIDEO, "si" for MSG_SI: the record type's name without MSG_, in lower case.
    static std::string family(std::int32_t type);
    // "MSG_SI", or the number for a type outside the table.
    static std::string typeName(std::int32_t type);
    // The name of a code of a type (a request's or an event's), or its number.
    static std::string codeName(std::int32_t type, std::int32_t code);
    // "tessarine.si.value0": a field of a record of `type`. A name that the
    // type's tables use with two kinds gets the kind after the first one.
    static std::string field(std::int32_t type, const tessarine::protocol::Field& field);
    // "tessarine.demux.pid": an argument of a section-filter command.
    static std::string argument(const tessarine::protocol::DemuxArgument& argument);
    // What trailing data follows an answer: "program_event", "descriptor" or "none".
    static const char* trailing(tessarine::protocol::Trailing trailing);
    // The kind's name in the generated tables ("int32", "text", ...).
    static const char* kind(tessarine::protocol::FieldKind kind);

    // Every field of every request, answer and event, in table order, with its record type.
    static void forEachField(const std::function<void(std::int32_t, const tessarine::protocol::Field&)>& visit);
};

}  // namespace wire
