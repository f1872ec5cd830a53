// The section-filter channel: a section read through DemuxClient, the
// socket, the demux server, the adapter and the simulator's demux facade,
// against a raw request and answer of the same sizes.
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "bench/BridgeHost.h"
#include "bench/Cases.h"
#include "bench/Measurement.h"
#include "bench/RawPeer.h"
#include "sim/ScenarioSections.h"
#include "tessarine/client/DemuxClient.h"

namespace tessarine {
namespace bench {

namespace {

constexpr std::int32_t READ_SECTION = 13;
constexpr int SECTION_PID = 0x100;

void reportSections(benchmark::State& state, std::size_t length, Measurement& measurement) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(length));
    measurement.finish(static_cast<double>(state.iterations()), "section");
}

void bridgeSection(benchmark::State& state) {
    const auto length = static_cast<std::size_t>(state.range(0));
    std::vector<unsigned char> data(length, 0x5a);
    data[0] = 0x42;  // the table id
    BridgeHost::instance().simulator().demux().setSource(
        std::make_unique<sim::ScenarioSections>(std::vector<sim::Section>{{SECTION_PID, data}}));
    client::DemuxOptions options;
    options.socketPath = BridgeHost::instance().demuxSocket();
    client::DemuxClient demux(options);
    if (!demux.setPid(SECTION_PID) || !demux.start()) {
        state.SkipWithError("the bridge does not take filter commands");
        return;
    }
    Measurement measurement(state, true);
    bool ok = true;
    for (auto _ : state) {
        measurement.time([&] {
            const auto section = demux.readSection();
            ok = ok && section.ok() && (*section).size() == length;
        });
    }
    if (!ok) state.SkipWithError("a section came back wrong");
    if (!demux.stop().ok()) state.SkipWithError("the filter did not stop");
    reportSections(state, length, measurement);
}

void rawSection(benchmark::State& state) {
    const auto length = static_cast<std::size_t>(state.range(0));
    const auto word = static_cast<std::int32_t>(length);
    std::vector<unsigned char> answer(sizeof word + length, 0x5a);
    std::memcpy(answer.data(), &word, sizeof word);
    RawPeer peer(sizeof READ_SECTION, answer);
    Measurement measurement(state, true);
    for (auto _ : state) {
        measurement.time([&] {
            RawPeer::sendAll(peer.fd(), &READ_SECTION, sizeof READ_SECTION);
            RawPeer::receiveAll(peer.fd(), answer.data(), answer.size());
        });
    }
    reportSections(state, length, measurement);
}

}  // namespace

void registerDemuxCases(bool smoke) {
    for (const int length : {188, 1024, 4096}) {
        registerCase(smoke, "section/bridge", bridgeSection)->Arg(length);
        registerCase(smoke, "section/raw", rawSection)->Arg(length);
    }
}

}  // namespace bench
}  // namespace tessarine
