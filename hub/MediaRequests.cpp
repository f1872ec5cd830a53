#include "hub/MediaRequests.h"

#include <cstdint>
#include <string>

#include "tessarine/TextField.h"

namespace tessarine {

namespace {

// The locator runs to its first NUL; without one, the record's last byte
// ends it as a NUL there would (at most MAX_LOCATOR_LENGTH characters).
std::string locator(const message& record) {
    return readTextField(reinterpret_cast<const char*>(record.bytes() + MEDIA_LOCATOR_OFFSET), MAX_LOCATOR_LENGTH);
}

bool flag(const message& record) { return record.bytes()[MEDIA_FLAG_OFFSET] != 0; }

int argument(const message& record, std::size_t offset) { return record.get<int>(offset); }
double level(const message& record) { return record.get<double>(MEDIA_LEVEL_OFFSET); }

}  // namespace

void MediaRequests::answer(message& record, int result) const {
    record.put(MEDIA_RESULT_OFFSET, result);
    context_.server.sendMessage(record);
}

void MediaRequests::answer(message& record, bool result) const {
    record.bytes()[MEDIA_RESULT_OFFSET] = result ? 1 : 0;
    context_.server.sendMessage(record);
}

void MediaRequests::handle(message& record) const {
    IpcServerManager& hub = context_.hub;
    int handle = record.get<int>(MEDIA_HANDLE_OFFSET);
    switch (record.code) {
        case MEDIA_OPEN: {
            // The listener writes the new handle through the reference.
            const bool opened = hub.open(locator(record), handle);
            record.put(MEDIA_HANDLE_OFFSET, handle);
            return answer(record, opened);
        }
        case MEDIA_GET_DURATION: return answer(record, hub.getDuration(handle));
        case MEDIA_GET_CURRENT_TIME: return answer(record, hub.getCurrentTime(handle));
        case MEDIA_SET_CURRENT_TIME:
            return answer(record, hub.setCurrentTime(handle, argument(record, MEDIA_FIRST_OFFSET),
                                                     argument(record, MEDIA_SECOND_OFFSET)));
        case MEDIA_ADD_LISTENER: return hub.addMediaListener(handle);
        case MEDIA_PLAY: return answer(record, hub.play(handle));
        case MEDIA_CLOSE: return hub.close(handle);
        case MEDIA_STOP: return hub.stop(handle);
        case MEDIA_SET_BOUNDS: {
            const auto bounds = record.get<video_region>(MEDIA_BOUNDS_OFFSET);
            return answer(record, hub.setMediaBounds(handle, bounds.x, bounds.y, bounds.width, bounds.height));
        }
        case MEDIA_GET_BOUNDS: {
            // In the order of a region; unwritten values go back as they came.
            auto bounds = record.get<video_region>(MEDIA_BOUNDS_OFFSET);
            hub.getMediaBounds(handle, bounds.x, bounds.y, bounds.width, bounds.height);
            record.put(MEDIA_BOUNDS_OFFSET, bounds);
            context_.server.sendMessage(record);
            return;
        }
        case MEDIA_SET_FREEZE: return hub.setMediaFreeze(handle, flag(record));
        case MEDIA_SET_BALANCE_LEVEL: return hub.setMediaBalanceLevel(handle, level(record));
        case MEDIA_SET_SOUND_LEVEL: return hub.setMediaSoundLevel(handle, level(record));
        case MEDIA_SET_MUTE: return hub.setMediaMute(handle, flag(record));
        case MEDIA_SET_BASS_LEVEL: return hub.setMediaBassLevel(handle, level(record));
        case MEDIA_SET_TREBLE_LEVEL: return hub.setMediaTrebleLevel(handle, level(record));
        default: return;  // the dispatcher lets no other code through
    }
}

}  // namespace tessarine
