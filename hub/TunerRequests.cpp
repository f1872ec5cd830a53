#include "hub/TunerRequests.h"

#include <cstdint>

namespace tessarine {

void TunerRequests::handle(message& record) const {
    if (record.code == TUNER_CURRENT_TS_ID) {
        record.put(TUNER_ID_OFFSET, context_.hub.getCurrentTransportStreamID());
        context_.server.sendMessage(record);
        return;
    }
    auto data = record.get<tuner_data>(TYPED_PAYLOAD_OFFSET);
    const auto ids = context_.hub.getAllIDs(data);
    record.put(TYPED_PAYLOAD_OFFSET, data);
    context_.sendList(record, ids,
                      [](message& item, int id) { item.put(TUNER_ID_OFFSET, id); });
}

}  // namespace tessarine
