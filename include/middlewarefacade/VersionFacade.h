#pragma once

#include "middlewarefacade/FacadeExport.h"

namespace middlewarefacade {

// The host's version facade. Positions are the binary contract. The bridge
// never releases it: it is used until the process ends.
class MIDDLEWAREFACADE_API VersionFacade {
public:
    static VersionFacade* createVersionFacade();

    virtual int checkVersionFlag(int flag) = 0;  // 0: non-zero when the flag is set

protected:
    ~VersionFacade() = default;
};

}  // namespace middlewarefacade
