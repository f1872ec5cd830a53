#pragma once

#include "ipcutil/Rectangle_t.h"
#include "middlewarefacade/FacadeExport.h"

namespace middlewarefacade {

// Receives graphics-plane changes. Slot order is the binary contract.
class MIDDLEWAREFACADE_API GraphicsSettingsListener {
public:
    virtual void graphicsSettingsChanged(ipcutil::Rectangle_t first, ipcutil::Rectangle_t second) = 0;  // slot 0

protected:
    ~GraphicsSettingsListener() = default;
};

}  // namespace middlewarefacade
