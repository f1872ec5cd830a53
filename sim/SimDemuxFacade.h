#pragma once

#include <memory>
#include <mutex>

#include "middlewarefacade/DemuxFacade.h"
#include "sim/RequestLog.h"
#include "sim/SectionSource.h"

namespace tessarine {
namespace sim {

// The section filter: keeps the PID and table id the application sets and
// reads matching sections from its source while started. The byte filters
// are accepted and logged; the source sees only the PID and table id.
class SimDemuxFacade final : public middlewarefacade::DemuxFacade {
public:
    SimDemuxFacade(std::unique_ptr<SectionSource> source, RequestLog& log) : source_(std::move(source)), log_(log) {}

    void setSource(std::unique_ptr<SectionSource> source);

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

private:
    std::mutex mutex_;
    std::unique_ptr<SectionSource> source_;
    SectionFilter filter_;
    bool started_ = false;
    RequestLog& log_;
};

}  // namespace sim
}  // namespace tessarine
