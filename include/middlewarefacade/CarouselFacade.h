#pragma once

#include <string>

#include "middlewarefacade/CarouselListener.h"
#include "middlewarefacade/FacadeExport.h"

namespace middlewarefacade {

// The host's object-carousel facade. Positions are the binary contract.
class MIDDLEWAREFACADE_API CarouselFacade {
public:
    static CarouselFacade* createCarouselFacade();

    virtual std::string mount(std::string name) = 0;                   // 0
    virtual void umount(std::string name) = 0;                         // 1
    virtual void addCarouselListener(CarouselListener* listener) = 0;  // 2
    virtual void removeCarouselListener(CarouselListener* listener) = 0;  // 3
    virtual void reserved4() = 0;                                      // 4, never called
    virtual void release() = 0;                                        // 5

protected:
    ~CarouselFacade() = default;
};

}  // namespace middlewarefacade
