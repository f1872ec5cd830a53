#pragma once

#include <list>
#include <string>

#include "middlewarefacade/FacadeExport.h"

namespace middlewarefacade {

// The host's tuner facade. Positions are the binary contract.
class MIDDLEWAREFACADE_API TunerFacade {
public:
    static TunerFacade* createTunerFacade();

    virtual int getCurrentTransportStreamID() = 0;                    // 0
    virtual std::list<int> getIds2() = 0;                             // 1
    virtual std::list<int> getIds1(int parameter) = 0;                // 2
    virtual std::string getChannelName(int first, int second) = 0;    // 3
    virtual int getVirtualChannelNumber(int first, int second) = 0;   // 4
    virtual std::list<int> getIds3(int parameter) = 0;                // 5
    virtual std::list<int> getIds4(int parameter) = 0;                // 6
    virtual void reserved7() = 0;                                     // 7, never called
    virtual void release() = 0;                                       // 8

protected:
    ~TunerFacade() = default;
};

}  // namespace middlewarefacade
