#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include "tessarine/message.h"

namespace tessarine {

// The one rule for fixed text fields. Header-only, so that every party that
// writes or reads the wire (the bridge, the client library, tools) shares it.

// The first TEXT_FIELD_SIZE - 1 characters of a text, as a field holds them.
inline std::string cutText(std::string text) {
    if (text.size() > TEXT_FIELD_SIZE - 1) text.resize(TEXT_FIELD_SIZE - 1);
    return text;
}

// Cut to TEXT_FIELD_SIZE - 1 characters, zero the whole field, copy up to an
// embedded NUL: the field is always NUL-terminated and NUL-padded.
inline void writeTextField(char* field, const std::string& text) {
    std::memset(field, 0, TEXT_FIELD_SIZE);
    std::size_t length = std::min(text.size(), TEXT_FIELD_SIZE - 1);
    if (const void* nul = std::memchr(text.data(), '\0', length)) {
        length = static_cast<std::size_t>(static_cast<const char*>(nul) - text.data());
    }
    std::memcpy(field, text.data(), length);
}

inline void writeTextField(message& record, std::size_t offset, const std::string& text) {
    writeTextField(reinterpret_cast<char*>(record.bytes() + offset), text);
}

// A text read from a field: up to its first NUL, never past `limit` bytes.
inline std::string readTextField(const char* field, std::size_t limit = TEXT_FIELD_SIZE) {
    return std::string(field, strnlen(field, limit));
}

// A text read from a record at `offset`: up to its first NUL, never past the
// end of the record.
inline std::string readText(const message& record, std::size_t offset) {
    if (offset >= MESSAGE_SIZE) return {};
    return readTextField(reinterpret_cast<const char*>(record.bytes() + offset), MESSAGE_SIZE - offset);
}

}  // namespace tessarine
