#include "Expectation.h"

namespace tessarine {
namespace client {
namespace detail {

namespace {

Expectation single(std::int32_t type, std::int32_t code, Trailing trailing = Trailing::None) {
    Expectation e;
    e.kind = Expectation::Kind::Single;
    e.type = type;
    e.code = code;
    e.trailing = trailing;
    return e;
}

Expectation list(std::int32_t type, std::int32_t itemCode, ItemCode rule, Trailing trailing = Trailing::None) {
    Expectation e;
    e.kind = Expectation::Kind::List;
    e.type = type;
    e.code = itemCode;
    e.itemCode = rule;
    e.trailing = trailing;
    return e;
}

std::optional<Expectation> video(std::int32_t code) {
    switch (code) {
    case 1: case 3: case 5: case 9: case 10: case 11: case 12: case 13: case 14: case 15: case 16:
        return single(MSG_VIDEO, code);
    case 4:
        return list(MSG_VIDEO, 0, ItemCode::EqualsCount);
    default:
        return std::nullopt;
    }
}

std::optional<Expectation> serviceInformation(std::int32_t code) {
    switch (code) {
    case 0: case 5: case 7: case 8: case 12: case 14:
        return single(MSG_SI, code);
    case 2:
        return single(MSG_SI, code, Trailing::ProgramEvent);
    case 1:
        return list(MSG_SI, 1, ItemCode::Exact, Trailing::ProgramEvent);
    case 3: case 9: case 13: case 15:
        return list(MSG_SI, 3, ItemCode::Exact, Trailing::Descriptor);
    case 11:
        return list(MSG_SI, 11, ItemCode::Exact, Trailing::Descriptor);
    case 4: case 6: case 10: case 16:
        return list(MSG_SI, code, ItemCode::Exact);
    default:
        return std::nullopt;
    }
}

}  // namespace

std::optional<Expectation> expectationFor(std::int32_t type, std::int32_t code) {
    switch (type) {
    case MSG_VIDEO:
        return video(code);
    case MSG_PROPERTY:
        if (code == 0) return single(MSG_PROPERTY, 0);
        if (code == 1) return list(MSG_PROPERTY, 0, ItemCode::Any);
        return std::nullopt;
    case MSG_TUNER:
        if (code == 0) return single(MSG_TUNER, 0);
        return list(MSG_TUNER, 0, ItemCode::EqualsCount);
    case MSG_CAROUSEL:
        if (code == 0) return single(MSG_CAROUSEL, 0);
        return std::nullopt;
    case MSG_SI:
        return serviceInformation(code);
    case MSG_MEDIA:
        switch (code) {
        case 0: case 1: case 2: case 3: case 5: case 8: case 9:
            return single(MSG_MEDIA, code);
        default:
            return std::nullopt;
        }
    case MSG_VERSION:
        return single(MSG_VERSION, code);
    default:
        return std::nullopt;
    }
}

std::string describeRecord(std::int32_t type, std::int32_t code) {
    static const char* const names[] = {"MSG_VIDEO", "MSG_APP_STATE", "MSG_PROPERTY", "MSG_AUDIO",
                                        "MSG_TUNER", "MSG_CAROUSEL",  "MSG_SI",       "MSG_LIST_HEADER",
                                        "MSG_MEDIA", "MSG_DSMCC",     "MSG_VERSION"};
    const std::string name = (type >= 0 && type <= MSG_VERSION) ? names[type] : "type " + std::to_string(type);
    return name + " code " + std::to_string(code);
}

}  // namespace detail
}  // namespace client
}  // namespace tessarine
