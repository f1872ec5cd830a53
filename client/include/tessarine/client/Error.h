#pragma once

#include <string>

#include "tessarine/client/Export.h"

namespace tessarine {
namespace client {

// What went wrong with a call. Every failure of the library is one of these;
// nothing is thrown.
enum class ErrorCode {
    NotConnected,     // no bridge listens at the socket path
    TimedOut,         // the answer did not arrive within the call's time limit
    ConnectionLost,   // the bridge went away before or while answering
    MalformedAnswer,  // the bridge sent something the protocol does not allow
    InvalidArgument,  // the request cannot be expressed on the wire
};

class TESSARINE_CLIENT_API Error {
public:
    Error(ErrorCode code, std::string detail);

    ErrorCode code() const { return code_; }
    const std::string& detail() const { return detail_; }
    // "timed out: no answer to MSG_SI code 6 within 2000 ms"
    std::string message() const;

private:
    ErrorCode code_;
    std::string detail_;
};

// "not connected", "timed out", ...
TESSARINE_CLIENT_API const char* toString(ErrorCode code);

}  // namespace client
}  // namespace tessarine
