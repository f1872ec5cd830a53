#pragma once

#include <cstdint>
#include <string>

namespace ipcutil {

// A stream-event command as the middleware delivers it. Laid out naturally:
// a host that declares the same fields in the same order gets this layout.
struct DsmCCCommand_t {
    int commandCode;             // becomes the record's code
    std::int64_t commandValue;   // copied unchanged to record bytes 16-23
    unsigned char commandByte;   // copied to record byte 24
    std::string commandText;     // copied into the record's text area
};

}  // namespace ipcutil
