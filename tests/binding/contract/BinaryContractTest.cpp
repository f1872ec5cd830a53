// The host calls the facades and the library calls the listener bases by
// virtual slot: each operation must sit at the slot the host's own
// declaration gives it, in declaration order from slot 0 (no destructor
// slots). Under the Itanium ABI a pointer to a virtual member holds one plus
// the slot's byte offset in the table.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "middlewarefacade/CarouselFacade.h"
#include "middlewarefacade/DemuxFacade.h"
#include "middlewarefacade/DsmCCCommandFacade.h"
#include "middlewarefacade/PropertyFacade.h"
#include "middlewarefacade/SIFacade.h"
#include "middlewarefacade/TunerFacade.h"
#include "middlewarefacade/VersionFacade.h"
#include "middlewarefacade/VideoFacade.h"

namespace middlewarefacade {
namespace {

template <typename Member>
std::ptrdiff_t slotOf(Member member) {
    std::ptrdiff_t word;
    static_assert(sizeof member >= sizeof word, "a member pointer starts with its slot word");
    std::memcpy(&word, &member, sizeof word);
    return (word - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

template <typename... Members>
std::vector<std::ptrdiff_t> slots(Members... members) {
    return {slotOf(members)...};
}

std::vector<std::ptrdiff_t> inOrder(std::ptrdiff_t count) {
    std::vector<std::ptrdiff_t> order;
    for (std::ptrdiff_t i = 0; i < count; ++i) order.push_back(i);
    return order;
}

using V = VideoFacade;
using S = SIFacade;
using T = TunerFacade;
using D = DemuxFacade;
using C = CarouselFacade;
using P = PropertyFacade;
using L = CarouselListener;

TEST(BinaryContract, FacadeOperationsSitAtTheHostsSlots) {
    EXPECT_EQ(slots(&V::setMainVideoBounds, &V::getMainVideoBounds, &V::open, &V::getDuration, &V::getCurrentTime,
                    &V::setCurrentTime, &V::addMediaListener, &V::play, &V::stop, &V::close, &V::setMediaBounds,
                    &V::getMediaBounds, &V::getLanguage3, &V::getLanguages, &V::getLanguage5, &V::setText6,
                    &V::setFlag7, &V::setMediaFreeze, &V::setFlag8, &V::getRate9, &V::getRate10, &V::getRate11,
                    &V::getRate12, &V::getRate13, &V::getRate14, &V::getRate15, &V::getRate16, &V::reset,
                    &V::setBalanceLevel, &V::setMediaBalanceLevel, &V::setSoundLevel, &V::setMediaSoundLevel,
                    &V::setMute, &V::setMediaMute, &V::setBassLevel, &V::setMediaBassLevel, &V::setTrebleLevel,
                    &V::setMediaTrebleLevel, &V::addGraphicsSettingsListener, &V::removeGraphicsSettingsListener,
                    &V::getInitCropValue, &V::updateGraphicsRegion, &V::reserved42, &V::release),
              inOrder(44));
    EXPECT_EQ(slots(&S::getNetwork, &S::getNetworkDescriptors, &S::getTransportStream,
                    &S::getTransportStreamDescriptors, &S::getServices, &S::getCurrentService,
                    &S::getServiceDescriptors, &S::getProgramEvents, &S::getProgramEvent,
                    &S::getProgramEventDescriptors, &S::getServiceComponents, &S::getServiceComponentDescriptors,
                    &S::getPMTs, &S::getSICodingFormat, &S::getCASystemIds, &S::isProtectedService,
                    &S::getServiceDescription, &S::reserved17, &S::release),
              inOrder(19));
    EXPECT_EQ(slots(&T::getCurrentTransportStreamID, &T::getIds2, &T::getIds1, &T::getChannelName,
                    &T::getVirtualChannelNumber, &T::getIds3, &T::getIds4, &T::reserved7, &T::release),
              inOrder(9));
    EXPECT_EQ(slots(&D::start, &D::stop, &D::set_pid, &D::set_table_id, &D::set_positive_filter,
                    &D::set_greater_than_filter, &D::set_less_than_filter, &D::set_xor_filter, &D::set_time_out,
                    &D::clear_table_id, &D::clear_positive_filter, &D::clear_less_than_filter, &D::clear_xor_filter,
                    &D::read_section, &D::reserved14, &D::release),
              inOrder(16));
    EXPECT_EQ(slots(&C::mount, &C::umount, &C::addCarouselListener, &C::removeCarouselListener, &C::reserved4,
                    &C::release),
              inOrder(6));
    EXPECT_EQ(slots(&P::setProperty, &P::getProperty, &P::getProperties, &P::removeProperty, &P::reserved4,
                    &P::release),
              inOrder(6));
    EXPECT_EQ(slots(&DsmCCCommandFacade::addCommandListener, &DsmCCCommandFacade::removeCommandListener,
                    &DsmCCCommandFacade::reserved2, &DsmCCCommandFacade::release),
              inOrder(4));
    EXPECT_EQ(slots(&VersionFacade::checkVersionFlag), inOrder(1));
}

TEST(BinaryContract, ListenerOperationsSitAtTheHostsSlots) {
    EXPECT_EQ(slots(static_cast<void (L::*)(std::string)>(&L::downloadComplete),
                    static_cast<void (L::*)(std::string, std::string)>(&L::downloadComplete)),
              inOrder(2));
    EXPECT_EQ(slots(&MediaListener::endOfMedia, &GraphicsSettingsListener::graphicsSettingsChanged,
                    &DsmCCCommandListener::commandReceived),
              std::vector<std::ptrdiff_t>(3, 0));
}

}  // namespace
}  // namespace middlewarefacade
