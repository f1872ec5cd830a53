#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace tessarine::broadcast {

// PIDs are 13 bits.
constexpr size_t PID_COUNT = 0x2000;

// Stands before the table decoders and keeps from them the sections of
// table versions they have already decoded whole. A multiplex repeats every
// table several times a second; a decoder drops such a repeat, but only
// after reassembling it, allocating it and checking its CRC, which was most
// of the input's work besides reading. A section is recognised by its
// header (table, extension, version, current/next) in the packet where it
// starts, as a receiver's section filter does, so a damaged copy of a
// version already decoded is passed over without being counted.
class RepeatGate {
public:
    RepeatGate();

    // Whether `packet` (of `pid`, with payload) must reach the decoders of
    // its PID; `idle` says that none of them holds part of a section. When
    // it must, `out` receives the packet with its continuity counter
    // renumbered: packets held back do not look like losses to the
    // decoders, while real losses and duplicates still do.
    bool admit(uint16_t pid, const uint8_t* packet, bool idle, uint8_t* out);

    // A decoder of `pid` has decoded this table version whole.
    void decoded(uint16_t pid, uint8_t tableId, uint16_t extension, uint8_t version, bool currentNext);
    // No decoder of `pid` takes this sub-table, whatever its version.
    void ignored(uint16_t pid, uint8_t tableId, uint16_t extension);
    // The decoders of `pid` changed or lost their tables: every section of
    // the PID reaches them again.
    void forget(uint16_t pid);

    // Table versions remembered at most; beyond it all are forgotten and
    // decoded once more. A hostile stream could otherwise name a new table
    // extension with every version.
    static constexpr size_t MAX_TABLES = 4096;

private:
    bool repeatsOnly(uint16_t pid, const uint8_t* packet) const;
    void remember(uint64_t key, uint8_t stamp);

    struct Continuity {
        bool seen = false;
        uint8_t last = 0;       // counter of the PID's last packet
        uint8_t presented = 0;  // counter of the last packet the decoders got
    };
    std::vector<Continuity> continuity_;  // by PID
    std::map<uint64_t, uint8_t> tables_;  // (PID, table, extension) -> stamp
};

}  // namespace tessarine::broadcast
