#pragma once

#include <vector>

#include "middlewarefacade/FacadeExport.h"

namespace middlewarefacade {

// The host's section-filter facade. Positions 0-13 mirror the demux
// channel's commands; positions are the binary contract.
class MIDDLEWAREFACADE_API DemuxFacade {
public:
    static DemuxFacade* createDemuxFacade();

    virtual void start() = 0;                                          // 0
    virtual void stop() = 0;                                           // 1
    virtual void set_pid(int pid) = 0;                                 // 2
    virtual void set_table_id(int tableId) = 0;                        // 3
    virtual void set_positive_filter(int value, const std::vector<unsigned char>& first,
                                     const std::vector<unsigned char>& second) = 0;  // 4
    virtual void set_greater_than_filter(int value, const std::vector<unsigned char>& first,
                                         const std::vector<unsigned char>& second) = 0;  // 5
    virtual void set_less_than_filter(int value, const std::vector<unsigned char>& first,
                                      const std::vector<unsigned char>& second) = 0;  // 6
    virtual void set_xor_filter(int value, const std::vector<unsigned char>& first,
                                const std::vector<unsigned char>& second,
                                const std::vector<unsigned char>& third) = 0;  // 7
    virtual void set_time_out(long timeout) = 0;                       // 8
    virtual void clear_table_id() = 0;                                 // 9
    virtual void clear_positive_filter() = 0;                          // 10
    virtual void clear_less_than_filter() = 0;                         // 11
    virtual void clear_xor_filter() = 0;                               // 12
    virtual std::vector<unsigned char> read_section() = 0;             // 13
    virtual void reserved14() = 0;                                     // 14, never called
    virtual void release() = 0;                                        // 15

protected:
    ~DemuxFacade() = default;
};

}  // namespace middlewarefacade
