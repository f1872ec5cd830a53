#include "binding/RecordConverter.h"

#include <cstring>
#include <iterator>
#include <utility>

#include "tessarine/TextField.h"

namespace tessarine {
namespace binding {

namespace {

template <typename Element, typename Source>
std::vector<Element> copyAll(const Source& source) {
    return std::vector<Element>(source.begin(), source.end());
}

std::vector<std::string> moveAll(std::list<std::string>& source) {
    return std::vector<std::string>(std::make_move_iterator(source.begin()), std::make_move_iterator(source.end()));
}

}  // namespace

system_property toWire(const middlewarefacade::Property_& property) {
    system_property wire;
    std::memset(&wire, 0, sizeof wire);  // the code word means nothing in list items: zero
    writeTextField(wire.name, property.name);
    writeTextField(wire.value, property.value);
    return wire;
}

program_event toWire(middlewarefacade::ProgramEvent_ event) {
    program_event wire;
    wire.value0 = event.value0;
    wire.value1 = event.value1;
    wire.value2 = event.value2;
    wire.value3 = event.value3;
    wire.value4 = event.value4;
    wire.value5 = event.value5;
    wire.value6 = event.value6;
    wire.text0 = cutText(std::move(event.text0));
    wire.text1 = cutText(std::move(event.text1));
    wire.text2 = cutText(std::move(event.text2));
    wire.bytes0 = copyAll<unsigned char>(event.bytes0);
    wire.bytes1 = copyAll<unsigned char>(event.bytes1);
    wire.bytes2 = copyAll<unsigned char>(event.bytes2);
    // Strings in the lists travel as trailing data: whole, never cut.
    wire.strings0 = moveAll(event.strings0);
    wire.strings1 = moveAll(event.strings1);
    wire.strings2 = moveAll(event.strings2);
    return wire;
}

service toWire(middlewarefacade::Service_ source) {
    service wire;
    wire.value0 = source.value0;
    wire.value1 = source.value1;
    wire.value2 = source.value2;
    wire.value3 = source.value3;
    wire.value4 = source.value4;
    wire.text0 = cutText(std::move(source.text0));  // text1 has no place on the wire
    return wire;
}

service_component toWire(const middlewarefacade::ServiceComponent_& component) {
    service_component wire;
    wire.value0 = component.value0;
    wire.value1 = component.value1;
    wire.value2 = component.value2;
    wire.value3 = component.value3;
    wire.value4 = component.value4;
    wire.value5 = component.value5;
    return wire;
}

pmt toWire(const middlewarefacade::PMT_& table) {
    pmt wire;
    wire.value0 = table.value0;
    wire.value1 = table.value1;
    wire.value2 = table.value2;
    wire.value3 = table.value3;
    return wire;
}

descriptor toWire(const middlewarefacade::Descriptors_& source) {
    descriptor wire;
    wire.id = source.id;
    wire.data = copyAll<unsigned char>(source.data);
    return wire;
}

network toWire(middlewarefacade::Network_ source) {
    network wire;
    wire.value0 = source.value0;
    wire.text0 = cutText(std::move(source.text0));
    return wire;
}

transport_stream toWire(const middlewarefacade::TransportStream_& stream) {
    transport_stream wire;
    wire.value0 = stream.value0;
    wire.value1 = stream.value1;
    wire.value2 = stream.value2;
    wire.value3 = stream.value3;
    // The client knows only the kinds 1 to 3; anything else is "none".
    if (stream.value4 >= 1 && stream.value4 <= 3) wire.value4 = stream.value4;
    return wire;  // text0 has no place on the wire
}

}  // namespace binding
}  // namespace tessarine
