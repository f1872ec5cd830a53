#pragma once

#include "middlewarefacade/CarouselFacade.h"
#include "middlewarefacade/DemuxFacade.h"
#include "middlewarefacade/DsmCCCommandFacade.h"
#include "middlewarefacade/PropertyFacade.h"
#include "middlewarefacade/SIFacade.h"
#include "middlewarefacade/TunerFacade.h"
#include "middlewarefacade/VersionFacade.h"
#include "middlewarefacade/VideoFacade.h"

namespace tessarine {
namespace testing {

struct FakeFacades;

// What the host's factories return in a test program. The factories are
// defined next to this selection and answer from it; a null entry makes a
// factory return no facade. Set it before the adapter is built.
struct FacadeSelection {
    middlewarefacade::VideoFacade* video = nullptr;
    middlewarefacade::PropertyFacade* property = nullptr;
    middlewarefacade::SIFacade* si = nullptr;
    middlewarefacade::CarouselFacade* carousel = nullptr;
    middlewarefacade::DemuxFacade* demux = nullptr;
    middlewarefacade::TunerFacade* tuner = nullptr;
    middlewarefacade::DsmCCCommandFacade* dsmcc = nullptr;
    middlewarefacade::VersionFacade* version = nullptr;

    static FacadeSelection& current();
    // Every factory returns the matching fake of `fakes`.
    static void select(FakeFacades& fakes);
    // Every factory returns null.
    static void selectNone();
};

}  // namespace testing
}  // namespace tessarine
