#include "WireNames.h"

#include <cctype>

namespace wire {

using namespace tessarine::protocol;

std::string WireNames::typeName(std::int32_t type) {
    const RecordType* row = findRecordType(type);
    return row != nullptr ? row->name : std::to_string(type);
}

std::string WireNames::family(std::int32_t type) {
    std::string name = typeName(type);
    if (name.rfind("MSG_", 0) == 0) name.erase(0, 4);
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return name;
}

std::string WireNames::codeName(std::int32_t type, std::int32_t code) {
    for (const Request& r : REQUESTS) {
        if (r.type == type && r.code == code) return r.name;
    }
    for (const Event& e : EVENTS) {
        if (e.type == type && e.code == code) return e.name;
    }
    return std::to_string(code);
}

void WireNames::forEachField(const std::function<void(std::int32_t, const Field&)>& visit) {
    for (const Request& r : REQUESTS) {
        for (const Field& f : r.fields) visit(r.type, f);
        for (const Field& f : r.answer.fields) visit(r.type, f);
    }
    for (const Event& e : EVENTS) {
        for (const Field& f : e.fields) visit(e.type, f);
    }
}

std::string WireNames::field(std::int32_t type, const Field& field) {
    const Field* first = nullptr;
    forEachField([&](std::int32_t t, const Field& f) {
        if (first == nullptr && t == type && sameName(f.name, field.name)) first = &f;
    });
    std::string name = "tessarine." + family(type) + "." + field.name;
    if (first != nullptr && std::string(kind(first->kind)) != kind(field.kind)) name += std::string("_") + kind(field.kind);
    return name;
}

std::string WireNames::argument(const DemuxArgument& argument) { return std::string("tessarine.demux.") + argument.name; }

const char* WireNames::trailing(Trailing trailing) {
    switch (trailing) {
    case Trailing::ProgramEvent: return "program_event";
    case Trailing::Descriptor: return "descriptor";
    case Trailing::None: break;
    }
    return "none";
}

const char* WireNames::kind(FieldKind kind) {
    switch (kind) {
    case FieldKind::Int32: return "int32";
    case FieldKind::UInt32: return "uint32";
    case FieldKind::UInt16: return "uint16";
    case FieldKind::Int64: return "int64";
    case FieldKind::Byte: return "byte";
    case FieldKind::Bool: return "bool";
    case FieldKind::Double: return "double";
    case FieldKind::TextField:
    case FieldKind::Text: return "text";
    case FieldKind::Handle: return "handle";
    }
    return "bytes";
}

}  // namespace wire
