#include "hub/MediaRequests.h"

#include <cstdint>
#include <string>

#include "tessarine/TextField.h"

namespace tessarine {

namespace {

constexpr std::size_t HANDLE = 12;
constexpr std::size_t ARG0 = 16, ARG1 = 20, ARG2 = 24, ARG3 = 28;

// The locator runs from byte 16 to its first NUL; without one, the record's
// last byte ends it as a NUL there would (at most 1943 characters).
std::string locator(const message& record) {
    return readTextField(reinterpret_cast<const char*>(record.bytes() + ARG0), MESSAGE_SIZE - ARG0 - 1);
}

bool flag(const message& record) { return record.bytes()[ARG0] != 0; }

}  // namespace

void MediaRequests::answer(message& record, int result) const {
    record.put(ARG0, result);
    context_.server.sendMessage(record);
}

void MediaRequests::answer(message& record, bool result) const {
    record.bytes()[ARG0] = result ? 1 : 0;
    context_.server.sendMessage(record);
}

void MediaRequests::handle(message& record) const {
    IpcServerManager& hub = context_.hub;
    int handle = record.get<int>(HANDLE);
    switch (static_cast<std::uint32_t>(record.code)) {
        case 0: {
            // The listener writes the new handle through the reference.
            const bool opened = hub.open(locator(record), handle);
            record.put(HANDLE, handle);
            return answer(record, opened);
        }
        case 1: return answer(record, hub.getDuration(handle));
        case 2: return answer(record, hub.getCurrentTime(handle));
        case 3: return answer(record, hub.setCurrentTime(handle, record.get<int>(ARG0), record.get<int>(ARG1)));
        case 4: return hub.addMediaListener(handle);
        case 5: return answer(record, hub.play(handle));
        case 6: return hub.close(handle);
        case 7: return hub.stop(handle);
        case 8:
            return answer(record, hub.setMediaBounds(handle, record.get<int>(ARG0), record.get<int>(ARG1),
                                                     record.get<int>(ARG2), record.get<int>(ARG3)));
        case 9: {
            // Bytes 16-31 in the order of a region; unwritten values go back as they came.
            auto bounds = record.get<video_region>(ARG0);
            hub.getMediaBounds(handle, bounds.x, bounds.y, bounds.width, bounds.height);
            record.put(ARG0, bounds);
            context_.server.sendMessage(record);
            return;
        }
        case 10: return hub.setMediaFreeze(handle, flag(record));
        case 11: return hub.setMediaBalanceLevel(handle, record.get<double>(ARG0));
        case 12: return hub.setMediaSoundLevel(handle, record.get<double>(ARG0));
        case 13: return hub.setMediaMute(handle, flag(record));
        case 14: return hub.setMediaBassLevel(handle, record.get<double>(ARG0));
        case 15: return hub.setMediaTrebleLevel(handle, record.get<double>(ARG0));
        default: return;  // above 15, negative ones too: ignored silently
    }
}

}  // namespace tessarine
