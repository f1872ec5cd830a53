#include "Output.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iostream>
#include <sstream>

namespace cli {

using tessarine::client::ErrorCode;

int exitCodeOf(const tessarine::client::Error& error) {
    switch (error.code()) {
    case ErrorCode::NotConnected:
        return EXIT_NOT_CONNECTED;
    case ErrorCode::TimedOut:
        return EXIT_TIMED_OUT;
    case ErrorCode::InvalidArgument:
        return EXIT_USAGE;
    case ErrorCode::ConnectionLost:
    case ErrorCode::MalformedAnswer:
        return EXIT_PROTOCOL;
    }
    return EXIT_PROTOCOL;
}

std::string errorName(const tessarine::client::Error& error) {
    std::string name = tessarine::client::toString(error.code());
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

bool isNothing(const Json& document) {
    if (document.is_null()) return true;
    if (document.is_array()) return document.empty();
    if (document.is_object()) {
        if (document.empty()) return true;
        const Json& last = *std::prev(document.end());
        return last.is_null() || (last.is_string() && last.get<std::string>().empty());
    }
    return false;
}

bool isBinaryKey(const std::string& key) {
    return key == "data" || key == "section" || key == "bytes" || key == "bytes0" || key == "bytes1" ||
           key == "bytes2";
}

Json rectangleJson(const tessarine::client::Rectangle& r) {
    return Json{{"x", r.x}, {"y", r.y}, {"width", r.width}, {"height", r.height}};
}

std::string toHex(const std::vector<std::uint8_t>& bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string out;
    for (std::uint8_t b : bytes) {
        out += digits[b >> 4];
        out += digits[b & 15];
    }
    return out;
}

namespace {

std::vector<std::uint8_t> fromHex(const std::string& hex) {
    std::vector<std::uint8_t> bytes;
    parseHex(hex, bytes);
    return bytes;
}

std::string cell(const Json& value) {
    if (value.is_string()) return value.get<std::string>();
    if (value.is_null()) return "-";
    return value.dump();
}

// A table cell never wraps: long texts are shortened for people.
std::string shortened(std::string text) {
    constexpr std::size_t WIDTH = 48;
    if (text.size() > WIDTH) text = text.substr(0, WIDTH - 3) + "...";
    return text;
}

void printTable(const Json& rows) {
    std::vector<std::string> columns;
    for (const auto& row : rows) {
        for (const auto& item : row.items()) {
            if (std::find(columns.begin(), columns.end(), item.key()) == columns.end()) columns.push_back(item.key());
        }
    }
    std::vector<std::vector<std::string>> cells;
    std::vector<std::size_t> widths;
    for (const auto& column : columns) widths.push_back(column.size());
    for (const auto& row : rows) {
        std::vector<std::string> line;
        for (std::size_t c = 0; c < columns.size(); ++c) {
            const auto& key = columns[c];
            std::string text = !row.contains(key) ? "" : isBinaryKey(key) ? std::to_string(row[key].get<std::string>().size() / 2) + " bytes"
                                                                           : shortened(cell(row[key]));
            widths[c] = std::max(widths[c], text.size());
            line.push_back(std::move(text));
        }
        cells.push_back(std::move(line));
    }
    auto printLine = [&](const std::vector<std::string>& line) {
        std::string out;
        for (std::size_t c = 0; c < line.size(); ++c) {
            std::string padded = line[c];
            if (c + 1 < line.size()) padded.resize(widths[c] + 2, ' ');
            out += padded;
        }
        while (!out.empty() && out.back() == ' ') out.pop_back();
        std::cout << out << '\n';
    };
    std::vector<std::string> header;
    for (const auto& column : columns) {
        std::string upper = column;
        std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char ch) { return std::toupper(ch); });
        header.push_back(upper);
    }
    printLine(header);
    for (const auto& line : cells) printLine(line);
    std::cout << (rows.size() == 1 ? "(1 entry)" : "(" + std::to_string(rows.size()) + " entries)") << '\n';
    // Byte strings after the table, one dump per non-empty string.
    for (std::size_t r = 0; r < rows.size(); ++r) {
        for (const auto& item : rows[r].items()) {
            if (!isBinaryKey(item.key()) || item.value().get<std::string>().empty()) continue;
            std::cout << '\n' << "[" << r << "] " << item.key() << ":\n" << hexDump(fromHex(item.value()));
        }
    }
}

void printObject(const Json& object) {
    std::size_t width = 0;
    for (const auto& item : object.items()) width = std::max(width, item.key().size());
    for (const auto& item : object.items()) {
        std::string key = item.key();
        key.resize(width + 2, ' ');
        if (isBinaryKey(item.key())) {
            const auto bytes = fromHex(item.value());
            std::cout << key << bytes.size() << " bytes\n" << hexDump(bytes);
        } else if (item.value().is_array() || item.value().is_object()) {
            std::cout << key << item.value().dump() << '\n';
        } else {
            std::cout << key << cell(item.value()) << '\n';
        }
    }
}

}  // namespace

bool parseHex(const std::string& text, std::vector<std::uint8_t>& bytes) {
    std::string digits;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '0' && i + 1 < text.size() && (text[i + 1] == 'x' || text[i + 1] == 'X')) {
            ++i;
            continue;
        }
        if (std::isxdigit(static_cast<unsigned char>(c))) {
            digits += c;
        } else if (c != ' ' && c != ',' && c != ':' && c != '\n' && c != '\t') {
            return false;
        }
    }
    if (digits.size() % 2 != 0) return false;
    bytes.clear();
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    }
    return true;
}

std::string hexDump(const std::vector<std::uint8_t>& bytes, const std::string& indent) {
    std::ostringstream out;
    char buffer[24];
    bool skipping = false;
    for (std::size_t offset = 0; offset < bytes.size(); offset += 16) {
        // Repeated full lines collapse into one "*", as in hexdump(1).
        const bool full = offset + 16 <= bytes.size();
        if (full && offset >= 16 && std::equal(bytes.begin() + offset, bytes.begin() + offset + 16, bytes.begin() + offset - 16)) {
            if (!skipping) out << indent << "*\n";
            skipping = true;
            continue;
        }
        skipping = false;
        std::snprintf(buffer, sizeof buffer, "%04zx", offset);
        out << indent << buffer << "  ";
        std::string ascii;
        for (std::size_t i = offset; i < offset + 16; ++i) {
            if (i < bytes.size()) {
                std::snprintf(buffer, sizeof buffer, "%02x ", bytes[i]);
                out << buffer;
                ascii += std::isprint(bytes[i]) ? static_cast<char>(bytes[i]) : '.';
            } else {
                out << "   ";
            }
            if (i == offset + 7) out << ' ';
        }
        out << " |" << ascii << "|\n";
    }
    return out.str();
}

void print(const Json& document, bool json, int jsonIndent) {
    if (json) {
        std::cout << document.dump(jsonIndent) << std::endl;
        return;
    }
    if (document.is_array()) {
        if (!document.empty() && document.front().is_object()) {
            printTable(document);
        } else {
            for (const auto& value : document) std::cout << cell(value) << '\n';
            if (document.empty()) std::cout << "(0 entries)\n";
        }
    } else if (document.is_object()) {
        printObject(document);
    } else {
        std::cout << cell(document) << '\n';
    }
    std::cout.flush();
}

}  // namespace cli
