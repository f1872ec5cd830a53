#pragma once

#include "middlewarefacade/TunerFacade.h"
#include "sim/RequestLog.h"
#include "sim/Scenario.h"

namespace tessarine {
namespace sim {

// Tuner identifiers and channels, as the scenario gives them.
class SimTunerFacade final : public middlewarefacade::TunerFacade {
public:
    SimTunerFacade(TunerSettings settings, RequestLog& log) : settings_(std::move(settings)), log_(log) {}

    int getCurrentTransportStreamID() override;
    std::list<int> getIds2() override { return ids(TUNER_IDS_2, 0); }
    std::list<int> getIds1(int parameter) override { return ids(TUNER_IDS_1, parameter); }
    std::string getChannelName(int first, int second) override;
    int getVirtualChannelNumber(int first, int second) override;
    std::list<int> getIds3(int parameter) override { return ids(TUNER_IDS_3, parameter); }
    std::list<int> getIds4(int parameter) override { return ids(TUNER_IDS_4, parameter); }
    void reserved7() override {}
    void release() override {}

private:
    std::list<int> ids(int kind, int parameter);
    const TunerSettings::Channel* channel(int first, int second) const;

    const TunerSettings settings_;
    RequestLog& log_;
};

}  // namespace sim
}  // namespace tessarine
