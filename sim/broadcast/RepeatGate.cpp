#include "sim/broadcast/RepeatGate.h"

#include <bitstream/mpeg/psi.h>
#include <bitstream/mpeg/ts.h>

#include <cstring>

namespace tessarine::broadcast {

namespace {

constexpr uint8_t ANY_VERSION = 0xFF;  // beyond any version << 1 | current_next

uint64_t keyOf(uint16_t pid, uint8_t tableId, uint16_t extension) {
    return uint64_t{pid} << 24 | uint64_t{tableId} << 16 | extension;
}

uint8_t stampOf(uint8_t version, bool currentNext) {
    return static_cast<uint8_t>((version & 0x1F) << 1 | (currentNext ? 1 : 0));
}

}  // namespace

RepeatGate::RepeatGate() : continuity_(PID_COUNT) {}

bool RepeatGate::admit(uint16_t pid, const uint8_t* packet, bool idle, uint8_t* out) {
    Continuity& c = continuity_[pid];
    const uint8_t cc = ts_get_cc(packet);
    const bool next = c.seen && cc == ((c.last + 1) & 0xF);
    const bool duplicate = c.seen && cc == c.last;
    if (next && idle && repeatsOnly(pid, packet)) {
        c.last = cc;
        return false;
    }
    if (!c.seen) c.presented = cc;
    else if (next) c.presented = (c.presented + 1) & 0xF;
    else if (!duplicate) {
        // A loss: the decoders are shown one (they drop what they had
        // gathered) and build their tables anew, so nothing is held back.
        c.presented = (c.presented + 2) & 0xF;
        forget(pid);
    }
    c.seen = true;
    c.last = cc;
    std::memcpy(out, packet, TS_SIZE);
    ts_set_cc(out, c.presented);
    return true;
}

// Idle decoders start reading at the pointer field and stop at stuffing;
// bytes before the pointer finish a section they never began.
bool RepeatGate::repeatsOnly(uint16_t pid, const uint8_t* packet) const {
    if (!ts_get_unitstart(packet)) return true;
    const uint8_t* const end = packet + TS_SIZE;
    const uint8_t* payload = ts_payload(const_cast<uint8_t*>(packet));  // only read
    if (payload >= end) return false;
    const uint8_t* section = payload + 1 + *payload;
    do {
        if (section >= end || end - section < PSI_HEADER_SIZE_SYNTAX1) return false;
        if (!psi_get_syntax(section)) return false;
        auto it = tables_.find(keyOf(pid, psi_get_tableid(section), psi_get_tableidext(section)));
        if (it == tables_.end()) return false;
        if (it->second != ANY_VERSION && it->second != stampOf(psi_get_version(section), psi_get_current(section)))
            return false;
        section += PSI_HEADER_SIZE + psi_get_length(section);
    } while (section < end && *section != 0xFF);
    return true;
}

void RepeatGate::decoded(uint16_t pid, uint8_t tableId, uint16_t extension, uint8_t version, bool currentNext) {
    remember(keyOf(pid, tableId, extension), stampOf(version, currentNext));
}

void RepeatGate::ignored(uint16_t pid, uint8_t tableId, uint16_t extension) {
    remember(keyOf(pid, tableId, extension), ANY_VERSION);
}

void RepeatGate::remember(uint64_t key, uint8_t stamp) {
    if (tables_.size() >= MAX_TABLES && tables_.find(key) == tables_.end()) tables_.clear();
    tables_[key] = stamp;
}

void RepeatGate::forget(uint16_t pid) {
    tables_.erase(tables_.lower_bound(keyOf(pid, 0, 0)), tables_.lower_bound(keyOf(pid + 1, 0, 0)));
}

}  // namespace tessarine::broadcast
