#pragma once

#include <cstddef>
#include <string>

#include "tessarine/Export.h"
#include "tessarine/message.h"

namespace tessarine {

// The one rule for fixed text fields: cut to TEXT_FIELD_SIZE - 1 characters,
// zero the whole field, copy up to an embedded NUL. The result is always
// NUL-terminated and NUL-padded.
TESSARINE_API void writeTextField(char* field, const std::string& text);
TESSARINE_API void writeTextField(message& record, std::size_t offset, const std::string& text);

// The first TEXT_FIELD_SIZE - 1 characters of a text, as the field will hold them.
TESSARINE_API std::string cutText(const std::string& text);

// Reads a text from `offset` up to its first NUL, never past the end of the record.
TESSARINE_API std::string readText(const message& record, std::size_t offset);

}  // namespace tessarine
