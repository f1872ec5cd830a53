// The control channel: the application's call through the client library,
// the socket, the hub, the adapter and the simulator's facades, and back;
// each against raw records over the same kind of socket.
#include <array>
#include <cstdio>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "MiddlewareIpc.h"
#include "bench/BridgeHost.h"
#include "bench/Cases.h"
#include "bench/CountDown.h"
#include "bench/Measurement.h"
#include "bench/RawPeer.h"
#include "bench/ThreadPlacement.h"
#include "middlewarefacade/SIFacade.h"
#include "tessarine/IpcServerManager.h"
#include "tessarine/client/ControlClient.h"
#include "tessarine/message.h"

namespace tessarine {
namespace bench {

namespace {

using client::ControlClient;

constexpr int HOST_THREADS = 4;
constexpr auto PATIENCE = std::chrono::seconds(30);
// Trailing data of each program event: 16 bytes and two strings of 8.
constexpr std::size_t EVENT_BYTES = 16;
constexpr std::size_t EVENT_STRINGS = 2;
constexpr std::size_t EVENT_STRING_LENGTH = 8;
constexpr std::size_t EVENT_TRAILING = EVENT_BYTES + EVENT_STRINGS * (4 + EVENT_STRING_LENGTH);

// A client of the in-process bridge, already served (a call went through),
// or null with the run marked failed.
std::unique_ptr<ControlClient> servedClient(benchmark::State& state) {
    client::ClientOptions options;
    options.socketPath = BridgeHost::instance().controlSocket();
    options.timeout = PATIENCE;
    auto control = std::make_unique<ControlClient>(options);
    if (!control->checkVersion(1)) {
        state.SkipWithError("the bridge does not answer");
        return nullptr;
    }
    return control;
}

// ---- One-record calls ----

template <typename Call>
void bridgeCall(benchmark::State& state, Call call) {
    auto control = servedClient(state);
    if (!control) return;
    Measurement measurement(state, true);
    bool ok = true;
    for (auto _ : state) measurement.time([&] { ok = call(*control) && ok; });
    if (!ok) state.SkipWithError("a call failed");
    measurement.finish(static_cast<double>(state.iterations()), "call");
}

// A case with the capture on: what the tap costs it. The limit is high
// enough that the capture lasts the whole measurement; the records written
// and dropped are reported on stderr when it ends.
void captured(benchmark::State& state, void (*run)(benchmark::State&)) {
    const std::string file = BridgeHost::instance().directory() + "/bench.pcapng";
    IpcServerManager* hub = IpcServerManager::getInstance();
    if (!hub->startCapture(file, std::uint64_t{4} << 30)) {
        state.SkipWithError("the capture did not start");
        return;
    }
    run(state);
    hub->stopCapture();
    std::remove(file.c_str());
}

// A case with its threads in a fixed layout: the work of the two ends
// without the scheduler's choice of processors, which changes from run to run.
void placed(benchmark::State& state, ThreadPlacement::Layout layout, void (*run)(benchmark::State&)) {
    ThreadPlacement placement(layout);
    if (!placement.placed()) {
        state.SkipWithError("the threads could not be placed");
        return;
    }
    run(state);
    if (!placement.placed()) state.SkipWithError("the threads could not be placed");
}

bool versionOnce(ControlClient& control) { return control.checkVersion(1).ok(); }

void versionCall(benchmark::State& state) { bridgeCall(state, versionOnce); }

// One raw round trip: the record out, the same size back.
void rawOnce(RawPeer& peer, message& record) {
    RawPeer::sendAll(peer.fd(), record.bytes(), MESSAGE_SIZE);
    RawPeer::receiveAll(peer.fd(), record.bytes(), MESSAGE_SIZE);
}

void rawCall(benchmark::State& state) {
    RawPeer peer(MESSAGE_SIZE, std::vector<unsigned char>(MESSAGE_SIZE));
    message record;
    record.clear();
    Measurement measurement(state, true);
    for (auto _ : state) measurement.time([&] { rawOnce(peer, record); });
    measurement.finish(static_cast<double>(state.iterations()), "call");
}

// The version call and the raw ping-pong in turns, a few dozen of each at a
// time, within one repetition. This kind of virtual machine changes state
// every few seconds to minutes (a round trip across processors then takes
// about twice as long); taking turns, both see the same states, so their
// ratio holds whichever the run found.
void alternatingCall(benchmark::State& state) {
    constexpr int TURN = 64;  // about 2 ms: far shorter than a state lasts
    auto control = servedClient(state);
    if (!control) return;
    RawPeer peer(MESSAGE_SIZE, std::vector<unsigned char>(MESSAGE_SIZE));
    message record;
    record.clear();
    Measurement bridge(state, true);
    Measurement raw(state, true, "raw_");
    bool ok = true;
    for (auto _ : state) {
        bridge.timeTurn(TURN, [&] { ok = versionOnce(*control) && ok; });
        raw.timeTurn(TURN, [&] { rawOnce(peer, record); });
    }
    if (!ok) state.SkipWithError("a call failed");
    const double calls = static_cast<double>(state.iterations()) * TURN;
    bridge.finish(calls, "call");
    raw.finish(calls, "call");
}

// ---- List answers ----

middlewarefacade::Service_ service(int i) {
    return {i, 1089, 1, "Service " + std::to_string(i), 1, 0, "Provider"};
}

middlewarefacade::ProgramEvent_ programEvent(int i) {
    middlewarefacade::ProgramEvent_ event{};
    event.value0 = 1;
    event.value1 = i;
    event.value2 = 1200 + i;
    event.value3 = 1800;
    event.text0 = "Event " + std::to_string(i);
    event.text1 = "What happens in it";
    event.text2 = "por";
    event.value4 = 1;
    event.bytes0.assign(EVENT_BYTES, 0x4d);
    event.strings0.assign(EVENT_STRINGS, std::string(EVENT_STRING_LENGTH, 'x'));
    return event;
}

enum class ListKind { Services, ProgramEvents };

// Bytes of the whole answer: list header, items, trailing data.
std::size_t answerBytes(ListKind kind, std::size_t items) {
    return (items + 1) * MESSAGE_SIZE + (kind == ListKind::ProgramEvents ? items * EVENT_TRAILING : 0);
}

void reportList(benchmark::State& state, ListKind kind, std::size_t items, Measurement& measurement) {
    const auto iterations = static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(items));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(answerBytes(kind, items)));
    measurement.finish(iterations * static_cast<double>(items), "item");
}

// The simulator's tables hold `items` of the kind, and nothing else.
void fillTables(ListKind kind, std::size_t items) {
    sim::SiTables tables;
    for (std::size_t i = 0; i < items; ++i) {
        if (kind == ListKind::Services) tables.services.push_back(service(static_cast<int>(i)));
        if (kind == ListKind::ProgramEvents) tables.programEvents.push_back(programEvent(static_cast<int>(i)));
    }
    BridgeHost::instance().simulator().si().replace(std::move(tables));
}

void bridgeList(benchmark::State& state, ListKind kind) {
    const auto items = static_cast<std::size_t>(state.range(0));
    fillTables(kind, items);
    auto control = servedClient(state);
    if (!control) return;
    Measurement measurement(state);
    bool ok = true;
    for (auto _ : state) {
        if (kind == ListKind::Services) {
            const auto answer = control->services();
            ok = ok && answer.ok() && (*answer).size() == items;
        } else {
            const auto answer = control->programEvents();
            ok = ok && answer.ok() && (*answer).size() == items;
        }
    }
    if (!ok) state.SkipWithError("a list came back short");
    reportList(state, kind, items, measurement);
}

void rawList(benchmark::State& state, ListKind kind) {
    const auto items = static_cast<std::size_t>(state.range(0));
    RawPeer peer(MESSAGE_SIZE, std::vector<unsigned char>(answerBytes(kind, items)));
    message request;
    request.clear();
    std::vector<unsigned char> answer(answerBytes(kind, items));
    Measurement measurement(state);
    for (auto _ : state) {
        RawPeer::sendAll(peer.fd(), request.bytes(), MESSAGE_SIZE);
        RawPeer::receiveAll(peer.fd(), answer.data(), answer.size());
    }
    reportList(state, kind, items, measurement);
}

// The host's own part of a list answer: the facade's by-value list, which
// the bridge must fetch whole before it can send anything. Raw's time plus
// this is the least any bridge on this facade can take.
void hostList(benchmark::State& state, ListKind kind) {
    const auto items = static_cast<std::size_t>(state.range(0));
    fillTables(kind, items);
    middlewarefacade::SIFacade& facade = BridgeHost::instance().simulator().si();
    Measurement measurement(state);
    for (auto _ : state) {
        if (kind == ListKind::Services) {
            benchmark::DoNotOptimize(facade.getServices());
        } else {
            benchmark::DoNotOptimize(facade.getProgramEvents());
        }
    }
    reportList(state, kind, items, measurement);
}

// ---- Events ----

// Host threads each deliver `perThread` notices, stream events and
// graphics changes in turn, as fast as they can.
template <typename Deliver>
void fromHostThreads(std::int64_t perThread, Deliver deliver) {
    std::array<std::thread, HOST_THREADS> threads;
    for (auto& thread : threads) {
        thread = std::thread([&] {
            for (std::int64_t i = 0; i < perThread; ++i) deliver(i % 2 == 0);
        });
    }
    for (auto& thread : threads) thread.join();
}

void reportEvents(benchmark::State& state, std::int64_t total, Measurement& measurement) {
    state.SetItemsProcessed(state.iterations() * total);
    measurement.finish(static_cast<double>(state.iterations() * total), "event");
}

void bridgeEvents(benchmark::State& state) {
    const std::int64_t perThread = state.range(0), total = perThread * HOST_THREADS;
    auto control = servedClient(state);
    if (!control) return;
    CountDown delivered;
    control->onDsmccCommand([&](const client::DsmccCommand&) { delivered.add(); });
    control->onGraphicsSettings([&](const client::GraphicsSettings&) { delivered.add(); });
    MiddlewareIpc& adapter = BridgeHost::instance().adapter();
    const ipcutil::DsmCCCommand_t command{1, 42, 0, "start(document=main.ncl)"};
    const ipcutil::Rectangle_t first{0, 0, 1280, 720}, second{0, 0, 1920, 1080};
    Measurement measurement(state);
    for (auto _ : state) {
        delivered.expect(static_cast<std::uint64_t>(total));
        fromHostThreads(perThread, [&](bool streamEvent) {
            if (streamEvent) {
                adapter.commandReceived(command);
            } else {
                adapter.graphicsSettingsChanged(first, second);
            }
        });
        if (!delivered.wait(PATIENCE)) state.SkipWithError("events were lost");
    }
    reportEvents(state, total, measurement);
}

void rawEvents(benchmark::State& state) {
    const std::int64_t perThread = state.range(0), total = perThread * HOST_THREADS;
    RawPeer peer(0, {});
    std::mutex sendLock;  // a record leaves whole, as under the bridge's send lock
    message record;
    record.clear();
    Measurement measurement(state);
    for (auto _ : state) {
        peer.received().expect(static_cast<std::uint64_t>(total) * MESSAGE_SIZE);
        fromHostThreads(perThread, [&](bool) {
            message own = record;
            std::lock_guard<std::mutex> lock(sendLock);
            RawPeer::sendAll(peer.fd(), own.bytes(), MESSAGE_SIZE);
        });
        if (!peer.received().wait(PATIENCE)) state.SkipWithError("records were lost");
    }
    reportEvents(state, total, measurement);
}

}  // namespace

