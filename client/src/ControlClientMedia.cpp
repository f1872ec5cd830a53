// Media player calls.
#include "ControlClientImpl.h"

namespace tessarine {
namespace client {

namespace {

constexpr std::int32_t OPEN = 0, DURATION = 1, CURRENT_TIME = 2, SET_CURRENT_TIME = 3, ADD_LISTENER = 4, PLAY = 5,
                       CLOSE = 6, STOP = 7, SET_BOUNDS = 8, GET_BOUNDS = 9, FREEZE = 10, BALANCE = 11, SOUND = 12,
                       MUTE = 13, BASS = 14, TREBLE = 15;
constexpr std::size_t LOCATOR_OFFSET = 16;
constexpr std::size_t MAX_LOCATOR = MESSAGE_SIZE - LOCATOR_OFFSET - 1;  // 1943: it must end within the record

message media(std::int32_t code, std::int32_t handle) {
    message record;
    record.clear();
    record.type = MSG_MEDIA;
    record.code = code;
    record.put<std::int32_t>(12, handle);
    return record;
}

message withFlag(message record, bool flag) {
    record.put<std::uint8_t>(16, flag ? 1 : 0);
    return record;
}

message withLevel(message record, double level) {
    record.put<double>(16, level);
    return record;
}

void putBounds(message& record, const Rectangle& r) {
    record.put<std::int32_t>(16, r.x);
    record.put<std::int32_t>(20, r.y);
    record.put<std::int32_t>(24, r.width);
    record.put<std::int32_t>(28, r.height);
}

}  // namespace

Result<std::optional<std::int32_t>> ControlClient::openMedia(const std::string& locator, Timeout timeout) {
    if (locator.size() > MAX_LOCATOR || locator.find('\0') != std::string::npos) {
        return Error(ErrorCode::InvalidArgument, "a media locator holds at most 1943 characters and no NUL");
    }
    message record = media(OPEN, -1);
    std::copy(locator.begin(), locator.end(), record.bytes() + LOCATOR_OFFSET);
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    if (answer->get<std::uint8_t>(16) == 0) return std::optional<std::int32_t>();
    return std::optional<std::int32_t>(answer->get<std::int32_t>(12));
}

Result<std::optional<std::int32_t>> ControlClient::mediaDuration(std::int32_t handle, Timeout timeout) {
    auto answer = impl_->single(media(DURATION, handle), timeout);
    if (!answer) return answer.error();
    return Impl::valid(answer->get<std::int32_t>(16));
}

Result<std::optional<std::int32_t>> ControlClient::mediaCurrentTime(std::int32_t handle, Timeout timeout) {
    auto answer = impl_->single(media(CURRENT_TIME, handle), timeout);
    if (!answer) return answer.error();
    return Impl::valid(answer->get<std::int32_t>(16));
}

Result<std::optional<std::int32_t>> ControlClient::setMediaCurrentTime(std::int32_t handle, std::int32_t first,
                                                                       std::int32_t second, Timeout timeout) {
    message record = media(SET_CURRENT_TIME, handle);
    record.put<std::int32_t>(16, first);
    record.put<std::int32_t>(20, second);
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    return Impl::valid(answer->get<std::int32_t>(16));
}

Result<void> ControlClient::addMediaListener(std::int32_t handle, Timeout timeout) {
    return impl_->command(media(ADD_LISTENER, handle), timeout);
}

Result<bool> ControlClient::playMedia(std::int32_t handle, Timeout timeout) {
    auto answer = impl_->single(media(PLAY, handle), timeout);
    if (!answer) return answer.error();
    return answer->get<std::uint8_t>(16) != 0;
}

Result<void> ControlClient::closeMedia(std::int32_t handle, Timeout timeout) {
    return impl_->command(media(CLOSE, handle), timeout);
}

Result<void> ControlClient::stopMedia(std::int32_t handle, Timeout timeout) {
    return impl_->command(media(STOP, handle), timeout);
}

Result<std::optional<std::int32_t>> ControlClient::setMediaBounds(std::int32_t handle, const Rectangle& bounds,
                                                                  Timeout timeout) {
    message record = media(SET_BOUNDS, handle);
    putBounds(record, bounds);
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    return Impl::valid(answer->get<std::int32_t>(16));
}

Result<Rectangle> ControlClient::mediaBounds(std::int32_t handle, Timeout timeout) {
    message record = media(GET_BOUNDS, handle);
    // The bridge hands back these bytes where no player writes the bounds.
    putBounds(record, Rectangle{-1, -1, -1, -1});
    auto answer = impl_->single(record, timeout);
    if (!answer) return answer.error();
    return Rectangle{answer->get<std::int32_t>(16), answer->get<std::int32_t>(20), answer->get<std::int32_t>(24),
                     answer->get<std::int32_t>(28)};
}

Result<void> ControlClient::setMediaFreeze(std::int32_t handle, bool freeze, Timeout timeout) {
    return impl_->command(withFlag(media(FREEZE, handle), freeze), timeout);
}
Result<void> ControlClient::setMediaMute(std::int32_t handle, bool mute, Timeout timeout) {
    return impl_->command(withFlag(media(MUTE, handle), mute), timeout);
}
Result<void> ControlClient::setMediaBalanceLevel(std::int32_t handle, double level, Timeout timeout) {
    return impl_->command(withLevel(media(BALANCE, handle), level), timeout);
}
Result<void> ControlClient::setMediaSoundLevel(std::int32_t handle, double level, Timeout timeout) {
    return impl_->command(withLevel(media(SOUND, handle), level), timeout);
}
Result<void> ControlClient::setMediaBassLevel(std::int32_t handle, double level, Timeout timeout) {
    return impl_->command(withLevel(media(BASS, handle), level), timeout);
}
Result<void> ControlClient::setMediaTrebleLevel(std::int32_t handle, double level, Timeout timeout) {
    return impl_->command(withLevel(media(TREBLE, handle), level), timeout);
}

}  // namespace client
}  // namespace tessarine
