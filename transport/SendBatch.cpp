#include "tessarine/SendBatch.h"

namespace tessarine {

bool SendBatch::add(const message& record) {
    bytes_.insert(bytes_.end(), record.bytes(), record.bytes() + MESSAGE_SIZE);
    pieces_.push_back({bytes_.size(), false});
    return appended();
}

bool SendBatch::addRaw(const void* data, std::size_t length) {
    const auto* begin = static_cast<const unsigned char*>(data);
    bytes_.insert(bytes_.end(), begin, begin + length);
    pieces_.push_back({bytes_.size(), true});
    return appended();
}

void SendBatch::clear() {
    bytes_.clear();
    pieces_.clear();
}

}  // namespace tessarine
