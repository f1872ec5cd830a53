#pragma once

#include <pybind11/pybind11.h>

#include <memory>

#include "EventRouter.h"
#include "Guarded.h"
#include "tessarine/client/ControlClient.h"

namespace tessarine {
namespace python {

// What stands behind a Python tessarine.Client: the library's client and the
// router of its events.
class ClientBinding {
public:
    explicit ClientBinding(const client::ClientOptions& options);
    // With the GIL held, as Python deletes its objects.
    ~ClientBinding();
    ClientBinding(const ClientBinding&) = delete;
    ClientBinding& operator=(const ClientBinding&) = delete;

    Guarded<client::ControlClient>& guarded() { return *client_; }
    const client::ClientOptions& options() const { return options_; }
    EventRouter& router() { return *router_; }

    // With the GIL held: ends callbacks and event iterators, then, with the
    // GIL released, waits for the calls in flight and stops the client and
    // its threads. From one of the client's own callbacks the stop happens
    // on another thread once that callback has returned, since the event
    // thread cannot wait for itself.
    void close();

    // Closes every client still open; run at interpreter exit, so that no
    // event thread meets an interpreter that is shutting down.
    static void closeAll();

private:
    const client::ClientOptions options_;
    std::shared_ptr<EventRouter> router_;
    std::shared_ptr<Guarded<client::ControlClient>> client_;
};

}  // namespace python
}  // namespace tessarine
