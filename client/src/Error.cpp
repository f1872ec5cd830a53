#include "tessarine/client/Error.h"

namespace tessarine {
namespace client {

Error::Error(ErrorCode code, std::string detail) : code_(code), detail_(std::move(detail)) {}

std::string Error::message() const {
    return detail_.empty() ? toString(code_) : std::string(toString(code_)) + ": " + detail_;
}

const char* toString(ErrorCode code) {
    switch (code) {
    case ErrorCode::NotConnected:
        return "not connected";
    case ErrorCode::TimedOut:
        return "timed out";
    case ErrorCode::ConnectionLost:
        return "connection lost";
    case ErrorCode::MalformedAnswer:
        return "malformed answer";
    case ErrorCode::InvalidArgument:
        return "invalid argument";
    }
    return "unknown error";
}

}  // namespace client
}  // namespace tessarine
