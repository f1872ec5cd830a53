#include "ClientBinding.h"

#include <set>
#include <system_error>
#include <thread>

namespace py = pybind11;

namespace tessarine {
namespace python {

namespace {

// The clients not yet closed, guarded by the GIL.
std::set<ClientBinding*>& openClients() {
    static std::set<ClientBinding*> clients;
    return clients;
}

}  // namespace

ClientBinding::ClientBinding(const client::ClientOptions& options)
    : options_(options), router_(std::make_shared<EventRouter>()) {
    auto control = std::make_unique<client::ControlClient>(options);
    std::shared_ptr<EventRouter> router = router_;
    control->onDownloadComplete([router](const client::DownloadComplete& e) { router->deliver(e); });
    control->onGraphicsSettings([router](const client::GraphicsSettings& e) { router->deliver(e); });
    control->onEndOfMedia([router](const client::EndOfMedia& e) { router->deliver(e); });
    control->onDsmccCommand([router](const client::DsmccCommand& e) { router->deliver(e); });
    control->onAppStateRequest([router](std::int32_t state) { return router->deliver(AppStateAnswered{state, 0}); });
    control->onDisconnected([router](const client::Error& error) { router->deliver(ConnectionEnded{error}); });
    client_ = std::make_shared<Guarded<client::ControlClient>>(std::move(control));
    openClients().insert(this);
}

ClientBinding::~ClientBinding() { close(); }

void ClientBinding::close() {
    if (openClients().erase(this) == 0) return;
    router_->close();
    std::shared_ptr<Guarded<client::ControlClient>> client = client_;
    if (router_->inCallback()) {
        try {
            std::thread([client] { client->close(); }).detach();
        } catch (const std::system_error&) {
            // Without a thread to stop it, the client is left running: its
            // own event thread must never destroy it.
            new std::shared_ptr<Guarded<client::ControlClient>>(client);
        }
        return;
    }
    py::gil_scoped_release released;
    client->close();
}

void ClientBinding::closeAll() {
    const std::set<ClientBinding*> clients = openClients();
    for (ClientBinding* binding : clients) binding->close();
}

}  // namespace python
}  // namespace tessarine
