#pragma once

#include "hub/HubContext.h"
#include "tessarine/message.h"

namespace tessarine {

// MSG_TUNER requests: the current transport stream id (0) or an id list (any other code).
class TunerRequests {
public:
    explicit TunerRequests(const HubContext& context) : context_(context) {}
    void handle(message& record) const;

private:
    const HubContext& context_;
};

}  // namespace tessarine
