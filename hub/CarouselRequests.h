#pragma once

#include "hub/HubContext.h"
#include "tessarine/message.h"

namespace tessarine {

// MSG_CAROUSEL requests: mount (0), unmount (1), add (3) and remove (4) the
// carousel listener. Code 2 is the download-complete event's and is ignored.
class CarouselRequests {
public:
    explicit CarouselRequests(const HubContext& context) : context_(context) {}
    void handle(message& record) const;

private:
    const HubContext& context_;
};

}  // namespace tessarine
