#include "hub/CarouselRequests.h"

#include "tessarine/TextField.h"

namespace tessarine {

void CarouselRequests::handle(message& record) const {
    switch (record.code) {
        case CAROUSEL_MOUNT:
            writeTextField(record, SECOND_TEXT_OFFSET, context_.hub.mountCarousel(readText(record, FIRST_TEXT_OFFSET)));
            context_.server.sendMessage(record);
            return;
        case CAROUSEL_UMOUNT:
            context_.hub.umountCarousel(readText(record, FIRST_TEXT_OFFSET));
            return;
        case CAROUSEL_ADD_LISTENER:
            context_.listeners.all([](IpcServerListener& listener) { listener.addCarouselListener(); });
            return;
        case CAROUSEL_REMOVE_LISTENER:
            context_.listeners.all([](IpcServerListener& listener) { listener.removeCarouselListener(); });
            return;
        default:
            return;
    }
}

}  // namespace tessarine
