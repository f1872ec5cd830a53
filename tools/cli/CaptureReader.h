#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace cli {

// One block of a capture that the decoder shows: a packet, or the closing
// statistics of an interface.
struct CaptureBlock {
    enum Kind { PACKET, STATISTICS } kind = PACKET;
    std::uint32_t interface = 0;
    std::uint16_t linkType = 0;
    std::uint64_t micros = 0;      // since the epoch
    std::uint32_t direction = 0;   // epb_flags bits 0-1: 1 inbound, 2 outbound
    std::vector<std::uint8_t> bytes;
    std::string comment;
    std::uint64_t dropped = 0;     // isb_ifdrop
};

// Reads a pcapng file written in this host's byte order, block by block.
class CaptureReader {
public:
    bool open(const std::string& path);
    // The next packet or statistics block; false at the end or at a block
    // cut short (error() then says so).
    bool next(CaptureBlock& block);
    const std::string& error() const { return error_; }

private:
    template <typename T>
    T read(std::size_t at) const;
    void readOptions(std::size_t at, std::size_t end, CaptureBlock& block) const;

    std::vector<std::uint8_t> data_;
    std::size_t position_ = 0;
    std::vector<std::uint16_t> linkTypes_;
    std::string error_;
};

}  // namespace cli
