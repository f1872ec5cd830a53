#pragma once

#include <cstdint>

#include "hub/FanOut.h"
#include "tessarine/IpcServer.h"
#include "tessarine/IpcServerListener.h"
#include "tessarine/IpcServerManager.h"
#include "tessarine/SendBatch.h"
#include "transport/ListEncoder.h"

namespace tessarine {

// What a request family works with while it handles one record: the hub's
// query operations, the control server for answers, and the listeners for
// the broadcasts that the dispatcher performs itself.
struct HubContext {
    IpcServerManager& hub;
    IpcServer& server;
    FanOut<IpcServerListener> listeners;

    // Sends `items` by the list convention as one contiguous batch.
    template <typename Items, typename WriteItem, typename Trailer = NoTrailingData>
    void sendList(message& record, std::int32_t itemCode, const Items& items, WriteItem writeItem,
                  Trailer trailer = {}) const {
        SendBatch batch;
        encodeList(batch, record, itemCode, items, writeItem, trailer);
        server.send(batch);
    }
};

}  // namespace tessarine
