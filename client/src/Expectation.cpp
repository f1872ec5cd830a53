#include "Expectation.h"

#include "tessarine/protocol/RecordTypes.h"

namespace tessarine {
namespace client {
namespace detail {

std::optional<Expectation> expectationFor(std::int32_t type, std::int32_t code) {
    const protocol::Request* request = protocol::findRequest(type, code);
    if (request == nullptr || request->answer.shape == protocol::AnswerShape::None) return std::nullopt;
    const protocol::Answer& answer = request->answer;
    Expectation e;
    e.type = type;
    e.trailing = answer.trailing;
    e.fields = answer.fields;
    if (answer.shape == protocol::AnswerShape::InPlace) {
        e.kind = Expectation::Kind::Single;
        e.code = code;
    } else {
        e.kind = Expectation::Kind::List;
        e.code = answer.item;
        e.itemCode = answer.itemCode;
    }
    return e;
}

std::string describeRecord(std::int32_t type, std::int32_t code) {
    const protocol::RecordType* kind = protocol::findRecordType(type);
    const std::string name = kind != nullptr ? kind->name : "type " + std::to_string(type);
    return name + " code " + std::to_string(code);
}

}  // namespace detail
}  // namespace client
}  // namespace tessarine
