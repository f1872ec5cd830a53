#pragma once

#include "ipcutil/DsmCCCommand_t.h"
#include "middlewarefacade/FacadeExport.h"

namespace middlewarefacade {

// Receives DSM-CC stream-event commands. Slot order is the binary contract.
class MIDDLEWAREFACADE_API DsmCCCommandListener {
public:
    virtual void commandReceived(const ipcutil::DsmCCCommand_t& command) = 0;  // slot 0

protected:
    ~DsmCCCommandListener() = default;
};

}  // namespace middlewarefacade
