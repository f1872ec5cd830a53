#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "middlewarefacade/DemuxFacade.h"
#include "sim/RequestLog.h"
#include "sim/SectionSource.h"
#include "sim/broadcast/SectionFilter.h"
#include "tessarine/ConnectionListener.h"

namespace tessarine {
namespace sim {

// The section filter: keeps the PID and table id the application sets and
// reads matching sections from its source while started. The byte filters
// are accepted and logged; the source sees only the PID and table id.
// With a transport stream every operation goes to a filter on that stream
// instead, byte filters and time-out included. A PID, table id or time-out
// that no filter can use (as a cut command may carry) is logged and ignored.
// As the bridge's demux connection listener it ends a read's wait when the
// reading client has gone.
class SimDemuxFacade final : public middlewarefacade::DemuxFacade, public ConnectionListener {
public:
    SimDemuxFacade(std::unique_ptr<SectionSource> source, RequestLog& log) : source_(std::move(source)), log_(log) {}

    void setSource(std::unique_ptr<SectionSource> source);
    // Set before the bridge can call in; the filter stays until the facade goes.
    void useStream(std::unique_ptr<broadcast::SectionFilter> filter) { stream_ = std::move(filter); }
    // Releases a read waiting on the stream, and every later one, so that
    // the bridge's demux thread can stop.
    void quiesce();

    void start() override;
    void stop() override;
    void set_pid(int pid) override;
    void set_table_id(int tableId) override;
    void set_positive_filter(int value, const std::vector<unsigned char>& first,
                             const std::vector<unsigned char>& second) override;
    void set_greater_than_filter(int value, const std::vector<unsigned char>& first,
                                 const std::vector<unsigned char>& second) override;
    void set_less_than_filter(int value, const std::vector<unsigned char>& first,
                              const std::vector<unsigned char>& second) override;
    void set_xor_filter(int value, const std::vector<unsigned char>& first, const std::vector<unsigned char>& second,
                        const std::vector<unsigned char>& third) override;
    void set_time_out(long timeout) override;
    void clear_table_id() override;
    void clear_positive_filter() override;
    void clear_less_than_filter() override;
    void clear_xor_filter() override;
    std::vector<unsigned char> read_section() override;
    void reserved14() override {}
    void release() override {}

    void clientConnected() override;
    void clientDisconnected() override;

private:
    std::mutex mutex_;
    std::unique_ptr<SectionSource> source_;
    SectionFilter filter_;
    bool started_ = false;
    std::unique_ptr<broadcast::SectionFilter> stream_;
    std::atomic<bool> quiesced_{false};
    RequestLog& log_;
};

}  // namespace sim
}  // namespace tessarine
