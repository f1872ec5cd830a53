#pragma once

#include "hub/HubContext.h"
#include "tessarine/message.h"

namespace tessarine {

// MSG_VIDEO requests (codes 0-18) and MSG_AUDIO selections for the main video.
class VideoRequests {
public:
    explicit VideoRequests(const HubContext& context) : context_(context) {}
    void handleVideo(message& record) const;
    void handleAudio(message& record) const;

private:
    void setVideoProperty(message& record) const;
    const HubContext& context_;
};

}  // namespace tessarine
