#pragma once

#include <list>

#include "tessarine/Export.h"
#include "tessarine/message.h"

namespace tessarine {

// Consumer of the control server. The slot order of these four operations is
// part of the binary interface; no destructor is among them.
class TESSARINE_API IpcListener {
public:
    // A record has arrived. The reference is the server's receive buffer: the
    // consumer may modify it and send it back as the answer.
    virtual void update(message& record) = 0;
    // Part of the interface; the server never calls it.
    virtual void update(std::list<message> records) = 0;
    // A connection was accepted, before its first record is read.
    virtual void clientConnected() = 0;
    // The connection has ended and its descriptor is closed.
    virtual void clientDisconnected() = 0;

protected:
    ~IpcListener() = default;
};

}  // namespace tessarine
