#include "CaptureDecoder.h"

#include <cstring>
#include <ctime>

#include "../wireshark/WireNames.h"
#include "transport/PcapngWriter.h"

namespace cli {

using namespace tessarine;
using namespace tessarine::protocol;
using wire::WireNames;

namespace {

constexpr std::uint32_t INBOUND = PcapngWriter::INBOUND, OUTBOUND = PcapngWriter::OUTBOUND;

template <typename T>
T at(const std::vector<std::uint8_t>& bytes, std::size_t offset) {
    T value{};
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

Json value(const std::vector<std::uint8_t>& bytes, const Field& f) {
    switch (f.kind) {
    case FieldKind::Int32: return at<std::int32_t>(bytes, f.offset);
    case FieldKind::UInt32:
    case FieldKind::Handle: return at<std::uint32_t>(bytes, f.offset);
    case FieldKind::UInt16: return at<std::uint16_t>(bytes, f.offset);
    case FieldKind::Int64: return at<std::int64_t>(bytes, f.offset);
    case FieldKind::Byte: return bytes[f.offset];
    case FieldKind::Bool: return bytes[f.offset] != 0;
    case FieldKind::Double: return at<double>(bytes, f.offset);
    case FieldKind::TextField:
    case FieldKind::Text: break;
    }
    const char* text = reinterpret_cast<const char*>(bytes.data() + f.offset);
    return std::string(text, ::strnlen(text, f.width));
}

std::string timeOf(std::uint64_t micros) {
    const auto seconds = static_cast<std::time_t>(micros / 1000000);
    std::tm utc{};
    ::gmtime_r(&seconds, &utc);
    char text[40];
    const std::size_t n = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(text + n, sizeof text - n, ".%06uZ", static_cast<unsigned>(micros % 1000000));
    return text;
}

void problem(Json& out, const std::string& text) { out["malformed"] = text; }

}  // namespace

Json CaptureDecoder::decode(const CaptureBlock& block) {
    Json out{{"time", timeOf(block.micros)}};
    if (block.kind == CaptureBlock::STATISTICS) {
        out["channel"] = block.interface == 0 ? "control" : "sections";
        out["dropped"] = block.dropped;
        if (!block.comment.empty()) out["comment"] = block.comment;
        return out;
    }
    out["direction"] = block.direction == INBOUND ? "in" : block.direction == OUTBOUND ? "out" : "?";
    if (block.linkType == PcapngWriter::LINKTYPE_CONTROL) {
        control(block, out);
    } else if (block.linkType == PcapngWriter::LINKTYPE_SECTIONS) {
        sections(block, out);
    } else {
        problem(out, "unknown link type " + std::to_string(block.linkType));
    }
    return out;
}

const char* CaptureDecoder::classify(std::uint32_t direction, std::int32_t type, std::int32_t code, Fields& fields) {
    if (direction == INBOUND) {
        if (const Request* r = findRequest(type, code)) {
            fields = r->fields;
            request_ = last_ = r;
            type_ = type;
            code_ = code;
            items_ = -1;
        }
        return "request";
    }
    if (request_ != nullptr && items_ > 0 && type == type_) {
        --items_;
        fields = request_->answer.fields;
        return "item";
    }
    if (request_ != nullptr && request_->answer.shape == AnswerShape::List && items_ < 0 && type == MSG_LIST_HEADER) {
        items_ = code;
        return "list header";
    }
    if (request_ != nullptr && request_->answer.shape == AnswerShape::InPlace && type == type_ && code == code_) {
        fields = request_->answer.fields;
        request_ = nullptr;
        return "answer";
    }
    if (type == MSG_LIST_HEADER) {
        chunks_ = code;
        return "chunk header";
    }
    const Event* e = findEvent(type, code);
    if (e == nullptr) return "event";
    fields = e->fields;
    if (e->chunked == nullptr || chunks_ <= 0) return "event";
    --chunks_;
    return "chunk";
}

void CaptureDecoder::control(const CaptureBlock& block, Json& out) {
    out["channel"] = "control";
    const auto& bytes = block.bytes;
    if (block.direction == OUTBOUND && bytes.size() != MESSAGE_SIZE) {
        out["role"] = "trailing";
        if (last_ != nullptr) out["tessarine.trailing.of"] = WireNames::trailing(last_->answer.trailing);
        out["tessarine.trailing.length"] = bytes.size();
        out["tessarine.trailing"] = toHex(bytes);
        return;
    }
    if (bytes.size() < CODE_OFFSET + 4) return problem(out, "too short for a type and code");
    const auto type = at<std::int32_t>(bytes, TYPE_OFFSET), code = at<std::int32_t>(bytes, CODE_OFFSET);
    Fields fields;
    const char* role = classify(block.direction, type, code, fields);
    out["type"] = WireNames::typeName(type);
    out["code"] = WireNames::codeName(type, code);
    out["role"] = role;
    out["tessarine.type"] = type;
    if (findRecordType(type) == nullptr) return problem(out, "unknown record type");
    out["tessarine." + WireNames::family(type) + ".code"] = code;
    if (type == MSG_LIST_HEADER) out["tessarine.list.count"] = code;
    if (bytes.size() < MESSAGE_SIZE) return problem(out, "record cut short: " + std::to_string(bytes.size()) + " bytes");
    for (const Field& f : fields) out[WireNames::field(type, f)] = value(bytes, f);
}

void CaptureDecoder::sections(const CaptureBlock& block, Json& out) {
    out["channel"] = "sections";
    const auto& bytes = block.bytes;
    if (bytes.size() < 4) return problem(out, "no command word or length");
    const auto first = at<std::int32_t>(bytes, 0);
    if (block.direction == OUTBOUND) {
        out["role"] = "section";
        out["tessarine.section.length"] = first;
        if (first > 0 && 4 + static_cast<std::size_t>(first) <= bytes.size()) {
            out["tessarine.section.table_id"] = bytes[4];
            out["tessarine.section"] = toHex({bytes.begin() + 4, bytes.end()});
        } else if (first > 0) {
            problem(out, "section shorter than its length");
        }
        return;
    }
    out["role"] = "command";
    out["tessarine.demux.command"] = first;
    const DemuxCommand* command = findDemuxCommand(first);
    out["code"] = command != nullptr ? command->name : std::to_string(first);
    if (command == nullptr) return;
    std::size_t offset = 4;
    for (const DemuxArgument& a : command->arguments) {
        if (offset + 4 > bytes.size()) return problem(out, "command cut short");
        const auto word = at<std::int32_t>(bytes, offset);
        offset += 4;
        if (a.kind == DemuxArgumentKind::Word) {
            out[WireNames::argument(a)] = word;
            continue;
        }
        const std::size_t length = word > 0 ? static_cast<std::size_t>(word) : 0;
        if (offset + length > bytes.size()) return problem(out, "byte string cut short");
        out[WireNames::argument(a)] = toHex({bytes.begin() + static_cast<std::ptrdiff_t>(offset),
                                             bytes.begin() + static_cast<std::ptrdiff_t>(offset + length)});
        offset += length;
    }
}

}  // namespace cli
