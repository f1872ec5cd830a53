#include "CaptureReader.h"

#include <cstring>
#include <fstream>
#include <iterator>

#include "transport/PcapngWriter.h"

namespace cli {

using tessarine::PcapngWriter;

template <typename T>
T CaptureReader::read(std::size_t at) const {
    T value{};
    std::memcpy(&value, data_.data() + at, sizeof value);
    return value;
}

bool CaptureReader::open(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error_ = "cannot open " + path;
        return false;
    }
    data_.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (data_.size() < 12 || read<std::uint32_t>(0) != PcapngWriter::SECTION_HEADER) {
        error_ = path + " is not a pcapng file";
        return false;
    }
    if (read<std::uint32_t>(8) != PcapngWriter::BYTE_ORDER_MAGIC) {
        error_ = path + " was written on a host of the other byte order";
        return false;
    }
    return true;
}

void CaptureReader::readOptions(std::size_t at, std::size_t end, CaptureBlock& block) const {
    while (at + 4 <= end) {
        const auto code = read<std::uint16_t>(at), length = read<std::uint16_t>(at + 2);
        at += 4;
        if (code == PcapngWriter::OPT_END || at + length > end) return;
        if (code == PcapngWriter::OPT_COMMENT) block.comment.assign(reinterpret_cast<const char*>(data_.data() + at), length);
        if (block.kind == CaptureBlock::PACKET && code == PcapngWriter::EPB_FLAGS && length == 4) block.direction = read<std::uint32_t>(at) & 3;
        if (block.kind == CaptureBlock::STATISTICS && code == PcapngWriter::ISB_IFDROP && length == 8) block.dropped = read<std::uint64_t>(at);
        at += PcapngWriter::padded(length);
    }
}

bool CaptureReader::next(CaptureBlock& block) {
    while (position_ + 12 <= data_.size()) {
        const auto type = read<std::uint32_t>(position_);
        const auto length = read<std::uint32_t>(position_ + 4);
        if (length < 12 || length % 4 != 0 || position_ + length > data_.size()) break;
        const std::size_t body = position_ + 8, end = position_ + length - 4;
        position_ += length;
        if (type == PcapngWriter::SECTION_HEADER) linkTypes_.clear();  // interfaces are numbered per section
        if (type == PcapngWriter::INTERFACE_DESCRIPTION && body + 2 <= end) linkTypes_.push_back(read<std::uint16_t>(body));
        if (type != PcapngWriter::ENHANCED_PACKET && type != PcapngWriter::INTERFACE_STATISTICS) continue;
        if (body + 12 > end) break;
        block = CaptureBlock{};
        block.kind = type == PcapngWriter::ENHANCED_PACKET ? CaptureBlock::PACKET : CaptureBlock::STATISTICS;
        block.interface = read<std::uint32_t>(body);
        if (block.interface < linkTypes_.size()) block.linkType = linkTypes_[block.interface];
        block.micros = (std::uint64_t{read<std::uint32_t>(body + 4)} << 32) | read<std::uint32_t>(body + 8);
        std::size_t options = body + 12;
        if (type == PcapngWriter::ENHANCED_PACKET) {
            if (body + 20 > end) break;
            const auto captured = read<std::uint32_t>(body + 12);
            if (body + 20 + captured > end) break;
            block.bytes.assign(data_.begin() + static_cast<std::ptrdiff_t>(body + 20),
                               data_.begin() + static_cast<std::ptrdiff_t>(body + 20 + captured));
            options = body + 20 + PcapngWriter::padded(captured);
        }
        readOptions(options, end, block);
        return true;
    }
    if (position_ < data_.size()) error_ = "block cut short at byte " + std::to_string(position_);
    return false;
}

}  // namespace cli
