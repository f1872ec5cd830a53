#pragma once

#include <memory>
#include <string>

#include "sim/broadcast/SectionFilter.h"
#include "sim/broadcast/SiModel.h"
#include "sim/broadcast/TsInput.h"
#include "sim/broadcast/TsReader.h"

namespace tessarine::broadcast {

// A transport stream read from a source, decoded into SI, with section
// filters on it: what the simulator's SI and demux facades answer from.
class Broadcast {
public:
    Broadcast() : input_(model_), reader_(input_) {}

    bool open(const std::string& source, Pace pace, std::string& error) {
        return reader_.start(source, pace, error);
    }
    void close() { reader_.stop(); }

    SiModel& si() { return model_; }
    TsInput& input() { return input_; }
    TsReader& reader() { return reader_; }
    std::unique_ptr<SectionFilter> newFilter() { return std::make_unique<SectionFilter>(input_); }

    // One line for the console's status.
    std::string status() const;

private:
    SiModel model_;
    TsInput input_;
    TsReader reader_;
};

}  // namespace tessarine::broadcast
