#pragma once

#include <list>
#include <string>

#include "middlewarefacade/FacadeExport.h"
#include "middlewarefacade/Records.h"

namespace middlewarefacade {

// The host's service-information facade. Positions are the binary contract;
// every query returns by value and the caller owns the result.
class MIDDLEWAREFACADE_API SIFacade {
public:
    static SIFacade* createSIFacade();

    virtual Network_ getNetwork() = 0;                                                  // 0
    virtual std::list<Descriptors_> getNetworkDescriptors() = 0;                        // 1
    virtual TransportStream_ getTransportStream() = 0;                                  // 2
    virtual std::list<Descriptors_> getTransportStreamDescriptors(int id) = 0;          // 3
    virtual std::list<Service_> getServices() = 0;                                      // 4
    virtual int getCurrentService() = 0;                                                // 5
    virtual std::list<Descriptors_> getServiceDescriptors(int id) = 0;                  // 6
    virtual std::list<ProgramEvent_> getProgramEvents() = 0;                            // 7
    virtual ProgramEvent_ getProgramEvent() = 0;                                        // 8
    virtual std::list<Descriptors_> getProgramEventDescriptors(int first, int second) = 0;  // 9
    virtual std::list<ServiceComponent_> getServiceComponents(int id) = 0;              // 10
    virtual std::list<Descriptors_> getServiceComponentDescriptors(int id) = 0;         // 11
    virtual std::list<PMT_> getPMTs(int id) = 0;                                        // 12
    virtual std::string getSICodingFormat() = 0;                                        // 13
    virtual std::list<int> getCASystemIds() = 0;                                        // 14
    virtual bool isProtectedService() = 0;                                              // 15
    virtual std::string getServiceDescription() = 0;                                    // 16
    virtual void reserved17() = 0;                                                      // 17, never called
    virtual void release() = 0;                                                         // 18

protected:
    ~SIFacade() = default;
};

}  // namespace middlewarefacade
