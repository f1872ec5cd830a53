// watch: prints events as they arrive and answers application-state requests;
// with --count, scripts wait for one event and go on.
#include <atomic>
#include <csignal>
#include <iostream>
#include <limits>
#include <mutex>
#include <thread>

#include "Context.h"
#include "EventPrinter.h"

namespace cli {

using namespace tessarine::client;

namespace {

std::atomic<bool> interrupted{false};
extern "C" void onSignal(int) { interrupted = true; }

}  // namespace

void addEventCommands(CLI::App& app, Context& c) {
    static int appState = -1;
    static int count = 0;
    auto* watch = app.add_subcommand("watch", "print events as they arrive, until interrupted");
    watch->add_option("--app-state", appState, "answer application-state requests with this byte (default: 0)")
        ->check(CLI::Range(0, int{std::numeric_limits<std::uint8_t>::max()}));
    watch->add_option("--count", count, "stop after this many events")->check(CLI::NonNegativeNumber);
    static int timeoutMs = 0;
    static std::string only;
    static bool noTimestamps = false;
    watch->add_option("--timeout", timeoutMs, "with --count: give up after this many milliseconds (exit 4)")
        ->check(CLI::NonNegativeNumber);
    std::vector<std::string> kinds;
    for (auto* kind = EventPrinter::KINDS; *kind; ++kind) kinds.emplace_back(*kind);
    watch->add_option("--event", only, "print only events of this kind")->check(CLI::IsMember(kinds));
    watch->add_flag("--no-timestamps", noTimestamps, "leave out the time of arrival");
    watch->callback([&c] {
        std::signal(SIGINT, onSignal);
        std::signal(SIGTERM, onSignal);
        auto printer = std::make_shared<EventPrinter>(c.json, !noTimestamps, only);
        auto& client = c.control();
        EventPrinter::subscribe(client, printer, appState < 0 ? 0 : static_cast<std::uint8_t>(appState));
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        // Waits for events; after a lost connection, connects again.
        bool reported = false;
        while (!interrupted && (count == 0 || printer->count() < count)) {
            if (timeoutMs > 0 && std::chrono::steady_clock::now() >= deadline) {
                c.report("timed_out", std::to_string(printer->count()) + " of " + std::to_string(count) +
                                          " events within " + std::to_string(timeoutMs) + " ms");
                c.exitCode = EXIT_TIMED_OUT;
                break;
            }
            if (!client.connected()) {
                auto connected = client.connect();
                if (!connected && !reported) {
                    std::cerr << "tessarine-cli: " << connected.error().message() << "; retrying" << std::endl;
                }
                reported = !connected;
            }
            printer->waitFor(count, reported ? 500 : 20, interrupted);
        }
        // An application-state request is counted when printed, before the
        // handler returns its answer: disconnect() lets that answer go out.
        client.disconnect();
    });
}
}  // namespace cli
