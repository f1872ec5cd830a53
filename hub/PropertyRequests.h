#pragma once

#include "hub/HubContext.h"
#include "tessarine/message.h"

namespace tessarine {

// MSG_PROPERTY requests: get one (0), list all (1), set (2), remove (3).
class PropertyRequests {
public:
    explicit PropertyRequests(const HubContext& context) : context_(context) {}
    void handle(message& record) const;

private:
    const HubContext& context_;
};

}  // namespace tessarine
