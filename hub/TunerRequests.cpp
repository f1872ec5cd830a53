#include "hub/TunerRequests.h"

#include <cstdint>

namespace tessarine {

namespace {

constexpr std::size_t TUNER_DATA = 8;
constexpr std::size_t ID = 12;

}  // namespace

void TunerRequests::handle(message& record) const {
    if (record.code == TUNER_CURRENT_TS_ID) {
        record.put(ID, context_.hub.getCurrentTransportStreamID());
        context_.server.sendMessage(record);
        return;
    }
    auto data = record.get<tuner_data>(TUNER_DATA);
    const auto ids = context_.hub.getAllIDs(data);
    record.put(TUNER_DATA, data);
    // The items keep the count as their code.
    context_.sendList(record, static_cast<std::int32_t>(ids.size()), ids,
                      [](message& item, int id) { item.put(ID, id); });
}

}  // namespace tessarine
