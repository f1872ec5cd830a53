// Feeds arbitrary bytes to the transport-stream input, with a section
// filter set from the input's first bytes: whatever the packets (lost sync,
// broken tables, sections of any length, a restart halfway), decoding must
// neither crash nor grow without bound, and the SI model must answer.
//
// Layout: PID (2 bytes), flags, table id, offset, then three byte strings
// (each a length byte and that many bytes: value, mask, mode), then the
// stream. Flag bits choose the table id and the four comparisons.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "sim/broadcast/SectionFilter.h"
#include "sim/broadcast/SiModel.h"
#include "sim/broadcast/TsInput.h"

namespace {

using namespace tessarine::broadcast;

struct Input {
    const std::uint8_t* data;
    std::size_t size;

    std::uint8_t byte() {
        if (size == 0) return 0;
        --size;
        return *data++;
    }
    std::vector<unsigned char> bytes() {
        std::size_t length = byte();
        if (length > size) length = size;
        std::vector<unsigned char> taken(data, data + length);
        data += length;
        size -= length;
        return taken;
    }
};

void askEverything(const SiModel& si) {
    for (const auto& service : si.getServices()) {
        (void)si.getServiceDescriptors(service.value0);
        (void)si.getServiceComponents(service.value0);
    }
    for (const auto& event : si.getProgramEvents()) (void)si.getProgramEventDescriptors(event.value4, event.value0);
    (void)si.getProgramEvent();
    (void)si.getNetwork();
    (void)si.getNetworkDescriptors();
    if (auto ts = si.getTransportStream()) (void)si.getTransportStreamDescriptors(ts->value0);
    for (const auto& pmt : si.getPMTs(-1)) (void)si.getServiceComponentDescriptors(pmt.value1);
    (void)si.getCASystemIds();
    (void)si.isProtectedService();
    (void)si.getServiceDescription();
    (void)si.getSICodingFormat();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in{data, size};
    const int pid = (in.byte() << 8 | in.byte()) & 0x1FFF;
    const std::uint8_t flags = in.byte(), tableId = in.byte();
    const int offset = static_cast<std::int8_t>(in.byte());
    const auto value = in.bytes(), mask = in.bytes(), mode = in.bytes();

    SiModel si;
    TsInput input(si);
    SectionFilter filter(input);
    filter.set_time_out(0);
    filter.set_pid(pid);
    if (flags & 1) filter.set_table_id(tableId);
    if (flags & 2) filter.set_positive_filter(offset, value, mask);
    if (flags & 4) filter.set_greater_than_filter(offset, value, mask);
    if (flags & 8) filter.set_less_than_filter(offset, value, mask);
    if (flags & 16) filter.set_xor_filter(offset, value, mask, mode);

    const std::size_t half = in.size / 2;
    input.feed(in.data, half);
    if (flags & 32) input.restart();  // as a looping file does
    input.feed(in.data + half, in.size - half);
    while (!filter.read_section().empty()) {
    }
    askEverything(si);
    return 0;
}
