#include "hub/PropertyRequests.h"

#include <string>

#include "tessarine/TextField.h"

namespace tessarine {

void PropertyRequests::handle(message& record) const {
    switch (record.code) {
        case PROPERTY_GET:
            // The name stays in the first field; the value goes into the second.
            writeTextField(record, SECOND_TEXT_OFFSET,
                           context_.hub.getSystemProperty(readText(record, FIRST_TEXT_OFFSET)));
            context_.server.sendMessage(record);
            return;
        case PROPERTY_LIST: {
            const auto properties = context_.hub.getSystemProperties();
            // Each item's 516 bytes cover bytes 8-523, its first word in place of `code`.
            context_.sendList(record, properties, [](message& item, const system_property& property) {
                item.put(TYPED_PAYLOAD_OFFSET, property);
            });
            return;
        }
        case PROPERTY_SET: {
            auto property = record.get<system_property>(TYPED_PAYLOAD_OFFSET);
            context_.listeners.all([&](IpcServerListener& listener) { listener.setSystemProperty(property); });
            record.put(TYPED_PAYLOAD_OFFSET, property);
            return;
        }
        case PROPERTY_REMOVE: {
            const std::string name = readText(record, FIRST_TEXT_OFFSET);
            context_.listeners.all([&](IpcServerListener& listener) { listener.removeSystemProperty(name); });
            return;
        }
        default:
            return;
    }
}

}  // namespace tessarine