void registerControlCases(bool smoke) {
    registerCase(smoke, "call/version/bridge", versionCall);
    registerCase(smoke, "call/property/bridge", bridgeCall<bool (*)(ControlClient&)>,
                 [](ControlClient& c) { return c.systemProperty("system.language").ok(); });
    registerCase(smoke, "call/version/captured", captured, versionCall);
    registerCase(smoke, "call/raw", rawCall);
    registerCase(smoke, "call/alternating", alternatingCall);
    using Layout = ThreadPlacement::Layout;
    for (const auto& [name, layout] : {std::pair{"one_processor", Layout::OneProcessor},
                                       std::pair{"ends_apart", Layout::EndsApart}}) {
        if (!ThreadPlacement::possible(layout)) continue;  // a single processor has no second one
        registerCase(smoke, std::string("call/") + name + "/version", placed, layout, versionCall);
        registerCase(smoke, std::string("call/") + name + "/raw", placed, layout, rawCall);
    }

    for (const auto& [name, kind] : {std::pair{"services", ListKind::Services},
                                     std::pair{"program_events", ListKind::ProgramEvents}}) {
        using ListCase = std::pair<const char*, void (*)(benchmark::State&, ListKind)>;
        for (const auto& [side, run] : {ListCase{"/bridge", bridgeList}, ListCase{"/raw", rawList},
                                        ListCase{"/host", hostList}}) {
            registerCase(smoke, std::string("list/") + name + side, run, kind)->RangeMultiplier(10)->Range(1, 10000);
        }
    }

    const std::int64_t perThread = smoke ? 100 : 2500;
    registerCase(smoke, "events/bridge", bridgeEvents)->Arg(perThread);
    registerCase(smoke, "events/raw", rawEvents)->Arg(perThread);
    registerCase(smoke, "events/captured", captured, bridgeEvents)->Arg(perThread);
}

}  // namespace bench
}  // namespace tessarine
