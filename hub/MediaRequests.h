#pragma once

#include "hub/HubContext.h"
#include "tessarine/message.h"

namespace tessarine {

// MSG_MEDIA requests (codes 0-15): the player handle at bytes 12-15,
// arguments and answers from byte 16. Answers keep the request's other bytes.
class MediaRequests {
public:
    explicit MediaRequests(const HubContext& context) : context_(context) {}
    void handle(message& record) const;

private:
    void answer(message& record, int result) const;
    void answer(message& record, bool result) const;
    const HubContext& context_;
};

}  // namespace tessarine
