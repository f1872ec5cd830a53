// Media player calls.
#include "ControlClientImpl.h"
#include "RecordFields.h"

namespace tessarine {
namespace client {

namespace {

message media(std::int32_t code, std::int32_t handle) {
    message record = detail::requestRecord(MSG_MEDIA, code);
    record.put<std::int32_t>(MEDIA_HANDLE_OFFSET, handle);
    return record;
}

message withFlag(message record, bool flag) {
    record.put<std::uint8_t>(MEDIA_FLAG_OFFSET, flag ? 1 : 0);
    return record;
}

message withLevel(message record, double level) {
    record.put<double>(MEDIA_LEVEL_OFFSET, level);
    return record;
}

std::int32_t result(const message& answer) { return answer.get<std::int32_t>(MEDIA_RESULT_OFFSET); }
bool resultFlag(const message& answer) { return answer.get<std::uint8_t>(MEDIA_RESULT_OFFSET) != 0; }

}  // namespace

Result<std::optional<std::int32_t>> ControlClient::openMedia(const std::string& locator, Timeout timeout) {
    if (locator.size() > MAX_LOCATOR_LENGTH || locator.find('\0') != std::string::npos) {
        return Error(ErrorCode::InvalidArgument,
                     "a media locator holds at most " + std::to_string(MAX_LOCATOR_LENGTH) + " characters and no NUL");
    }
    message record = media(MEDIA_OPEN, -1);
    std::copy(locator.begin(), locator.end(), record.bytes() + MEDIA_LOCATOR_OFFSET);
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    if (!resultFlag(*answer)) return std::optional<std::int32_t>();
    return std::optional<std::int32_t>(answer->get<std::int32_t>(MEDIA_HANDLE_OFFSET));
}

Result<std::optional<std::int32_t>> ControlClient::mediaDuration(std::int32_t handle, Timeout timeout) {
    auto answer = impl_->single(media(MEDIA_GET_DURATION, handle), timeout);
    if (!answer) return answer.error();
    return Impl::valid(result(*answer));
}

Result<std::optional<std::int32_t>> ControlClient::mediaCurrentTime(std::int32_t handle, Timeout timeout) {
    auto answer = impl_->single(media(MEDIA_GET_CURRENT_TIME, handle), timeout);
    if (!answer) return answer.error();
    return Impl::valid(result(*answer));
}

Result<std::optional<std::int32_t>> ControlClient::setMediaCurrentTime(std::int32_t handle, std::int32_t first,
                                                                       std::int32_t second, Timeout timeout) {
    message record = media(MEDIA_SET_CURRENT_TIME, handle);
    record.put<std::int32_t>(MEDIA_FIRST_OFFSET, first);
    record.put<std::int32_t>(MEDIA_SECOND_OFFSET, second);
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    return Impl::valid(result(*answer));
}

Result<void> ControlClient::addMediaListener(std::int32_t handle, Timeout timeout) {
    return impl_->command(media(MEDIA_ADD_LISTENER, handle), timeout);
}

Result<bool> ControlClient::playMedia(std::int32_t handle, Timeout timeout) {
    auto answer = impl_->single(media(MEDIA_PLAY, handle), timeout);
    if (!answer) return answer.error();
    return resultFlag(*answer);
}

Result<void> ControlClient::closeMedia(std::int32_t handle, Timeout timeout) {
    return impl_->command(media(MEDIA_CLOSE, handle), timeout);
}

Result<void> ControlClient::stopMedia(std::int32_t handle, Timeout timeout) {
    return impl_->command(media(MEDIA_STOP, handle), timeout);
}

Result<std::optional<std::int32_t>> ControlClient::setMediaBounds(std::int32_t handle, const Rectangle& bounds,
                                                                  Timeout timeout) {
    message record = media(MEDIA_SET_BOUNDS, handle);
    detail::putRectangle(record, MEDIA_BOUNDS_OFFSET, bounds);
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    return Impl::valid(result(*answer));
}

Result<Rectangle> ControlClient::mediaBounds(std::int32_t handle, Timeout timeout) {
    message record = media(MEDIA_GET_BOUNDS, handle);
    // The bridge hands back these bytes where no player writes the bounds.
    detail::putRectangle(record, MEDIA_BOUNDS_OFFSET, Rectangle{-1, -1, -1, -1});
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    return detail::rectangleAt(*answer, MEDIA_BOUNDS_OFFSET);
}

Result<void> ControlClient::setMediaFreeze(std::int32_t handle, bool freeze, Timeout timeout) {
    return impl_->command(withFlag(media(MEDIA_SET_FREEZE, handle), freeze), timeout);
}
Result<void> ControlClient::setMediaMute(std::int32_t handle, bool mute, Timeout timeout) {
    return impl_->command(withFlag(media(MEDIA_SET_MUTE, handle), mute), timeout);
}
Result<void> ControlClient::setMediaBalanceLevel(std::int32_t handle, double level, Timeout timeout) {
    return impl_->command(withLevel(media(MEDIA_SET_BALANCE_LEVEL, handle), level), timeout);
}
Result<void> ControlClient::setMediaSoundLevel(std::int32_t handle, double level, Timeout timeout) {
    return impl_->command(withLevel(media(MEDIA_SET_SOUND_LEVEL, handle), level), timeout);
}
Result<void> ControlClient::setMediaBassLevel(std::int32_t handle, double level, Timeout timeout) {
    return impl_->command(withLevel(media(MEDIA_SET_BASS_LEVEL, handle), level), timeout);
}
Result<void> ControlClient::setMediaTrebleLevel(std::int32_t handle, double level, Timeout timeout) {
    return impl_->command(withLevel(media(MEDIA_SET_TREBLE_LEVEL, handle), level), timeout);
}

}  // namespace client
}  // namespace tessarine
