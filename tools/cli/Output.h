#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tessarine/client/Error.h"
#include "tessarine/client/Rectangle.h"

namespace cli {

using Json = nlohmann::ordered_json;

// Exit codes of the tool, documented in its --help and in docs/CLIENT.md.
enum ExitCode : int {
    EXIT_OK = 0,
    EXIT_NOTHING = 1,        // the bridge answered, but with nothing: no handle, no mount point, no value, no section
    EXIT_USAGE = 2,          // bad arguments, or a request the wire cannot carry
    EXIT_NOT_CONNECTED = 3,  // no bridge at the socket
    EXIT_TIMED_OUT = 4,      // no answer within --timeout
    EXIT_PROTOCOL = 5,       // the connection broke or the answer was malformed
};

int exitCodeOf(const tessarine::client::Error& error);
// The snake_case name of an error code, as --json error documents carry it.
std::string errorName(const tessarine::client::Error& error);
// Whether an answer says "nothing": null, an empty list, or an object whose last member
// (the value asked for) is null or empty.
bool isNothing(const Json& document);

// Byte strings travel in JSON as lower-case hex without separators; the keys
// that hold them are listed here so that people get hex dumps instead.
bool isBinaryKey(const std::string& key);
std::string toHex(const std::vector<std::uint8_t>& bytes);
// Accepts "4e f0", "4ef0", "0x4e,0xf0"; false on anything else.
bool parseHex(const std::string& text, std::vector<std::uint8_t>& bytes);
// Classic 16-bytes-a-line dump with offsets and printable characters.
std::string hexDump(const std::vector<std::uint8_t>& bytes, const std::string& indent = "  ");

// A rectangle as the answers and the events show it.
Json rectangleJson(const tessarine::client::Rectangle& r);

// Prints one answer: the JSON document as one line, or for people: a scalar
// as is, an object as aligned "key  value" lines, an array of objects as an
// aligned table, with byte strings as hex dumps after it.
// jsonIndent: -1 one line, else the indentation of a pretty document.
void print(const Json& document, bool json, int jsonIndent = -1);

}  // namespace cli
