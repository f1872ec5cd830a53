#include "sim/broadcast/SectionFilter.h"

#include <algorithm>
#include <chrono>

namespace tessarine::broadcast {

namespace {

uint8_t byteOr(const Bytes& bytes, size_t i, uint8_t otherwise) { return i < bytes.size() ? bytes[i] : otherwise; }

bool fits(const Comparison& c, size_t length) { return c.offset + c.value.size() <= length; }

bool positiveHolds(const Comparison& c, const uint8_t* s) {
    for (size_t i = 0; i < c.value.size(); ++i) {
        uint8_t mask = byteOr(c.mask, i, 0xFF);
        if ((s[c.offset + i] & mask) != (c.value[i] & mask)) return false;
    }
    return true;
}

// -1, 0 or 1 as the masked section bytes compare with the masked value,
// most significant byte first.
int compareMasked(const Comparison& c, const uint8_t* s) {
    for (size_t i = 0; i < c.value.size(); ++i) {
        uint8_t mask = byteOr(c.mask, i, 0xFF);
        int a = s[c.offset + i] & mask, b = c.value[i] & mask;
        if (a != b) return a < b ? -1 : 1;
    }
    return 0;
}

bool exclusiveHolds(const Comparison& c, const uint8_t* s) {
    bool anyNegative = false, differs = false;
    for (size_t i = 0; i < c.value.size(); ++i) {
        uint8_t mask = byteOr(c.mask, i, 0xFF), mode = byteOr(c.mode, i, 0x00);
        uint8_t diff = static_cast<uint8_t>((s[c.offset + i] ^ c.value[i]) & mask);
        if (diff & mode) return false;  // a bit that must be equal is not
        anyNegative |= (mask & ~mode) != 0;
        differs |= (diff & ~mode) != 0;
    }
    return !anyNegative || differs;
}

std::optional<Comparison> comparison(int offset, const Bytes& value, const Bytes& mask, const Bytes& mode = {}) {
    if (value.empty()) return std::nullopt;  // nothing to compare: the form is off
    return Comparison{static_cast<size_t>(std::max(offset, 0)), value, mask, mode};
}

}  // namespace

bool sectionMatches(const FilterSettings& f, const uint8_t* section, size_t length) {
    if (length == 0) return false;
    if (f.tableId && section[0] != *f.tableId) return false;
    for (const auto* c : {&f.positive, &f.greater, &f.less, &f.exclusive})
        if (*c && !fits(**c, length)) return false;
    if (f.positive && !positiveHolds(*f.positive, section)) return false;
    if (f.greater && compareMasked(*f.greater, section) <= 0) return false;
    if (f.less && compareMasked(*f.less, section) >= 0) return false;
    if (f.exclusive && !exclusiveHolds(*f.exclusive, section)) return false;
    return true;
}

SectionFilter::SectionFilter(TsInput& input) : input_(input) {}

SectionFilter::~SectionFilter() { input_.unsubscribe(this); }

void SectionFilter::start() {
    std::lock_guard<std::mutex> lock(mutex_);
    running_ = true;
}

void SectionFilter::stop() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        running_ = false;
        queue_.clear();
    }
    arrived_.notify_all();  // a read waiting on another thread returns now
}

void SectionFilter::set_pid(int pid) {
    // Subscribing takes the input's lock, which delivery holds while it
    // calls offer(): never hold our own lock across it.
    input_.unsubscribe(this);
    if (pid >= 0 && pid < 0x1FFF) input_.subscribe(static_cast<uint16_t>(pid), this);
    std::lock_guard<std::mutex> lock(mutex_);
    pid_ = pid >= 0 && pid < 0x1FFF ? pid : -1;
    queue_.clear();
}

void SectionFilter::change(const std::function<void(FilterSettings&)>& edit) {
    std::lock_guard<std::mutex> lock(mutex_);
    edit(settings_);
    queue_.clear();  // what was kept matched the old settings
}

void SectionFilter::set_table_id(int tableId) {
    change([&](FilterSettings& s) {
        s.tableId = tableId >= 0 && tableId <= 0xFF ? std::optional<uint8_t>(static_cast<uint8_t>(tableId))
                                                    : std::nullopt;
    });
}

void SectionFilter::set_positive_filter(int offset, const std::vector<unsigned char>& value,
                                        const std::vector<unsigned char>& mask) {
    change([&](FilterSettings& s) { s.positive = comparison(offset, value, mask); });
}

void SectionFilter::set_greater_than_filter(int offset, const std::vector<unsigned char>& value,
                                            const std::vector<unsigned char>& mask) {
    change([&](FilterSettings& s) { s.greater = comparison(offset, value, mask); });
}

void SectionFilter::set_less_than_filter(int offset, const std::vector<unsigned char>& value,
                                         const std::vector<unsigned char>& mask) {
    change([&](FilterSettings& s) { s.less = comparison(offset, value, mask); });
}

void SectionFilter::set_xor_filter(int offset, const std::vector<unsigned char>& value,
                                   const std::vector<unsigned char>& mask, const std::vector<unsigned char>& mode) {
    change([&](FilterSettings& s) { s.exclusive = comparison(offset, value, mask, mode); });
}

void SectionFilter::set_time_out(long milliseconds) {
    std::lock_guard<std::mutex> lock(mutex_);
    timeoutMs_ = std::clamp(milliseconds, 0L, MAX_TIMEOUT_MS);
}

void SectionFilter::clear_table_id() {
    change([](FilterSettings& s) { s.tableId.reset(); });
}

void SectionFilter::clear_positive_filter() {
    change([](FilterSettings& s) { s.positive.reset(); });
}

void SectionFilter::clear_less_than_filter() {
    change([](FilterSettings& s) { s.less.reset(); });
}

void SectionFilter::clear_xor_filter() {
    change([](FilterSettings& s) { s.exclusive.reset(); });
}

std::vector<unsigned char> SectionFilter::read_section() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!running_ || pid_ < 0 || !clientPresent_) return {};
    arrived_.wait_for(lock, std::chrono::milliseconds(timeoutMs_),
                      [this] { return !queue_.empty() || !running_ || !clientPresent_; });
    if (queue_.empty()) return {};
    Bytes section = std::move(queue_.front());
    queue_.pop_front();
    return section;
}

void SectionFilter::setClientPresent(bool present) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        clientPresent_ = present;
    }
    arrived_.notify_all();
}

bool SectionFilter::offer(const uint8_t* section, size_t length) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!running_ || !sectionMatches(settings_, section, length)) return true;
        bool dropped = queue_.size() >= QUEUE_LIMIT;
        if (dropped) queue_.pop_front();
        queue_.emplace_back(section, section + length);
        if (dropped) {
            arrived_.notify_one();
            return false;
        }
    }
    arrived_.notify_one();
    return true;
}

}  // namespace tessarine::broadcast
