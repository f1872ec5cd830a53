#pragma once

#include <list>

#include "middlewarefacade/Property_.h"
#include "middlewarefacade/Records.h"
#include "tessarine/descriptor.h"
#include "tessarine/network.h"
#include "tessarine/pmt.h"
#include "tessarine/program_event.h"
#include "tessarine/service.h"
#include "tessarine/service_component.h"
#include "tessarine/system_property.h"
#include "tessarine/transport_stream.h"

namespace tessarine {
namespace binding {

// Facade records to wire records: texts cut to a text field, lists copied
// whole, values unchanged except where a converter says otherwise.
system_property toWire(const middlewarefacade::Property_& property);
program_event toWire(const middlewarefacade::ProgramEvent_& event);
service toWire(const middlewarefacade::Service_& service);
service_component toWire(const middlewarefacade::ServiceComponent_& component);
pmt toWire(const middlewarefacade::PMT_& table);
descriptor toWire(const middlewarefacade::Descriptors_& descriptor);
network toWire(const middlewarefacade::Network_& network);
transport_stream toWire(const middlewarefacade::TransportStream_& stream);

// Converts each record of a facade list, in order.
template <typename Record>
auto toWire(const std::list<Record>& records) -> std::list<decltype(toWire(records.front()))> {
    std::list<decltype(toWire(records.front()))> converted;
    for (const Record& record : records) converted.push_back(toWire(record));
    return converted;
}

}  // namespace binding
}  // namespace tessarine
