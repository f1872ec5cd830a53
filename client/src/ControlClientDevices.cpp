// Video, graphics, property, audio, tuner and carousel calls.
#include "ControlClientImpl.h"
#include "tessarine/TextField.h"
#include "tessarine/audio_data.h"
#include "tessarine/command.h"
#include "tessarine/system_property.h"

namespace tessarine {
namespace client {

namespace {

void putRectangle(message& record, std::size_t offset, const Rectangle& r) {
    record.put<std::int32_t>(offset, r.x);
    record.put<std::int32_t>(offset + 4, r.y);
    record.put<std::int32_t>(offset + 8, r.width);
    record.put<std::int32_t>(offset + 12, r.height);
}

Rectangle rectangleAt(const message& record, std::size_t offset) {
    return Rectangle{record.get<std::int32_t>(offset), record.get<std::int32_t>(offset + 4),
                     record.get<std::int32_t>(offset + 8), record.get<std::int32_t>(offset + 12)};
}

std::string textAt(const message& record, std::size_t offset) {
    return readTextField(reinterpret_cast<const char*>(record.bytes() + offset));
}

Error outOfRange(const char* what) { return Error(ErrorCode::InvalidArgument, what); }

message audioLevel(audio_selector selector, double level) {
    message record;
    record.clear();
    record.type = MSG_AUDIO;
    record.code = selector;
    record.put<double>(16, level);  // the eight bytes unchanged, never scaled
    return record;
}

}  // namespace

// ---- Video ----

Result<void> ControlClient::setVideoBounds(const Rectangle& bounds, Timeout timeout) {
    message record = Impl::request(MSG_VIDEO, VIDEO_SET_BOUNDS);
    putRectangle(record, 12, bounds);
    return impl_->command(record, timeout);
}

Result<Rectangle> ControlClient::videoBounds(Timeout timeout) {
    message record = Impl::request(MSG_VIDEO, VIDEO_GET_BOUNDS);
    // The bridge asks until all four are set; what stays -1 is unknown.
    putRectangle(record, 12, Rectangle{-1, -1, -1, -1});
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    return rectangleAt(*answer, 12);
}

Result<void> ControlClient::resetVideo(Timeout timeout) {
    return impl_->command(Impl::request(MSG_VIDEO, VIDEO_RESET), timeout);
}

Result<std::string> ControlClient::videoLanguage(std::int32_t which, Timeout timeout) {
    if (which != VIDEO_GET_LANGUAGE_3 && which != VIDEO_GET_LANGUAGE_5) return outOfRange("language query is 3 or 5");
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
    if (which != VIDEO_SET_FLAG_7 && which != VIDEO_SET_FLAG_8) return outOfRange("video flag is 7 or 8");
    message record = Impl::request(MSG_VIDEO, which);
    record.put<std::uint8_t>(12, flag ? 1 : 0);
    return impl_->command(record, timeout);
}

Result<std::optional<std::int32_t>> ControlClient::videoRate(std::int32_t which, Timeout timeout) {
    if (which < VIDEO_GET_RATE_9 || which > VIDEO_GET_RATE_16) return outOfRange("video rate query is 9 to 16");
    auto answer = impl_->single(Impl::request(MSG_VIDEO, which), timeout);
    if (!answer) return answer.error();
    return Impl::valid(answer->get<std::int32_t>(12));
}

Result<void> ControlClient::applyGraphicsSettings(Timeout timeout) {
    return impl_->command(Impl::request(MSG_VIDEO, VIDEO_GRAPHICS_SETTINGS), timeout);
}

Result<void> ControlClient::updateGraphicsRegion(const Rectangle& region, Timeout timeout) {
    message record = Impl::request(MSG_VIDEO, VIDEO_UPDATE_REGION);
    putRectangle(record, 12, region);
    return impl_->command(record, timeout);
}

// ---- System properties ----

Result<std::optional<std::string>> ControlClient::systemProperty(const std::string& name, Timeout timeout) {
    message record = Impl::request(MSG_PROPERTY, 0);
    if (auto error = Impl::putText(record, FIRST_TEXT_OFFSET, name)) return *error;
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    std::string value = textAt(*answer, SECOND_TEXT_OFFSET);
    if (value.empty()) return std::optional<std::string>();
    return std::optional<std::string>(std::move(value));
}

Result<std::vector<SystemProperty>> ControlClient::systemProperties(Timeout timeout) {
    auto answer = impl_->call(Impl::request(MSG_PROPERTY, 1), timeout);
    if (!answer) return answer.error();
    std::vector<SystemProperty> properties;
    for (const message& item : answer->records) {
        properties.push_back(SystemProperty{textAt(item, FIRST_TEXT_OFFSET), textAt(item, SECOND_TEXT_OFFSET)});
    }
    return properties;
}

Result<void> ControlClient::setSystemProperty(const std::string& name, const std::string& value, Timeout timeout) {
    message record = Impl::request(MSG_PROPERTY, 2);
    if (auto error = Impl::putText(record, FIRST_TEXT_OFFSET, name)) return *error;
    if (auto error = Impl::putText(record, SECOND_TEXT_OFFSET, value)) return *error;
    return impl_->command(record, timeout);
}

Result<void> ControlClient::removeSystemProperty(const std::string& name, Timeout timeout) {
    message record = Impl::request(MSG_PROPERTY, 3);
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
    record.put<std::uint8_t>(16, mute ? 1 : 0);
    return impl_->command(record, timeout);
}

// ---- Tuner ----

Result<std::optional<std::int32_t>> ControlClient::currentTransportStreamId(Timeout timeout) {
    auto answer = impl_->single(Impl::request(MSG_TUNER, 0), timeout);
    if (!answer) return answer.error();
    return Impl::valid(answer->get<std::int32_t>(12));
}

Result<std::vector<std::int32_t>> ControlClient::tunerIds(std::int32_t kind, std::int32_t parameter, Timeout timeout) {
    if (kind == 0) return outOfRange("tuner list kind 0 is the current transport stream query");
    message record = Impl::request(MSG_TUNER, kind);
    record.put<std::int32_t>(12, parameter);
    auto answer = impl_->call(record, timeout);
    if (!answer) return answer.error();
    std::vector<std::int32_t> ids;
    for (const message& item : answer->records) ids.push_back(item.get<std::int32_t>(12));
    return ids;
}

// ---- Carousels ----

Result<std::optional<std::string>> ControlClient::mountCarousel(const std::string& name, Timeout timeout) {
    message record = Impl::request(MSG_CAROUSEL, 0);
    if (auto error = Impl::putText(record, FIRST_TEXT_OFFSET, name)) return *error;
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    std::string mountPoint = textAt(*answer, SECOND_TEXT_OFFSET);
    if (mountPoint.empty()) return std::optional<std::string>();
    return std::optional<std::string>(std::move(mountPoint));
}

Result<void> ControlClient::unmountCarousel(const std::string& name, Timeout timeout) {
    message record = Impl::request(MSG_CAROUSEL, 1);
    if (auto error = Impl::putText(record, FIRST_TEXT_OFFSET, name)) return *error;
    return impl_->command(record, timeout);
}

Result<void> ControlClient::addCarouselListener(Timeout timeout) {
    return impl_->command(Impl::request(MSG_CAROUSEL, 3), timeout);
}

Result<void> ControlClient::removeCarouselListener(Timeout timeout) {
    return impl_->command(Impl::request(MSG_CAROUSEL, 4), timeout);
}

}  // namespace client
}  // namespace tessarine
