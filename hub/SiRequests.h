#pragma once

#include "hub/HubContext.h"
#include "tessarine/message.h"

namespace tessarine {

// MSG_SI requests (codes 0-16): in-place answers, lists of SI records, and
// the trailing data of program events and descriptors. Every answer with
// more than one piece leaves as one batch, so nothing can fall inside it.
class SiRequests {
public:
    explicit SiRequests(const HubContext& context) : context_(context) {}
    void handle(message& record) const;

private:
    void sendText(message& record, const std::string& text) const;
    void sendProgramEvents(message& record) const;
    void sendProgramEvent(message& record) const;
    void sendDescriptors(message& record, const std::list<descriptor>& descriptors) const;
    template <typename Item>
    void sendItems(message& record, const std::list<Item>& items) const;
    template <typename Item>
    void sendItem(message& record, const Item& item) const;

    const HubContext& context_;
};

}  // namespace tessarine
