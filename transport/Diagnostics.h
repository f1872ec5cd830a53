#pragma once

#include <string>

namespace tessarine {

// The one way the library reports: whole lines on the standard streams, each
// written at once and flushed, so that lines from different threads never mix.
class Diagnostics {
public:
    // "<text>: <the system's error text for errno>" on standard error: the
    // perror convention, for a failed system call.
    static void systemError(const char* text);
    // "<text><number>" on standard error: a record the bridge does not know.
    static void unknown(const char* text, long long number);
    // "<what>: <detail>" on standard error: host code failed, or the system
    // refused a resource.
    static void failure(const char* what, const std::string& detail);
    // A trace line on standard output.
    static void trace(const std::string& line);
};

}  // namespace tessarine
