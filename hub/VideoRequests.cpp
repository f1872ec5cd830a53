#include "hub/VideoRequests.h"

#include <cstdint>

#include "tessarine/TextField.h"

namespace tessarine {

void VideoRequests::handleVideo(message& record) const {
    const auto code = static_cast<std::uint32_t>(record.code);
    switch (code) {
        case VIDEO_SET_BOUNDS:
        case VIDEO_RESET:
        case VIDEO_SET_TEXT_6:
        case VIDEO_SET_FLAG_7:
        case VIDEO_SET_FLAG_8:
        case VIDEO_GRAPHICS_SETTINGS:
            setVideoProperty(record);
            return;
        case VIDEO_GET_BOUNDS: {
            // The request's own values are where the listeners start from.
            auto bounds = record.get<video_region>(VIDEO_BOUNDS_OFFSET);
            context_.hub.getMainVideoBounds(bounds.x, bounds.y, bounds.width, bounds.height);
            record.put(VIDEO_BOUNDS_OFFSET, bounds);
            context_.server.sendMessage(record);
            return;
        }
        case VIDEO_GET_LANGUAGE_3:
        case VIDEO_GET_LANGUAGE_5:
            writeTextField(record, FIRST_TEXT_OFFSET, context_.hub.getVideoLanguage(static_cast<command>(code)));
            context_.server.sendMessage(record);
            return;
        case VIDEO_GET_LANGUAGES: {
            const auto languages = context_.hub.getVideoLanguages();
            context_.sendList(record, languages,
                              [](message& item, const std::string& language) {
                                  writeTextField(item, FIRST_TEXT_OFFSET, language);
                              });
            return;
        }
        case VIDEO_UPDATE_REGION: {
            const auto region = record.get<video_region>(VIDEO_BOUNDS_OFFSET);
            context_.listeners.all([&](IpcServerListener& listener) { listener.updateGraphicsRegion(region); });
            return;
        }
        default:
            if (code >= VIDEO_GET_RATE_9 && code <= VIDEO_GET_RATE_16) {
                record.put(VIDEO_RATE_OFFSET, context_.hub.getVideoRate(static_cast<command>(code)));
                context_.server.sendMessage(record);
            }
            return;  // codes above 18 (negative ones too) are ignored
    }
}

void VideoRequests::setVideoProperty(message& record) const {
    auto data = record.get<video_data>(TYPED_PAYLOAD_OFFSET);
    context_.listeners.all([&](IpcServerListener& listener) { listener.setVideoProperty(data); });
    record.put(TYPED_PAYLOAD_OFFSET, data);
}

void VideoRequests::handleAudio(message& record) const {
    // The selector is the listeners' business: every code is passed on.
    const auto data = record.get<audio_data>(TYPED_PAYLOAD_OFFSET);
    context_.listeners.all([&](IpcServerListener& listener) { listener.setVideoAudio(data); });
}

}  // namespace tessarine
