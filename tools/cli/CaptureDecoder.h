#pragma once

#include <cstdint>

#include "CaptureReader.h"
#include "Output.h"
#include "tessarine/protocol/Requests.h"

namespace cli {

// Turns the blocks of a capture into documents that carry the same names as
// the Wireshark dissector (tools/wireshark/tessarine.lua): what an outbound
// record is (answer, list header, item, event, ...) follows from the request
// before it, as there.
class CaptureDecoder {
public:
    Json decode(const CaptureBlock& block);

private:
    void control(const CaptureBlock& block, Json& out);
    void sections(const CaptureBlock& block, Json& out);
    // The role of a whole record, and the fields it carries.
    const char* classify(std::uint32_t direction, std::int32_t type, std::int32_t code,
                         tessarine::protocol::Fields& fields);

    const tessarine::protocol::Request* request_ = nullptr;  // the request whose answer is due
    const tessarine::protocol::Request* last_ = nullptr;     // the last request, for its trailing data
    std::int32_t type_ = 0, code_ = 0;
    std::int64_t items_ = -1;  // list items still due; -1 before the list header
    std::int64_t chunks_ = 0;  // pieces of a chunked text still due
};

}  // namespace cli
