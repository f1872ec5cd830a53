#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tessarine/FileDescriptor.h"

namespace tessarine {

// Lays out pcapng blocks in host byte order (the section header's magic tells
// readers which) and writes them to a file. Blocks are built in memory and
// leave in one write each batch, so a reader never sees half a block unless
// the system itself cut the write.
class PcapngWriter {
public:
    // The link types of the two channels: pcap's user-defined range.
    static constexpr std::uint16_t LINKTYPE_CONTROL = 147;   // LINKTYPE_USER0
    static constexpr std::uint16_t LINKTYPE_SECTIONS = 148;  // LINKTYPE_USER1
    // The epb_flags direction values.
    static constexpr std::uint32_t INBOUND = 1;
    static constexpr std::uint32_t OUTBOUND = 2;
    // The block types and option codes written (readers use them too).
    static constexpr std::uint32_t SECTION_HEADER = 0x0A0D0D0A;
    static constexpr std::uint32_t INTERFACE_DESCRIPTION = 1;
    static constexpr std::uint32_t INTERFACE_STATISTICS = 5;
    static constexpr std::uint32_t ENHANCED_PACKET = 6;
    static constexpr std::uint32_t BYTE_ORDER_MAGIC = 0x1A2B3C4D;
    static constexpr std::uint16_t OPT_END = 0;
    static constexpr std::uint16_t OPT_COMMENT = 1;
    static constexpr std::uint16_t IF_NAME = 2;
    static constexpr std::uint16_t EPB_FLAGS = 2;
    static constexpr std::uint16_t ISB_IFDROP = 5;
    // A length padded to the 32-bit boundary that blocks and options keep.
    static constexpr std::size_t padded(std::size_t length) { return (length + 3) & ~std::size_t{3}; }

    // Creates the file, or empties it; with `append`, adds to what it holds
    // (a new section header then starts a section of its own). False with
    // errno set when it cannot be opened.
    bool open(const std::string& path, bool append);
    void close();
    bool isOpen() const { return file_.valid(); }

    // Writes `blocks` whole; false with errno set on a failed or short write.
    bool write(const std::vector<unsigned char>& blocks);
    // The file's size: what it held when opened and what was written since.
    std::uint64_t bytesWritten() const { return written_; }

    static void addSectionHeader(std::vector<unsigned char>& out);
    static void addInterface(std::vector<unsigned char>& out, std::uint16_t linkType, std::uint32_t snapLength,
                             const std::string& name);
    // One enhanced packet block; `micros` since the epoch (if_tsresol 6).
    static void addPacket(std::vector<unsigned char>& out, std::uint32_t interface, std::uint64_t micros,
                          std::uint32_t direction, const unsigned char* data, std::size_t length);
    // An interface statistics block with isb_ifdrop and an opt_comment.
    static void addStatistics(std::vector<unsigned char>& out, std::uint32_t interface, std::uint64_t micros,
                              std::uint64_t dropped, const std::string& comment);
    // The size addPacket() gives a packet of `length` bytes.
    static std::size_t packetSize(std::size_t length);

private:
    FileDescriptor file_;
    std::uint64_t written_ = 0;
};

}  // namespace tessarine
