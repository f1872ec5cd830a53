#include "tessarine/TextField.h"

#include <algorithm>
#include <cstring>

namespace tessarine {

std::string cutText(const std::string& text) {
    return text.substr(0, TEXT_FIELD_SIZE - 1);
}

void writeTextField(char* field, const std::string& text) {
    std::memset(field, 0, TEXT_FIELD_SIZE);
    std::size_t length = std::min(text.size(), TEXT_FIELD_SIZE - 1);
    if (const void* nul = std::memchr(text.data(), '\0', length)) {
        length = static_cast<std::size_t>(static_cast<const char*>(nul) - text.data());
    }
    std::memcpy(field, text.data(), length);
}

void writeTextField(message& record, std::size_t offset, const std::string& text) {
    writeTextField(reinterpret_cast<char*>(record.bytes() + offset), text);
}

std::string readText(const message& record, std::size_t offset) {
    if (offset >= MESSAGE_SIZE) return {};
    const char* start = reinterpret_cast<const char*>(record.bytes() + offset);
    return std::string(start, strnlen(start, MESSAGE_SIZE - offset));
}

}  // namespace tessarine
