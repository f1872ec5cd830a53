#pragma once

#include <string>

#include "middlewarefacade/DsmCCCommandListener.h"
#include "middlewarefacade/FacadeExport.h"

namespace middlewarefacade {

// The host's stream-event command facade. Positions are the binary contract.
class MIDDLEWAREFACADE_API DsmCCCommandFacade {
public:
    static DsmCCCommandFacade* createDsmCCCommandFacade();

    virtual void addCommandListener(std::string eventName, DsmCCCommandListener* listener) = 0;     // 0
    virtual void removeCommandListener(std::string eventName, DsmCCCommandListener* listener) = 0;  // 1
    virtual void reserved2() = 0;                                                                  // 2, never called
    virtual void release() = 0;                                                                    // 3

protected:
    ~DsmCCCommandFacade() = default;
};

}  // namespace middlewarefacade
