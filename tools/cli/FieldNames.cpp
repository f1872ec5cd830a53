#include "FieldNames.h"

#include <cstdio>
#include <ctime>

namespace cli {

using R = FieldNames::Record;
using F = FieldNames::Format;

const std::vector<FieldNames::Field>& FieldNames::table() {
    static const std::vector<Field> fields = {
        {R::Service, "value0", "service_id", F::Plain},
        {R::Service, "value1", "onid", F::Plain},
        {R::Service, "value2", "tsid", F::Plain},
        {R::Service, "value3", "service_type", F::Plain},
        {R::Service, "value4", "running_status", F::Plain},
        {R::Service, "text0", "name", F::Plain},
        {R::ProgramEvent, "value0", "event_id", F::Plain},
        {R::ProgramEvent, "value1", "start", F::Time},
        {R::ProgramEvent, "value2", "duration", F::Duration},
        {R::ProgramEvent, "value3", "running_status", F::Plain},
        {R::ProgramEvent, "value4", "service_id", F::Plain},
        {R::ProgramEvent, "value5", "free_ca_mode", F::Plain},
        {R::ProgramEvent, "value6", "minimum_age", F::Plain},
        {R::ProgramEvent, "text0", "title", F::Plain},
        {R::ProgramEvent, "text1", "short_text", F::Plain},
        {R::ProgramEvent, "text2", "extended_text", F::Plain},
        {R::ProgramEvent, "bytes0", "language", F::LanguageBytes},
        {R::ProgramEvent, "bytes1", "content", F::Bytes},
        {R::ProgramEvent, "bytes2", "parental_rating", F::Bytes},
        {R::ProgramEvent, "strings0", "item_descriptions", F::Plain},
        {R::ProgramEvent, "strings1", "items", F::Plain},
        {R::Component, "value0", "pid", F::Plain},
        {R::Component, "value1", "stream_type", F::Plain},
        {R::Component, "value2", "component_tag", F::Plain},
        {R::Component, "value3", "service_id", F::Plain},
        {R::Component, "value4", "kind", F::Plain},
        {R::Component, "value5", "language", F::LanguageCode},
        {R::Pmt, "value0", "program_number", F::Plain},
        {R::Pmt, "value1", "pmt_pid", F::Plain},
        {R::Pmt, "value2", "pcr_pid", F::Plain},
        {R::Pmt, "value3", "version", F::Plain},
        {R::TransportStream, "value0", "tsid", F::Plain},
        {R::TransportStream, "value1", "onid", F::Plain},
        {R::TransportStream, "value2", "network_id", F::Plain},
        {R::TransportStream, "value3", "service_count", F::Plain},
        {R::TransportStream, "value4", "delivery", F::Plain},
        {R::Network, "value0", "network_id", F::Plain},
        {R::Network, "text0", "name", F::Plain},
    };
    return fields;
}

namespace {

const FieldNames::Field* find(R record, const std::string& wire) {
    for (const auto& field : FieldNames::table()) {
        if (field.record == record && wire == field.wire) return &field;
    }
    return nullptr;
}

// Three letters of an ISO 639 code; anything else as it came.
std::string language(const std::string& letters) {
    for (char c : letters) {
        if (c < 'a' || c > 'z') return {};
    }
    return letters;
}

}  // namespace

Json FieldNames::decode(Format format, const Json& value) {
    switch (format) {
    case F::Time: {
        if (!value.is_number_integer()) break;
        const std::time_t seconds = value.get<std::int64_t>();
        std::tm parts{};
        gmtime_r(&seconds, &parts);
        char text[32];
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
        return text;
    }
    case F::Duration: {
        if (!value.is_number_integer()) break;
        const long seconds = value.get<long>();
        char text[32];
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", seconds / 3600, seconds / 60 % 60, seconds % 60);
        return text;
    }
    case F::LanguageCode: {
        if (!value.is_number_integer()) break;
        const int code = value.get<int>();
        const std::string letters{static_cast<char>(code >> 16 & 0xff), static_cast<char>(code >> 8 & 0xff),
                                  static_cast<char>(code & 0xff)};
        const std::string text = language(letters);
        return text.empty() ? value : Json(text);
    }
    case F::LanguageBytes: {
        std::vector<std::uint8_t> bytes;
        if (!value.is_string() || !parseHex(value.get<std::string>(), bytes)) break;
        const std::string text = language(std::string(bytes.begin(), bytes.end()));
        return text.empty() ? value : Json(text);
    }
    case F::Plain:
    case F::Bytes:
        break;
    }
    return value;
}

Json FieldNames::withNames(Record record, const Json& wire) {
    Json out = wire;
    for (const auto& item : wire.items()) {
        if (const Field* field = find(record, item.key())) out[field->name] = decode(field->format, item.value());
    }
    return out;
}

Json FieldNames::forPeople(Record record, const Json& wire, bool dumps) {
    Json out = Json::object();
    for (const auto& item : wire.items()) {
        const Field* field = find(record, item.key());
        if (isBinaryKey(item.key()) && !dumps && !(field && field->format == F::LanguageBytes)) continue;
        if (field == nullptr) {
            out[item.key()] = item.value();
        } else if (field->format == F::Bytes) {
            out[item.key()] = item.value();  // stays a byte string, dumped under its wire name
        } else {
            out[field->name] = decode(field->format, item.value());
        }
    }
    return out;
}

}  // namespace cli
