#pragma once

#include <cstddef>
#include <cstdint>

#include "hub/FanOut.h"
#include "tessarine/AnswerStream.h"
#include "tessarine/IpcServer.h"
#include "tessarine/IpcServerListener.h"
#include "tessarine/IpcServerManager.h"
#include "transport/ListEncoder.h"

namespace tessarine {

// What a request family works with while it handles one record: the hub's
// query operations, the control server for answers, and the listeners for
// the broadcasts that the dispatcher performs itself.
struct HubContext {
    IpcServerManager& hub;
    IpcServer& server;
    FanOut<IpcServerListener> listeners;
    // Set by an answer of so many items that the memory its list held is
    // worth giving back to the system once the list is released.
    mutable bool largeAnswer = false;

    // A list from this many items on is a large answer.
    static constexpr std::size_t LARGE_ANSWER_ITEMS = 10000;

    // Sends `items` by the list convention as one contiguous answer.
    template <typename Items, typename WriteItem, typename Trailer = NoTrailingData>
    void sendList(message& record, std::int32_t itemCode, const Items& items, WriteItem writeItem,
                  Trailer trailer = {}) const {
        noteSize(items.size());
        AnswerStream answer(server);
        encodeList(answer, record, itemCode, items, writeItem, trailer);
    }
    void noteSize(std::size_t items) const { largeAnswer = largeAnswer || items >= LARGE_ANSWER_ITEMS; }
};

}  // namespace tessarine
