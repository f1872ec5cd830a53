#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "sim/broadcast/TsInput.h"

namespace tessarine::broadcast {

// One comparison of a section filter: `value` against the section's bytes
// from `offset` on (offset 0 is the table_id byte), under `mask` (a missing
// mask byte is FF). `mode` serves the xor form only (a missing byte is 00).
struct Comparison {
    size_t offset = 0;
    Bytes value, mask, mode;
};

// The settings of one section filter. Each comparison that is set must hold:
//   table id   section[0] == id;
//   positive   every masked bit equals the value's;
//   greater    the masked bytes, read as one big-endian number, are greater
//              than the masked value; less-than likewise;
//   xor        bits whose mode bit is 1 must equal the value's, bits whose
//              mode bit is 0 must differ in at least one place (with an
//              empty mode: the masked bytes are not equal to the value).
// A comparison that reaches past the section's end does not hold.
struct FilterSettings {
    std::optional<uint8_t> tableId;
    std::optional<Comparison> positive, greater, less, exclusive;
};

bool sectionMatches(const FilterSettings& settings, const uint8_t* section, size_t length);

// A hardware-like section filter on one PID of a TsInput, with the demux
// facade's operations. A filter keeps the sections that match from the
// moment they are set, in a bounded queue (the oldest go first when full);
// read_section returns the next one whole, CRC included, waiting up to the
// time-out. Changing a setting empties the queue. stop() pauses the filter
// and empties it, start() resumes.
class SectionFilter final : private SectionSink {
public:
    static constexpr size_t QUEUE_LIMIT = 64;
    static constexpr long DEFAULT_TIMEOUT_MS = 1000;
    static constexpr long MAX_TIMEOUT_MS = 60000;

    explicit SectionFilter(TsInput& input);
    ~SectionFilter();
    SectionFilter(const SectionFilter&) = delete;
    SectionFilter& operator=(const SectionFilter&) = delete;

    void start();
    void stop();
    void set_pid(int pid);
    void set_table_id(int tableId);
    void set_positive_filter(int offset, const std::vector<unsigned char>& value,
                             const std::vector<unsigned char>& mask);
    void set_greater_than_filter(int offset, const std::vector<unsigned char>& value,
                                 const std::vector<unsigned char>& mask);
    void set_less_than_filter(int offset, const std::vector<unsigned char>& value,
                              const std::vector<unsigned char>& mask);
    void set_xor_filter(int offset, const std::vector<unsigned char>& value, const std::vector<unsigned char>& mask,
                        const std::vector<unsigned char>& mode);
    void set_time_out(long milliseconds);
    void clear_table_id();
    void clear_positive_filter();
    void clear_less_than_filter();
    void clear_xor_filter();
    std::vector<unsigned char> read_section();

    // While the reading client is absent a read does not wait: a waiting
    // read returns now, and later ones return at once until it is back.
    void setClientPresent(bool present);

private:
    bool offer(const uint8_t* section, size_t length) override;
    void change(const std::function<void(FilterSettings&)>& edit);

    TsInput& input_;
    std::mutex mutex_;
    std::condition_variable arrived_;
    FilterSettings settings_;
    int pid_ = -1;
    bool running_ = true;
    bool clientPresent_ = true;
    long timeoutMs_ = DEFAULT_TIMEOUT_MS;
    std::deque<Bytes> queue_;
};

}  // namespace tessarine::broadcast
