#include "hub/PropertyRequests.h"

#include <string>

#include "tessarine/TextField.h"

namespace tessarine {

namespace {

constexpr std::size_t PROPERTY = 8;  // system_property overlays bytes 8-523

}  // namespace

void PropertyRequests::handle(message& record) const {
    switch (record.code) {
        case 0:
            // The name stays in the first field; the value goes into the second.
            writeTextField(record, SECOND_TEXT_OFFSET,
                           context_.hub.getSystemProperty(readText(record, FIRST_TEXT_OFFSET)));
            context_.server.sendMessage(record);
            return;
        case 1: {
            const auto properties = context_.hub.getSystemProperties();
            // Each item's 516 bytes cover bytes 8-523, its first word in place of `code`.
            context_.sendList(record, record.code, properties,
                              [](message& item, const system_property& property) { item.put(PROPERTY, property); });
            return;
        }
        case 2: {
            auto property = record.get<system_property>(PROPERTY);
            context_.listeners.all([&](IpcServerListener& listener) { listener.setSystemProperty(property); });
            record.put(PROPERTY, property);
            return;
        }
        case 3: {
            const std::string name = readText(record, FIRST_TEXT_OFFSET);
            context_.listeners.all([&](IpcServerListener& listener) { listener.removeSystemProperty(name); });
            return;
        }
        default:
            return;
    }
}

}  // namespace tessarine
