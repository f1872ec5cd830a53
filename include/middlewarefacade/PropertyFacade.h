#pragma once

#include <list>
#include <string>

#include "middlewarefacade/FacadeExport.h"
#include "middlewarefacade/Property_.h"

namespace middlewarefacade {

// The host's system-property facade. Positions are the binary contract.
class MIDDLEWAREFACADE_API PropertyFacade {
public:
    static PropertyFacade* createPropertyFacade();

    virtual void setProperty(std::string name, std::string value) = 0;  // 0
    virtual std::string getProperty(std::string name) = 0;              // 1
    virtual std::list<Property_> getProperties() = 0;                   // 2
    virtual void removeProperty(std::string name) = 0;                  // 3
    virtual void reserved4() = 0;                                       // 4, never called
    virtual void release() = 0;                                         // 5

protected:
    ~PropertyFacade() = default;
};

}  // namespace middlewarefacade
