// The host's factory functions, which the bridge calls while it is built:
// each hands out the installed simulator's facade, or none without one.
#include "middlewarefacade/CarouselFacade.h"
#include "middlewarefacade/DemuxFacade.h"
#include "middlewarefacade/DsmCCCommandFacade.h"
#include "middlewarefacade/PropertyFacade.h"
#include "middlewarefacade/SIFacade.h"
#include "middlewarefacade/TunerFacade.h"
#include "middlewarefacade/VersionFacade.h"
#include "middlewarefacade/VideoFacade.h"
#include "sim/Simulator.h"

namespace middlewarefacade {

namespace {
template <typename Facade, typename Get>
Facade* fromSimulator(Get get) {
    auto* simulator = tessarine::sim::Simulator::installed();
    return simulator != nullptr ? &get(*simulator) : nullptr;
}
}  // namespace

using tessarine::sim::Simulator;

VideoFacade* VideoFacade::createVideoFacade() {
    return fromSimulator<VideoFacade>([](Simulator& s) -> VideoFacade& { return s.video(); });
}
PropertyFacade* PropertyFacade::createPropertyFacade() {
    return fromSimulator<PropertyFacade>([](Simulator& s) -> PropertyFacade& { return s.property(); });
}
SIFacade* SIFacade::createSIFacade() {
    return fromSimulator<SIFacade>([](Simulator& s) -> SIFacade& { return s.si(); });
}
CarouselFacade* CarouselFacade::createCarouselFacade() {
    return fromSimulator<CarouselFacade>([](Simulator& s) -> CarouselFacade& { return s.carousel(); });
}
DemuxFacade* DemuxFacade::createDemuxFacade() {
    return fromSimulator<DemuxFacade>([](Simulator& s) -> DemuxFacade& { return s.demux(); });
}
TunerFacade* TunerFacade::createTunerFacade() {
    return fromSimulator<TunerFacade>([](Simulator& s) -> TunerFacade& { return s.tuner(); });
}
DsmCCCommandFacade* DsmCCCommandFacade::createDsmCCCommandFacade() {
    return fromSimulator<DsmCCCommandFacade>([](Simulator& s) -> DsmCCCommandFacade& { return s.dsmcc(); });
}
VersionFacade* VersionFacade::createVersionFacade() {
    return fromSimulator<VersionFacade>([](Simulator& s) -> VersionFacade& { return s.version(); });
}

}  // namespace middlewarefacade
