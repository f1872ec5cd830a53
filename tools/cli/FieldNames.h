#pragma once

#include <string>
#include <vector>

#include "Output.h"

namespace cli {

// What the opaque values of the service-information answers mean, as the
// simulator fills them from a transport stream: the one table of field names,
// used by the CLI's columns and JSON keys and referred to by the docs.
class FieldNames {
public:
    enum class Record { Service, ProgramEvent, Component, Pmt, TransportStream, Network };
    // How a value reads for people.
    enum class Format { Plain, Time, Duration, LanguageCode, LanguageBytes, Bytes };

    struct Field {
        Record record;
        const char* wire;  // "value0"
        const char* name;  // "service_id"
        Format format;
    };

    static const std::vector<Field>& table();

    // For scripts: the wire members with the named ones added after them.
    static Json withNames(Record record, const Json& wire);
    // For people: named members with decoded values in place of the wire ones;
    // byte strings stay only when dumps are wanted.
    static Json forPeople(Record record, const Json& wire, bool dumps);
    // The decoded value: "2026-01-01T20:00:00Z", "1:30:00", "eng".
    static Json decode(Format format, const Json& value);
};

}  // namespace cli
