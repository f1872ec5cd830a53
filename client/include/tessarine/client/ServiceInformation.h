#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Service information records as the bridge hands them over. The values are
// the middleware's, passed through unchanged; texts are at most 254
// characters; byte and string lists are carried whole.
namespace tessarine {
namespace client {

struct ProgramEvent {
    std::int32_t value0 = 0, value1 = 0, value2 = 0, value3 = 0;
    std::int32_t value4 = 0, value5 = 0, value6 = 0;
    std::string text0, text1, text2;
    std::vector<std::uint8_t> bytes0, bytes1, bytes2;
    std::vector<std::string> strings0, strings1, strings2;
};

struct Service {
    std::int32_t value0 = 0, value1 = 0, value2 = 0, value3 = 0, value4 = 0;
    std::string text0;
};

struct ServiceComponent {
    std::int32_t value0 = 0, value1 = 0, value2 = 0, value3 = 0, value4 = 0, value5 = 0;
};

// A raw descriptor: its identifier and its bytes.
struct Descriptor {
    std::uint16_t id = 0;
    std::vector<std::uint8_t> data;
};

struct Pmt {
    std::int32_t value0 = 0, value1 = 0, value2 = 0, value3 = 0;
};

struct Network {
    std::int32_t value0 = 0;
    std::string text0;
};

struct TransportStream {
    std::int32_t value0 = 0, value1 = 0, value2 = 0, value3 = 0;
    std::int32_t value4 = 0;  // 1, 2 or 3; 0 for anything else
};

}  // namespace client
}  // namespace tessarine
