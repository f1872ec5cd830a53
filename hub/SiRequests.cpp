#include "hub/SiRequests.h"

#include <cstdint>
#include <type_traits>

#include "tessarine/TextField.h"

namespace tessarine {

namespace {

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
        record.put(SI_ITEM_OFFSET, item);
    } else {
        item.encode(record.bytes() + SI_ITEM_OFFSET);
    }
}

}  // namespace

template <typename Item>
void SiRequests::sendItem(message& record, const Item& item) const {
    writeItem(record, item);
    context_.server.sendMessage(record);
}

template <typename Item>
void SiRequests::sendItems(message& record, const std::list<Item>& items) const {
    context_.sendList(record, items, writeItem<Item>);
}

void SiRequests::sendText(message& record, const std::string& text) const {
    writeTextField(record, SI_ITEM_OFFSET, text);
    context_.server.sendMessage(record);
}

void SiRequests::sendDescriptors(message& record, const std::list<descriptor>& descriptors) const {
    // Each descriptor is whole, record and bytes, before the next one's record.
    context_.sendList(record, descriptors, writeItem<descriptor>,
                      [](SendBatch& batch, const descriptor& item) { appendBytes(batch, item.data); });
}

void SiRequests::sendProgramEvents(message& record) const {
    const auto events = context_.hub.getProgramEvents();
    context_.noteSize(events.size());
    // All item records first, then each event's trailing data in the same order.
    AnswerStream answer(context_.server);
    encodeList(answer, record, context_.itemCode(events.size()), events, writeItem<program_event>);
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
    // List items carry the item code that the request's answer gives.
    const int id = record.get<int>(SI_ID_OFFSET);
    switch (record.code) {
        case SI_CODING_FORMAT: return sendText(record, hub.getSICodingFormat());
        case SI_PROGRAM_EVENTS: return sendProgramEvents(record);
        case SI_PROGRAM_EVENT: return sendProgramEvent(record);
        case SI_EVENT_DESCRIPTORS:
        case SI_EVENT_DESCRIPTORS_9:
            return sendDescriptors(record, hub.getProgramEventDescriptors(record.get<int>(SI_FIRST_OFFSET),
                                                                          record.get<int>(SI_SECOND_OFFSET)));
        case SI_CA_SYSTEM_IDS: return sendItems(record, hub.getCASystemIds());
        case SI_PROTECTED_SERVICE:
            record.bytes()[SI_ITEM_OFFSET] = hub.isProtectedService() ? 1 : 0;
            context_.server.sendMessage(record);
            return;
        case SI_SERVICES: return sendItems(record, hub.getServices());
        case SI_CURRENT_SERVICE: return sendItem(record, hub.getCurrentService());
        case SI_SERVICE_DESCRIPTION: return sendText(record, hub.getServiceDescription());
        case SI_SERVICE_COMPONENTS: return sendItems(record, hub.getServiceComponents(id));
        case SI_COMPONENT_DESCRIPTORS: return sendDescriptors(record, hub.getServiceComponentDescriptors(id));
        case SI_TRANSPORT_STREAM: return sendItem(record, hub.getTransportStream());
        case SI_TRANSPORT_STREAM_DESCRIPTORS: return sendDescriptors(record, hub.getTransportStreamDescriptors(id));
        case SI_NETWORK: return sendItem(record, hub.getNetwork());
        case SI_NETWORK_DESCRIPTORS: return sendDescriptors(record, hub.getNetworkDescriptors());
        case SI_PMTS: return sendItems(record, hub.getPMTs(id));
        default: return;  // the dispatcher reports the codes it does not know
    }
}

}  // namespace tessarine
