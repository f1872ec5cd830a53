#pragma once

#include <cstddef>
#include <cstdint>

#include "hub/FanOut.h"
#include "tessarine/IpcServer.h"
#include "tessarine/IpcServerListener.h"
#include "tessarine/IpcServerManager.h"
#include "tessarine/protocol/Requests.h"
#include "transport/AnswerStream.h"
#include "transport/ListEncoder.h"

namespace tessarine {

// What a request family works with while it handles one record: the
// request's description, the hub's query operations, the control server for
// answers, and the listeners for the broadcasts that the dispatcher performs
// itself.
struct HubContext {
    const protocol::Request& request;
    IpcServerManager& hub;
    IpcServer& server;
    FanOut<IpcServerListener> listeners;
    // Set by an answer of so many items that the memory its list held is
    // worth giving back to the system once the list is released.
    mutable bool largeAnswer = false;

    // A list from this many items on is a large answer.
    static constexpr std::size_t LARGE_ANSWER_ITEMS = 10000;

    // The code of each item of a list of `count` items, as the request's answer gives it.
    std::int32_t itemCode(std::size_t count) const {
        switch (request.answer.itemCode) {
        case protocol::ItemCode::Fixed: return request.answer.item;
        case protocol::ItemCode::Count: return static_cast<std::int32_t>(count);
        case protocol::ItemCode::ItemWord: break;  // each item writes its own
        }
        return request.code;
    }

    // Sends `items` by the list convention as one contiguous answer.
    template <typename Items, typename WriteItem, typename Trailer = NoTrailingData>
    void sendList(message& record, const Items& items, WriteItem writeItem, Trailer trailer = {}) const {
        noteSize(items.size());
        AnswerStream answer(server);
        encodeList(answer, record, itemCode(items.size()), items, writeItem, trailer);
    }
    void noteSize(std::size_t items) const { largeAnswer = largeAnswer || items >= LARGE_ANSWER_ITEMS; }
};

}  // namespace tessarine
