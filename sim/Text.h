#pragma once

#include <list>
#include <sstream>
#include <string>

#include "ipcutil/Rectangle_t.h"

namespace tessarine {
namespace sim {

// Short renderings for log lines and the console.

inline std::string rectText(const ipcutil::Rectangle_t& r) {
    return std::to_string(r.x) + "," + std::to_string(r.y) + "," + std::to_string(r.width) + "," +
           std::to_string(r.height);
}

// A text in quotes, long ones cut so that a log line stays one short line.
inline std::string quoted(const std::string& text, std::size_t limit = 48) {
    if (text.size() <= limit) return "\"" + text + "\"";
    return "\"" + text.substr(0, limit) + "...\" (" + std::to_string(text.size()) + " chars)";
}

template <typename T>
std::string countText(const std::list<T>& items, const char* what) {
    return std::to_string(items.size()) + " " + what;
}

}  // namespace sim
}  // namespace tessarine
