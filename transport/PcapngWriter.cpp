#include "transport/PcapngWriter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tessarine {

namespace {

template <typename T>
void put(std::vector<unsigned char>& out, T value) {
    unsigned char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    out.insert(out.end(), bytes, bytes + sizeof value);
}

void putBytes(std::vector<unsigned char>& out, const void* data, std::size_t length) {
    const auto* begin = static_cast<const unsigned char*>(data);
    out.insert(out.end(), begin, begin + length);
    out.resize(out.size() + PcapngWriter::padded(length) - length, 0);
}

void putOption(std::vector<unsigned char>& out, std::uint16_t code, const void* value, std::size_t length) {
    put(out, code);
    put(out, static_cast<std::uint16_t>(length));
    putBytes(out, value, length);
}

// A block: its type and a length patched in once the body is written, and
// the same length again at the end.
class Block {
public:
    Block(std::vector<unsigned char>& out, std::uint32_t type) : out_(out), start_(out.size()) {
        put(out_, type);
        put(out_, std::uint32_t{0});
    }
    ~Block() {
        const auto length = static_cast<std::uint32_t>(out_.size() - start_ + sizeof(std::uint32_t));
        std::memcpy(out_.data() + start_ + sizeof(std::uint32_t), &length, sizeof length);
        put(out_, length);
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;

private:
    std::vector<unsigned char>& out_;
    std::size_t start_;
};

void putTimestamp(std::vector<unsigned char>& out, std::uint64_t micros) {
    put(out, static_cast<std::uint32_t>(micros >> 32));
    put(out, static_cast<std::uint32_t>(micros));
}

}  // namespace

bool PcapngWriter::open(const std::string& path, bool append) {
    const int mode = append ? O_APPEND : O_TRUNC;
    file_.reset(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | mode, 0644));
    struct stat status {};
    written_ = file_.valid() && ::fstat(file_.get(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
    return file_.valid();
}

void PcapngWriter::close() { file_.reset(); }

bool PcapngWriter::write(const std::vector<unsigned char>& blocks) {
    std::size_t done = 0;
    while (done < blocks.size()) {
        const ssize_t n = ::write(file_.get(), blocks.data() + done, blocks.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            if (n == 0) errno = ENOSPC;
            return false;
        }
        done += static_cast<std::size_t>(n);
        written_ += static_cast<std::uint64_t>(n);
    }
    return true;
}

void PcapngWriter::addSectionHeader(std::vector<unsigned char>& out) {
    Block block(out, SECTION_HEADER);
    put(out, BYTE_ORDER_MAGIC);
    put(out, std::uint16_t{1});  // version 1.0
    put(out, std::uint16_t{0});
    put(out, std::int64_t{-1});  // section length not given
    putOption(out, OPT_END, nullptr, 0);
}

void PcapngWriter::addInterface(std::vector<unsigned char>& out, std::uint16_t linkType, std::uint32_t snapLength,
                                const std::string& name) {
    Block block(out, INTERFACE_DESCRIPTION);
    put(out, linkType);
    put(out, std::uint16_t{0});
    put(out, snapLength);
    putOption(out, IF_NAME, name.data(), name.size());
    putOption(out, OPT_END, nullptr, 0);  // if_tsresol left at its default: microseconds
}

void PcapngWriter::addPacket(std::vector<unsigned char>& out, std::uint32_t interface, std::uint64_t micros,
                             std::uint32_t direction, const unsigned char* data, std::size_t length) {
    Block block(out, ENHANCED_PACKET);
    put(out, interface);
    putTimestamp(out, micros);
    put(out, static_cast<std::uint32_t>(length));  // captured
    put(out, static_cast<std::uint32_t>(length));  // original
    putBytes(out, data, length);
    putOption(out, EPB_FLAGS, &direction, sizeof direction);
    putOption(out, OPT_END, nullptr, 0);
}

std::size_t PcapngWriter::packetSize(std::size_t length) { return 32 + padded(length) + 12; }

void PcapngWriter::addStatistics(std::vector<unsigned char>& out, std::uint32_t interface, std::uint64_t micros,
                                 std::uint64_t dropped, const std::string& comment) {
    Block block(out, INTERFACE_STATISTICS);
    put(out, interface);
    putTimestamp(out, micros);
    if (!comment.empty()) putOption(out, OPT_COMMENT, comment.data(), comment.size());
    putOption(out, ISB_IFDROP, &dropped, sizeof dropped);
    putOption(out, OPT_END, nullptr, 0);
}

}  // namespace tessarine
