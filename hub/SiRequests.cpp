#include "hub/SiRequests.h"

#include <cstdint>
#include <iostream>
#include <type_traits>

#include "tessarine/TextField.h"

namespace tessarine {

namespace {

constexpr std::size_t ITEM = 12;  // SI records and answers start at byte 12
constexpr std::size_t WORD3 = 12, WORD5 = 20, WORD6 = 24;

enum SiCode : std::uint32_t {
    SI_CODING_FORMAT = 0,
    SI_PROGRAM_EVENTS = 1,
    SI_PROGRAM_EVENT = 2,
    SI_EVENT_DESCRIPTORS = 3,
    SI_CA_SYSTEM_IDS = 4,
    SI_PROTECTED_SERVICE = 5,
    SI_SERVICES = 6,
    SI_CURRENT_SERVICE = 7,
    SI_SERVICE_DESCRIPTION = 8,
    SI_EVENT_DESCRIPTORS_9 = 9,
    SI_SERVICE_COMPONENTS = 10,
    SI_COMPONENT_DESCRIPTORS = 11,
    SI_TRANSPORT_STREAM = 12,
    SI_TRANSPORT_STREAM_DESCRIPTORS = 13,
    SI_NETWORK = 14,
    SI_NETWORK_DESCRIPTORS = 15,
    SI_PMTS = 16,
};

// Each appender returns false once the batch takes no more.
bool appendBytes(SendBatch& batch, const std::vector<unsigned char>& bytes) {
    return bytes.empty() || batch.addRaw(bytes.data(), bytes.size());
}

// Each string as a uint32 length and its bytes, without a terminator.
bool appendStrings(SendBatch& batch, const std::vector<std::string>& strings) {
    for (const std::string& text : strings) {
        const auto length = static_cast<std::uint32_t>(text.size());
        if (!batch.addRaw(&length, sizeof length) || (length > 0 && !batch.addRaw(text.data(), length))) return false;
    }
    return true;
}

// The three byte lists raw, then the three string lists.
bool appendTrailingData(SendBatch& batch, const program_event& event) {
    return appendBytes(batch, event.bytes0) && appendBytes(batch, event.bytes1) && appendBytes(batch, event.bytes2) &&
           appendStrings(batch, event.strings0) && appendStrings(batch, event.strings1) &&
           appendStrings(batch, event.strings2);
}

// Writes an SI value at byte 12: records encode themselves, integers are copied.
template <typename Item>
void writeItem(message& record, const Item& item) {
    if constexpr (std::is_arithmetic<Item>::value) {
        record.put(ITEM, item);
    } else {
        item.encode(record.bytes() + ITEM);
    }
}

}  // namespace

template <typename Item>
void SiRequests::sendItem(message& record, const Item& item) const {
    writeItem(record, item);
    context_.server.sendMessage(record);
}

template <typename Item>
void SiRequests::sendItems(message& record, std::int32_t itemCode, const std::list<Item>& items) const {
    context_.sendList(record, itemCode, items, writeItem<Item>);
}

void SiRequests::sendText(message& record, const std::string& text) const {
    writeTextField(record, ITEM, text);
    context_.server.sendMessage(record);
}

void SiRequests::sendDescriptors(message& record, std::int32_t itemCode,
                                 const std::list<descriptor>& descriptors) const {
    // Each descriptor is whole, record and bytes, before the next one's record.
    context_.sendList(record, itemCode, descriptors, writeItem<descriptor>,
                      [](SendBatch& batch, const descriptor& item) { appendBytes(batch, item.data); });
}

void SiRequests::sendProgramEvents(message& record) const {
    const auto events = context_.hub.getProgramEvents();
    context_.noteSize(events.size());
    // All item records first, then each event's trailing data in the same order.
    AnswerStream answer(context_.server);
    encodeList(answer, record, SI_PROGRAM_EVENTS, events, writeItem<program_event>);
    for (const program_event& event : events)
        if (!appendTrailingData(answer, event)) break;
}

void SiRequests::sendProgramEvent(message& record) const {
    const program_event event = context_.hub.getProgramEvent();
    writeItem(record, event);
    AnswerStream answer(context_.server);
    answer.add(record);
    appendTrailingData(answer, event);
}

void SiRequests::handle(message& record) const {
    IpcServerManager& hub = context_.hub;
    switch (static_cast<std::uint32_t>(record.code)) {
        case SI_CODING_FORMAT: return sendText(record, hub.getSICodingFormat());
        case SI_PROGRAM_EVENTS: return sendProgramEvents(record);
        case SI_PROGRAM_EVENT: return sendProgramEvent(record);
        case SI_EVENT_DESCRIPTORS:
        case SI_EVENT_DESCRIPTORS_9:
            return sendDescriptors(record, SI_EVENT_DESCRIPTORS,
                                   hub.getProgramEventDescriptors(record.get<int>(WORD5), record.get<int>(WORD6)));
        case SI_CA_SYSTEM_IDS: return sendItems(record, SI_CA_SYSTEM_IDS, hub.getCASystemIds());
        case SI_PROTECTED_SERVICE:
            record.bytes()[ITEM] = hub.isProtectedService() ? 1 : 0;
            context_.server.sendMessage(record);
            return;
        case SI_SERVICES: return sendItems(record, SI_SERVICES, hub.getServices());
        case SI_CURRENT_SERVICE: return sendItem(record, hub.getCurrentService());
        case SI_SERVICE_DESCRIPTION: return sendText(record, hub.getServiceDescription());
        case SI_SERVICE_COMPONENTS:
            return sendItems(record, SI_SERVICE_COMPONENTS, hub.getServiceComponents(record.get<int>(WORD3)));
        case SI_COMPONENT_DESCRIPTORS:
            return sendDescriptors(record, SI_COMPONENT_DESCRIPTORS,
                                   hub.getServiceComponentDescriptors(record.get<int>(WORD3)));
        case SI_TRANSPORT_STREAM: return sendItem(record, hub.getTransportStream());
        case SI_TRANSPORT_STREAM_DESCRIPTORS:
            return sendDescriptors(record, SI_EVENT_DESCRIPTORS,
                                   hub.getTransportStreamDescriptors(record.get<int>(WORD3)));
        case SI_NETWORK: return sendItem(record, hub.getNetwork());
        case SI_NETWORK_DESCRIPTORS:
            return sendDescriptors(record, SI_EVENT_DESCRIPTORS, hub.getNetworkDescriptors());
        case SI_PMTS: return sendItems(record, SI_PMTS, hub.getPMTs(record.get<int>(WORD3)));
        default:
            std::cerr << "Unknown si message type:  " << record.code << std::endl;
            return;
    }
}

}  // namespace tessarine
