#include "support/fakes/FacadeSelection.h"

#include "support/fakes/RecordingFacades.h"

namespace tessarine {
namespace testing {

FacadeSelection& FacadeSelection::current() {
    static FacadeSelection selection;
    return selection;
}

void FacadeSelection::select(FakeFacades& fakes) {
    current() = FacadeSelection{&fakes.video, &fakes.property, &fakes.si,    &fakes.carousel,
                                &fakes.demux, &fakes.tuner,    &fakes.dsmcc, &fakes.version};
}

void FacadeSelection::selectNone() { current() = FacadeSelection{}; }

}  // namespace testing
}  // namespace tessarine

// The host's factories, as a test program defines them.
namespace middlewarefacade {
using tessarine::testing::FacadeSelection;
VideoFacade* VideoFacade::createVideoFacade() { return FacadeSelection::current().video; }
PropertyFacade* PropertyFacade::createPropertyFacade() { return FacadeSelection::current().property; }
SIFacade* SIFacade::createSIFacade() { return FacadeSelection::current().si; }
CarouselFacade* CarouselFacade::createCarouselFacade() { return FacadeSelection::current().carousel; }
DemuxFacade* DemuxFacade::createDemuxFacade() { return FacadeSelection::current().demux; }
TunerFacade* TunerFacade::createTunerFacade() { return FacadeSelection::current().tuner; }
DsmCCCommandFacade* DsmCCCommandFacade::createDsmCCCommandFacade() { return FacadeSelection::current().dsmcc; }
VersionFacade* VersionFacade::createVersionFacade() { return FacadeSelection::current().version; }
}  // namespace middlewarefacade
