// Service information calls.
#include "ControlClientImpl.h"
#include "RecordFields.h"
#include "tessarine/TextField.h"
#include "tessarine/descriptor.h"
#include "tessarine/network.h"
#include "tessarine/pmt.h"
#include "tessarine/program_event.h"
#include "tessarine/service.h"
#include "tessarine/service_component.h"
#include "tessarine/transport_stream.h"

namespace tessarine {
namespace client {

namespace {

message si(std::int32_t code) { return detail::requestRecord(MSG_SI, code); }

message siWithArgument(std::int32_t code, std::int32_t argument) {
    message record = si(code);
    record.put<std::int32_t>(SI_ID_OFFSET, argument);
    return record;
}

ProgramEvent programEventFrom(const unsigned char* record) {
    program_event wire = program_event::decode(record + SI_ITEM_OFFSET);
    ProgramEvent e;
    e.value0 = wire.value0;
    e.value1 = wire.value1;
    e.value2 = wire.value2;
    e.value3 = wire.value3;
    e.value4 = wire.value4;
    e.value5 = wire.value5;
    e.value6 = wire.value6;
    e.text0 = std::move(wire.text0);
    e.text1 = std::move(wire.text1);
    e.text2 = std::move(wire.text2);
    return e;
}

// The trailing data is moved into the event, not copied.
void addTrailing(ProgramEvent& e, detail::TrailingData&& data) {
    e.bytes0 = std::move(data.bytes[0]);
    e.bytes1 = std::move(data.bytes[1]);
    e.bytes2 = std::move(data.bytes[2]);
    e.strings0 = std::move(data.strings[0]);
    e.strings1 = std::move(data.strings[1]);
    e.strings2 = std::move(data.strings[2]);
}

std::vector<Descriptor> descriptorsFrom(detail::Answer& answer) {
    std::vector<Descriptor> descriptors;
    descriptors.reserve(answer.records.size());
    for (std::size_t i = 0; i < answer.records.size(); ++i) {
        descriptors.push_back(Descriptor{descriptor::decode(answer.records[i].bytes() + SI_ITEM_OFFSET).id,
                                         std::move(answer.trailing.at(i).bytes[0])});
    }
    return descriptors;
}

std::string textOf(const message& record) { return detail::textAt(record, SI_ITEM_OFFSET); }

}  // namespace

Result<std::string> ControlClient::siCodingFormat(Timeout timeout) {
    auto answer = impl_->single(si(SI_CODING_FORMAT), timeout);
    if (!answer) return answer.error();
    return textOf(*answer);
}

Result<std::vector<ProgramEvent>> ControlClient::programEvents(Timeout timeout) {
    std::vector<ProgramEvent> events;
    auto expected = detail::expectationFor(MSG_SI, SI_PROGRAM_EVENTS);
    expected->onItem = [&events](const unsigned char* item) { events.push_back(programEventFrom(item)); };
    auto answer = impl_->call(si(SI_PROGRAM_EVENTS), std::move(expected), timeout, false);
    if (!answer) return answer.error();
    for (std::size_t i = 0; i < events.size(); ++i) addTrailing(events[i], std::move(answer->trailing.at(i)));
    return events;
}

Result<std::optional<ProgramEvent>> ControlClient::programEvent(Timeout timeout) {
    auto answer = impl_->call(si(SI_PROGRAM_EVENT), timeout);
    if (!answer) return answer.error();
    ProgramEvent event = programEventFrom(answer->records.front().bytes());
    addTrailing(event, std::move(answer->trailing.at(0)));
    if (event.value1 == -1) return std::optional<ProgramEvent>();
    return std::optional<ProgramEvent>(std::move(event));
}

Result<std::vector<Descriptor>> ControlClient::programEventDescriptors(std::int32_t first, std::int32_t second,
                                                                       Timeout timeout) {
    message record = si(SI_EVENT_DESCRIPTORS);
    record.put<std::int32_t>(SI_FIRST_OFFSET, first);
    record.put<std::int32_t>(SI_SECOND_OFFSET, second);
    auto answer = impl_->call(record, timeout);
    if (!answer) return answer.error();
    return descriptorsFrom(*answer);
}

Result<std::vector<std::int32_t>> ControlClient::caSystemIds(Timeout timeout) {
    auto answer = impl_->call(si(SI_CA_SYSTEM_IDS), timeout);
    if (!answer) return answer.error();
    std::vector<std::int32_t> ids;
    for (const message& item : answer->records) ids.push_back(item.get<std::int32_t>(SI_ITEM_OFFSET));
    return ids;
}

Result<bool> ControlClient::isProtectedService(Timeout timeout) {
    auto answer = impl_->single(si(SI_PROTECTED_SERVICE), timeout);
    if (!answer) return answer.error();
    return answer->get<std::uint8_t>(SI_ITEM_OFFSET) != 0;
}

Result<std::vector<Service>> ControlClient::services(Timeout timeout) {
    std::vector<Service> services;
    auto expected = detail::expectationFor(MSG_SI, SI_SERVICES);
    expected->onItem = [&services](const unsigned char* item) {
        service s = service::decode(item + SI_ITEM_OFFSET);
        services.push_back(Service{s.value0, s.value1, s.value2, s.value3, s.value4, std::move(s.text0)});
    };
    auto answer = impl_->call(si(SI_SERVICES), std::move(expected), timeout, false);
    if (!answer) return answer.error();
    return services;
}

Result<std::optional<std::int32_t>> ControlClient::currentService(Timeout timeout) {
    auto answer = impl_->single(si(SI_CURRENT_SERVICE), timeout);
    if (!answer) return answer.error();
    return Impl::valid(answer->get<std::int32_t>(SI_ITEM_OFFSET));
}

Result<std::string> ControlClient::serviceDescription(Timeout timeout) {
    auto answer = impl_->single(si(SI_SERVICE_DESCRIPTION), timeout);
    if (!answer) return answer.error();
    return textOf(*answer);
}

Result<std::vector<ServiceComponent>> ControlClient::serviceComponents(std::int32_t service, Timeout timeout) {
    auto answer = impl_->call(siWithArgument(SI_SERVICE_COMPONENTS, service), timeout);
    if (!answer) return answer.error();
    std::vector<ServiceComponent> components;
    for (const message& item : answer->records) {
        const service_component c = service_component::decode(item.bytes() + SI_ITEM_OFFSET);
        components.push_back(ServiceComponent{c.value0, c.value1, c.value2, c.value3, c.value4, c.value5});
    }
    return components;
}

Result<std::vector<Descriptor>> ControlClient::serviceComponentDescriptors(std::int32_t component, Timeout timeout) {
    auto answer = impl_->call(siWithArgument(SI_COMPONENT_DESCRIPTORS, component), timeout);
    if (!answer) return answer.error();
    return descriptorsFrom(*answer);
}

Result<std::optional<TransportStream>> ControlClient::transportStream(Timeout timeout) {
    auto answer = impl_->single(si(SI_TRANSPORT_STREAM), timeout);
    if (!answer) return answer.error();
    const transport_stream t = transport_stream::decode(answer->bytes() + SI_ITEM_OFFSET);
    if (t.value1 == -1) return std::optional<TransportStream>();
    return std::optional<TransportStream>(TransportStream{t.value0, t.value1, t.value2, t.value3, t.value4});
}

Result<std::vector<Descriptor>> ControlClient::transportStreamDescriptors(std::int32_t transportStream,
                                                                          Timeout timeout) {
    auto answer = impl_->call(siWithArgument(SI_TRANSPORT_STREAM_DESCRIPTORS, transportStream), timeout);
    if (!answer) return answer.error();
    return descriptorsFrom(*answer);
}

Result<std::optional<Network>> ControlClient::network(Timeout timeout) {
    auto answer = impl_->single(si(SI_NETWORK), timeout);
    if (!answer) return answer.error();
    const tessarine::network n = tessarine::network::decode(answer->bytes() + SI_ITEM_OFFSET);
    if (n.value0 == -1) return std::optional<Network>();
    return std::optional<Network>(Network{n.value0, n.text0});
}

Result<std::vector<Descriptor>> ControlClient::networkDescriptors(Timeout timeout) {
    auto answer = impl_->call(si(SI_NETWORK_DESCRIPTORS), timeout);
    if (!answer) return answer.error();
    return descriptorsFrom(*answer);
}

Result<std::vector<Pmt>> ControlClient::pmts(std::int32_t service, Timeout timeout) {
    auto answer = impl_->call(siWithArgument(SI_PMTS, service), timeout);
    if (!answer) return answer.error();
    std::vector<Pmt> tables;
    for (const message& item : answer->records) {
        const pmt p = pmt::decode(item.bytes() + SI_ITEM_OFFSET);
        tables.push_back(Pmt{p.value0, p.value1, p.value2, p.value3});
    }
    return tables;
}

}  // namespace client
}  // namespace tessarine
