#include "hub/CarouselRequests.h"

#include "tessarine/TextField.h"

namespace tessarine {

void CarouselRequests::handle(message& record) const {
    switch (record.code) {
        case 0:
            writeTextField(record, SECOND_TEXT_OFFSET, context_.hub.mountCarousel(readText(record, FIRST_TEXT_OFFSET)));
            context_.server.sendMessage(record);
            return;
        case 1:
            context_.hub.umountCarousel(readText(record, FIRST_TEXT_OFFSET));
            return;
        case 3:
            context_.listeners.all([](IpcServerListener& listener) { listener.addCarouselListener(); });
            return;
        case 4:
            context_.listeners.all([](IpcServerListener& listener) { listener.removeCarouselListener(); });
            return;
        default:
            return;
    }
}

}  // namespace tessarine
