#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <list>
#include <sstream>
#include <string>
#include <vector>

#include "support/EventLog.h"

namespace tessarine {
namespace testing {

// Text forms of call arguments, exact enough to compare: doubles as
// hexadecimal floats (bit for bit), bools by their byte (so a byte that is
// neither 0 nor 1 shows), byte strings in hex, strings quoted.
inline std::string describe(int value) { return std::to_string(value); }
inline std::string describe(long value) { return std::to_string(value) + "L"; }
inline std::string describe(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%a", value);
    return text;
}
inline std::string describe(const bool& value) {
    unsigned char raw;
    std::memcpy(&raw, &value, 1);
    return raw == 1 ? "true" : raw == 0 ? "false" : "bool(" + std::to_string(raw) + ")";
}
inline std::string describe(const std::string& value) { return "\"" + value + "\""; }
inline std::string describe(const char* value) { return describe(std::string(value)); }
inline std::string describe(const std::vector<unsigned char>& bytes) {
    std::string text = "{";
    char hex[4];
    for (unsigned char byte : bytes) {
        std::snprintf(hex, sizeof hex, "%s%02x", text.size() > 1 ? " " : "", byte);
        text += hex;
    }
    return text + "}";
}
inline std::string describe(const void* pointer) {
    std::ostringstream text;
    text << pointer;
    return text.str();
}

// "name(arg, arg, ...)", the form in which fakes record their calls.
template <typename... Args>
std::string callText(const char* name, const Args&... args) {
    std::string text = std::string(name) + "(";
    bool first = true;
    ((text += (first ? "" : ", ") + describe(args), first = false), ...);
    return text + ")";
}

// Every call a fake receives, in order; safe to read while bridge threads
// add to it.
class CallLog {
public:
    template <typename... Args>
    void record(const char* name, const Args&... args) {
        calls_.push(callText(name, args...));
    }
    std::vector<std::string> calls() const { return calls_.snapshot(); }
    std::size_t count() const { return calls_.size(); }
    bool waitFor(std::size_t count, std::chrono::milliseconds timeout = std::chrono::milliseconds(3000)) {
        return calls_.waitFor(count, timeout);
    }

private:
    EventLog<std::string> calls_;
};

}  // namespace testing
}  // namespace tessarine
