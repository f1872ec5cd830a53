#include "sim/SimDemuxFacade.h"

#include <string>

namespace tessarine {
namespace sim {

namespace {

std::string bytesText(const std::vector<unsigned char>& bytes) { return std::to_string(bytes.size()) + " bytes"; }

std::string filterText(int value, const std::vector<unsigned char>& first, const std::vector<unsigned char>& second) {
    return "filter " + std::to_string(value) + ", " + bytesText(first) + ", " + bytesText(second);
}

// What a section filter can use: a 13-bit PID, an 8-bit table id, a time-out above 0.
constexpr int MAX_PID = 0x1FFF, MAX_TABLE_ID = 0xFF;
const char* const IGNORED = " (ignored: no filter can use it)";

}  // namespace

// The command numbers of the section-filter channel are the operations' positions.

void SimDemuxFacade::setSource(std::unique_ptr<SectionSource> source) {
    std::lock_guard<std::mutex> lock(mutex_);
    source_ = std::move(source);
}

void SimDemuxFacade::start() {
    log_.request(Family::Demux, DEMUX_START, "start");
    if (stream_) return stream_->start();
    std::lock_guard<std::mutex> lock(mutex_);
    started_ = true;
}

void SimDemuxFacade::stop() {
    log_.request(Family::Demux, DEMUX_STOP, "stop");
    if (stream_) return stream_->stop();
    std::lock_guard<std::mutex> lock(mutex_);
    started_ = false;
}

void SimDemuxFacade::set_pid(int pid) {
    const bool usable = pid >= 0 && pid <= MAX_PID;
    log_.request(Family::Demux, DEMUX_SET_PID, [&] { return "pid " + std::to_string(pid) + (usable ? "" : IGNORED); });
    if (!usable) return;
    if (stream_) return stream_->set_pid(pid);
    std::lock_guard<std::mutex> lock(mutex_);
    filter_.pid = pid;
}

void SimDemuxFacade::set_table_id(int tableId) {
    const bool usable = tableId >= 0 && tableId <= MAX_TABLE_ID;
    log_.request(Family::Demux, DEMUX_SET_TABLE_ID, [&] {
        return "table id " + std::to_string(tableId) + (usable ? "" : IGNORED);
    });
    if (!usable) return;
    if (stream_) return stream_->set_table_id(tableId);
    std::lock_guard<std::mutex> lock(mutex_);
    filter_.tableId = tableId;
}

void SimDemuxFacade::set_positive_filter(int value, const std::vector<unsigned char>& first,
                                         const std::vector<unsigned char>& second) {
    log_.request(Family::Demux, DEMUX_SET_POSITIVE_FILTER, [&] {
        return "positive " + filterText(value, first, second);
    });
    if (stream_) stream_->set_positive_filter(value, first, second);
}

void SimDemuxFacade::set_greater_than_filter(int value, const std::vector<unsigned char>& first,
                                             const std::vector<unsigned char>& second) {
    log_.request(Family::Demux, DEMUX_SET_GREATER_THAN_FILTER, [&] {
        return "greater-than " + filterText(value, first, second);
    });
    if (stream_) stream_->set_greater_than_filter(value, first, second);
}

void SimDemuxFacade::set_less_than_filter(int value, const std::vector<unsigned char>& first,
                                          const std::vector<unsigned char>& second) {
    log_.request(Family::Demux, DEMUX_SET_LESS_THAN_FILTER, [&] {
        return "less-than " + filterText(value, first, second);
    });
    if (stream_) stream_->set_less_than_filter(value, first, second);
}

void SimDemuxFacade::set_xor_filter(int value, const std::vector<unsigned char>& first,
                                    const std::vector<unsigned char>& second, const std::vector<unsigned char>& third) {
    log_.request(Family::Demux, DEMUX_SET_XOR_FILTER, [&] {
        return "xor " + filterText(value, first, second) + ", " + bytesText(third);
    });
    if (stream_) stream_->set_xor_filter(value, first, second, third);
}

void SimDemuxFacade::set_time_out(long timeout) {
    log_.request(Family::Demux, DEMUX_SET_TIME_OUT, [&] {
        return "time-out " + std::to_string(timeout) + (timeout > 0 ? "" : IGNORED);
    });
    if (stream_ && timeout > 0) stream_->set_time_out(timeout);
}

void SimDemuxFacade::clear_table_id() {
    log_.request(Family::Demux, DEMUX_CLEAR_TABLE_ID, "clear table id");
    if (stream_) return stream_->clear_table_id();
    std::lock_guard<std::mutex> lock(mutex_);
    filter_.tableId.reset();
}

void SimDemuxFacade::clear_positive_filter() {
    log_.request(Family::Demux, DEMUX_CLEAR_POSITIVE_FILTER, "clear positive filter");
    if (stream_) stream_->clear_positive_filter();
}

void SimDemuxFacade::clear_less_than_filter() {
    log_.request(Family::Demux, DEMUX_CLEAR_LESS_THAN_FILTER, "clear less-than filter");
    if (stream_) stream_->clear_less_than_filter();
}

void SimDemuxFacade::clear_xor_filter() {
    log_.request(Family::Demux, DEMUX_CLEAR_XOR_FILTER, "clear xor filter");
    if (stream_) stream_->clear_xor_filter();
}

void SimDemuxFacade::clientConnected() {
    if (stream_) stream_->setClientPresent(true);
}

void SimDemuxFacade::clientDisconnected() {
    if (stream_) stream_->setClientPresent(false);
}

void SimDemuxFacade::quiesce() {
    quiesced_ = true;
    if (stream_) stream_->stop();
}

std::vector<unsigned char> SimDemuxFacade::read_section() {
    std::vector<unsigned char> section;
    if (stream_) {
        // Waits up to the filter's time-out, outside our lock.
        if (!quiesced_) section = stream_->read_section();
    } else {
        std::lock_guard<std::mutex> lock(mutex_);
        if (started_ && source_) section = source_->next(filter_);
    }
    log_.request(Family::Demux, DEMUX_READ_SECTION, [&] { return "read section -> " + bytesText(section); });
    return section;
}

}  // namespace sim
}  // namespace tessarine
