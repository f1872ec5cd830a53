#pragma once

#include <list>
#include <utility>

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
// whole, values unchanged except where a converter says otherwise. Records
// that own strings are taken by value: the adapter hands over the facade's
// temporaries, whose strings then move instead of being copied.
system_property toWire(const middlewarefacade::Property_& property);
program_event toWire(middlewarefacade::ProgramEvent_ event);
service toWire(middlewarefacade::Service_ service);
service_component toWire(const middlewarefacade::ServiceComponent_& component);
pmt toWire(const middlewarefacade::PMT_& table);
descriptor toWire(const middlewarefacade::Descriptors_& descriptor);
network toWire(middlewarefacade::Network_ network);
transport_stream toWire(const middlewarefacade::TransportStream_& stream);

// Converts each record of a facade list, in order, moving what it can.
// Each facade record is released as soon as it is converted: the allocator
// then hands its memory straight to the next converted record, instead of
// carving every record from fresh memory and merging the whole facade list
// back afterwards.
template <typename Record>
auto toWire(std::list<Record> records) -> std::list<decltype(toWire(std::move(records.front())))> {
    std::list<decltype(toWire(std::move(records.front())))> converted;
    while (!records.empty()) {
        converted.push_back(toWire(std::move(records.front())));
        records.pop_front();
    }
    return converted;
}

}  // namespace binding
}  // namespace tessarine
