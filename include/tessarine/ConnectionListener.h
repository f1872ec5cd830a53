#pragma once

#include "tessarine/Export.h"

namespace tessarine {

// Told when a control client connects and disconnects. Offered to the host;
// the slot order is part of the binary interface.
class TESSARINE_API ConnectionListener {
public:
    virtual void clientConnected() = 0;     // slot 0
    virtual void clientDisconnected() = 0;  // slot 1

protected:
    ~ConnectionListener() = default;
};

}  // namespace tessarine
