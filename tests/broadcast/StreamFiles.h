#pragma once

// Test helpers: the checked-in streams, the generator's manifests, and the
// sections of a file as biTStream's assembler (not the code under test)
// finds them.

#include <bitstream/mpeg/psi.h>
#include <bitstream/mpeg/ts.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "sim/broadcast/TsInput.h"
#include "support/Command.h"

namespace tessarine::broadcast::test {

inline std::string dataFile(const std::string& name) { return std::string(TESSARINE_TEST_DATA) + "/" + name; }

inline Bytes readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

// Feeds in odd-sized pieces so that packets straddle the pieces.
inline void feedAll(TsInput& input, const Bytes& bytes, size_t piece = 1000) {
    for (size_t at = 0; at < bytes.size(); at += piece)
        input.feed(bytes.data() + at, std::min(piece, bytes.size() - at));
}

inline std::vector<std::vector<std::string>> manifest(const std::string& name) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream in(dataFile(name));
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::vector<std::string> row;
        std::stringstream fields(line);
        for (std::string f; std::getline(fields, f, '\t');) row.push_back(f);
        rows.push_back(row);
    }
    return rows;
}

// Every distinct whole section of `pid` with `tableId` in the file.
inline std::set<Bytes> sectionsInFile(const Bytes& ts, uint16_t pid, uint8_t tableId) {
    std::set<Bytes> found;
    uint8_t* buffer = nullptr;
    uint16_t used = 0;
    psi_assemble_init(&buffer, &used);
    auto take = [&](uint8_t* section) {
        if (section && psi_get_tableid(section) == tableId)
            found.emplace(section, section + psi_get_length(section) + PSI_HEADER_SIZE);
        free(section);
    };
    for (size_t at = 0; at + TS_SIZE <= ts.size(); at += TS_SIZE) {
        const uint8_t* p = ts.data() + at;
        if (ts_get_pid(p) != pid || !ts_has_payload(p)) continue;
        const uint8_t* payload = ts_section(const_cast<uint8_t*>(p));
        uint8_t length = static_cast<uint8_t>(p + TS_SIZE - payload);
        if (!psi_assemble_empty(&buffer, &used)) take(psi_assemble_payload(&buffer, &used, &payload, &length));
        payload = ts_next_section(const_cast<uint8_t*>(p));
        length = static_cast<uint8_t>(p + TS_SIZE - payload);
        while (length) take(psi_assemble_payload(&buffer, &used, &payload, &length));
    }
    psi_assemble_reset(&buffer, &used);
    return found;
}

// Standard output of a command, or empty when it cannot run.
inline std::string commandOutput(const std::string& command) { return testing::runCommand(command).out; }

}  // namespace tessarine::broadcast::test
