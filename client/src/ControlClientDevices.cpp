// Video, graphics, property, audio, tuner and carousel calls.
#include "ControlClientImpl.h"
#include "RecordFields.h"
#include "tessarine/TextField.h"
#include "tessarine/audio_data.h"
#include "tessarine/command.h"
#include "tessarine/system_property.h"

namespace tessarine {
namespace client {

namespace {

using detail::putRectangle;
using detail::rectangleAt;
using detail::textAt;

Error outOfRange(const std::string& what) { return Error(ErrorCode::InvalidArgument, what); }

// "3 or 5", "9 to 16": the codes a call accepts, for its error.
std::string either(std::int32_t first, std::int32_t second) {
    return std::to_string(first) + " or " + std::to_string(second);
}
std::string range(std::int32_t first, std::int32_t last) {
    return std::to_string(first) + " to " + std::to_string(last);
}

message audioLevel(audio_selector selector, double level) {
    message record = detail::requestRecord(MSG_AUDIO, selector);
    record.put<double>(AUDIO_LEVEL_OFFSET, level);  // the eight bytes unchanged, never scaled
    return record;
}

}  // namespace

// ---- Video ----

Result<void> ControlClient::setVideoBounds(const Rectangle& bounds, Timeout timeout) {
    message record = Impl::request(MSG_VIDEO, VIDEO_SET_BOUNDS);
    putRectangle(record, VIDEO_BOUNDS_OFFSET, bounds);
    return impl_->command(record, timeout);
}

Result<Rectangle> ControlClient::videoBounds(Timeout timeout) {
    message record = Impl::request(MSG_VIDEO, VIDEO_GET_BOUNDS);
    // The bridge asks until all four are set; what stays -1 is unknown.
    putRectangle(record, VIDEO_BOUNDS_OFFSET, Rectangle{-1, -1, -1, -1});
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    return rectangleAt(*answer, VIDEO_BOUNDS_OFFSET);
}

Result<void> ControlClient::resetVideo(Timeout timeout) {
    return impl_->command(Impl::request(MSG_VIDEO, VIDEO_RESET), timeout);
}

Result<std::string> ControlClient::videoLanguage(std::int32_t which, Timeout timeout) {
    if (which != VIDEO_GET_LANGUAGE_3 && which != VIDEO_GET_LANGUAGE_5) {
        return outOfRange("language query is " + either(VIDEO_GET_LANGUAGE_3, VIDEO_GET_LANGUAGE_5));
    }
    auto answer = impl_->single(Impl::request(MSG_VIDEO, which), timeout);
    if (!answer) return answer.error();
    return textAt(*answer, FIRST_TEXT_OFFSET);
}

Result<std::vector<std::string>> ControlClient::videoLanguages(Timeout timeout) {
    auto answer = impl_->call(Impl::request(MSG_VIDEO, VIDEO_GET_LANGUAGES), timeout);
    if (!answer) return answer.error();
    std::vector<std::string> languages;
    for (const message& item : answer->records) languages.push_back(textAt(item, FIRST_TEXT_OFFSET));
    return languages;
}

Result<void> ControlClient::setVideoText(const std::string& text, Timeout timeout) {
    message record = Impl::request(MSG_VIDEO, VIDEO_SET_TEXT_6);
    if (auto error = Impl::putText(record, FIRST_TEXT_OFFSET, text)) return *error;
    return impl_->command(record, timeout);
}

Result<void> ControlClient::setVideoFlag(std::int32_t which, bool flag, Timeout timeout) {
    if (which != VIDEO_SET_FLAG_7 && which != VIDEO_SET_FLAG_8) {
        return outOfRange("video flag is " + either(VIDEO_SET_FLAG_7, VIDEO_SET_FLAG_8));
    }
    message record = Impl::request(MSG_VIDEO, which);
    record.put<std::uint8_t>(VIDEO_FLAG_OFFSET, flag ? 1 : 0);
    return impl_->command(record, timeout);
}

Result<std::optional<std::int32_t>> ControlClient::videoRate(std::int32_t which, Timeout timeout) {
    if (which < VIDEO_GET_RATE_9 || which > VIDEO_GET_RATE_16) {
        return outOfRange("video rate query is " + range(VIDEO_GET_RATE_9, VIDEO_GET_RATE_16));
    }
    auto answer = impl_->single(Impl::request(MSG_VIDEO, which), timeout);
    if (!answer) return answer.error();
    return Impl::valid(answer->get<std::int32_t>(VIDEO_RATE_OFFSET));
}

Result<void> ControlClient::applyGraphicsSettings(Timeout timeout) {
    return impl_->command(Impl::request(MSG_VIDEO, VIDEO_GRAPHICS_SETTINGS), timeout);
}

Result<void> ControlClient::updateGraphicsRegion(const Rectangle& region, Timeout timeout) {
    message record = Impl::request(MSG_VIDEO, VIDEO_UPDATE_REGION);
    putRectangle(record, VIDEO_BOUNDS_OFFSET, region);
    return impl_->command(record, timeout);
}

// ---- System properties ----

Result<std::optional<std::string>> ControlClient::systemProperty(const std::string& name, Timeout timeout) {
    message record = Impl::request(MSG_PROPERTY, PROPERTY_GET);
    if (auto error = Impl::putText(record, FIRST_TEXT_OFFSET, name)) return *error;
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    std::string value = textAt(*answer, SECOND_TEXT_OFFSET);
    if (value.empty()) return std::optional<std::string>();
    return std::optional<std::string>(std::move(value));
}

Result<std::vector<SystemProperty>> ControlClient::systemProperties(Timeout timeout) {
    auto answer = impl_->call(Impl::request(MSG_PROPERTY, PROPERTY_LIST), timeout);
    if (!answer) return answer.error();
    std::vector<SystemProperty> properties;
    for (const message& item : answer->records) {
        properties.push_back(SystemProperty{textAt(item, FIRST_TEXT_OFFSET), textAt(item, SECOND_TEXT_OFFSET)});
    }
    return properties;
}

Result<void> ControlClient::setSystemProperty(const std::string& name, const std::string& value, Timeout timeout) {
    message record = Impl::request(MSG_PROPERTY, PROPERTY_SET);
    if (auto error = Impl::putText(record, FIRST_TEXT_OFFSET, name)) return *error;
    if (auto error = Impl::putText(record, SECOND_TEXT_OFFSET, value)) return *error;
    return impl_->command(record, timeout);
}

Result<void> ControlClient::removeSystemProperty(const std::string& name, Timeout timeout) {
    message record = Impl::request(MSG_PROPERTY, PROPERTY_REMOVE);
    if (auto error = Impl::putText(record, FIRST_TEXT_OFFSET, name)) return *error;
    return impl_->command(record, timeout);
}

// ---- Audio ----

Result<void> ControlClient::setSoundLevel(double level, Timeout timeout) {
    return impl_->command(audioLevel(AUDIO_SOUND_LEVEL, level), timeout);
}
Result<void> ControlClient::setBalanceLevel(double level, Timeout timeout) {
    return impl_->command(audioLevel(AUDIO_BALANCE_LEVEL, level), timeout);
}
Result<void> ControlClient::setBassLevel(double level, Timeout timeout) {
    return impl_->command(audioLevel(AUDIO_BASS_LEVEL, level), timeout);
}
Result<void> ControlClient::setTrebleLevel(double level, Timeout timeout) {
    return impl_->command(audioLevel(AUDIO_TREBLE_LEVEL, level), timeout);
}
Result<void> ControlClient::setMute(bool mute, Timeout timeout) {
    message record = Impl::request(MSG_AUDIO, AUDIO_MUTE);
    record.put<std::uint8_t>(AUDIO_MUTE_OFFSET, mute ? 1 : 0);
    return impl_->command(record, timeout);
}

// ---- Tuner ----

Result<std::optional<std::int32_t>> ControlClient::currentTransportStreamId(Timeout timeout) {
    auto answer = impl_->single(Impl::request(MSG_TUNER, TUNER_CURRENT_TS_ID), timeout);
    if (!answer) return answer.error();
    return Impl::valid(answer->get<std::int32_t>(TUNER_ID_OFFSET));
}

Result<std::vector<std::int32_t>> ControlClient::tunerIds(std::int32_t kind, std::int32_t parameter, Timeout timeout) {
    if (kind == TUNER_CURRENT_TS_ID) {
        return outOfRange("tuner list kind " + std::to_string(kind) + " is the current transport stream query");
    }
    message record = Impl::request(MSG_TUNER, kind);
    record.put<std::int32_t>(TUNER_PARAMETER_OFFSET, parameter);
    auto answer = impl_->call(record, timeout);
    if (!answer) return answer.error();
    std::vector<std::int32_t> ids;
    for (const message& item : answer->records) ids.push_back(item.get<std::int32_t>(TUNER_ID_OFFSET));
    return ids;
}

// ---- Carousels ----

Result<std::optional<std::string>> ControlClient::mountCarousel(const std::string& name, Timeout timeout) {
    message record = Impl::request(MSG_CAROUSEL, CAROUSEL_MOUNT);
    if (auto error = Impl::putText(record, FIRST_TEXT_OFFSET, name)) return *error;
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    std::string mountPoint = textAt(*answer, SECOND_TEXT_OFFSET);
    if (mountPoint.empty()) return std::optional<std::string>();
    return std::optional<std::string>(std::move(mountPoint));
}

Result<void> ControlClient::unmountCarousel(const std::string& name, Timeout timeout) {
    message record = Impl::request(MSG_CAROUSEL, CAROUSEL_UMOUNT);
    if (auto error = Impl::putText(record, FIRST_TEXT_OFFSET, name)) return *error;
    return impl_->command(record, timeout);
}

Result<void> ControlClient::addCarouselListener(Timeout timeout) {
    return impl_->command(Impl::request(MSG_CAROUSEL, CAROUSEL_ADD_LISTENER), timeout);
}

Result<void> ControlClient::removeCarouselListener(Timeout timeout) {
    return impl_->command(Impl::request(MSG_CAROUSEL, CAROUSEL_REMOVE_LISTENER), timeout);
}

}  // namespace client
}  // namespace tessarine
