#include "sim/SimHost.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <thread>
#include <vector>

#include "MiddlewareIpc.h"
#include "sim/Console.h"
#include "sim/Scenario.h"
#include "sim/Simulator.h"
#include "sim/SocketDirectory.h"
#include "tessarine/IpcServerManager.h"

namespace tessarine {
namespace sim {

namespace {

constexpr const char* PROGRAM = "tessarine-sim";

bool readFile(const std::string& path, std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream content;
    content << in.rdbuf();
    text = content.str();
    return true;
}

// The stream source: the option's, else the scenario's, whose file path is
// taken from the scenario file's directory.
std::string streamSource(const SimOptions& options, const Scenario& scenario) {
    if (!options.ts.empty() || scenario.ts.empty()) return options.ts;
    const std::filesystem::path path(scenario.ts);
    if (scenario.ts == "-" || scenario.ts.rfind("udp://", 0) == 0 || path.is_absolute()) return scenario.ts;
    return (std::filesystem::path(options.scenarioFile).parent_path() / path).string();
}

int badInput(const std::vector<std::string>& messages) {
    for (const auto& message : messages) std::cerr << PROGRAM << ": " << message << '\n';
    std::cerr << std::flush;
    return SimHost::EXIT_BAD_INPUT;
}
int badInput(const std::string& message) { return badInput(std::vector<std::string>{message}); }

// Waits for SIGINT or SIGTERM (blocked in every thread, taken here) or for
// `stop` to be set, whichever comes first.
void waitForStop(const sigset_t& signals, const std::atomic<bool>& stop) {
    const timespec slice{0, 100 * 1000 * 1000};
    while (!stop.load()) {
        if (sigtimedwait(&signals, nullptr, &slice) > 0) return;
    }
}

}  // namespace

int SimHost::run(const SimOptions& options) {
    // A stream alone answers from itself: the built-in services would mix with its own.
    const bool streamOnly = options.scenarioFile.empty() && !options.ts.empty();
    std::string text = streamOnly ? "{}" : Scenario::defaultText();
    const std::string source = !options.scenarioFile.empty() ? options.scenarioFile
                               : streamOnly                  ? "empty scenario"
                                                             : "built-in scenario";
    if (!options.scenarioFile.empty() && !readFile(options.scenarioFile, text))
        return badInput("cannot read scenario " + options.scenarioFile);
    std::vector<ScenarioProblem> problems;
    const Scenario scenario = Scenario::parse(text, problems);
    if (!problems.empty()) {
        std::vector<std::string> lines;
        for (const auto& problem : problems) lines.push_back(source + ": " + problem.describe());
        return badInput(lines);
    }
    std::string script;
    if (!options.scriptFile.empty() && !readFile(options.scriptFile, script))
        return badInput("cannot read script " + options.scriptFile);
    if (!options.socketDirectory.empty()) {
        std::error_code error;
        if (!std::filesystem::is_directory(options.socketDirectory, error))
            return badInput("socket directory " + options.socketDirectory + " does not exist");
        if (!IpcServerManager::setSocketDirectory(options.socketDirectory))
            return badInput("socket directory " + options.socketDirectory + " is too long for a socket path");
    }
    SocketDirectory socketFiles(IpcServerManager::socketDirectory());
    std::vector<std::string> socketProblems;
    if (!socketFiles.prepare(socketProblems)) return badInput(socketProblems);

    // Blocked before any thread exists, so every thread inherits the mask
    // and only waitForStop takes the signals.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    broadcast::Pace pace = broadcast::Pace::Pcr;
    if (!broadcast::parsePace(options.tsPace, pace)) return badInput("--ts-pace must be pcr or none");

    RequestLog log(std::cerr, options.quiet);
    Simulator simulator(scenario, log);
    const std::string stream = streamSource(options, scenario);
    std::string streamError;
    if (!stream.empty() && !simulator.readStream(stream, pace, streamError))
        return badInput("cannot read the transport stream " + stream + ": " + streamError);
    Simulator::install(&simulator);
    MiddlewareIpc* adapter = MiddlewareIpc::getInstance();
    IpcServerManager* hub = IpcServerManager::getInstance();
    hub->addConnectionListener(&simulator);
    hub->setDemuxConnectionListener(&simulator.demux());  // a read waits no longer than its client stays
    // The adapter's listener operations return nothing: the hub's count says what went out.
    simulator.countSentWith([hub] { return hub->eventsSent(); });
    if (!socketFiles.claim(socketProblems)) {
        simulator.quiesce();
        delete adapter;
        Simulator::install(nullptr);
        socketFiles.release();
        return badInput(socketProblems);
    }
    simulator.watchWaitingClients(IpcServerManager::socketDirectory() + "/" + CONTROL_SOCKET_NAME);
    std::cerr << PROGRAM << ": serving " << IpcServerManager::socketDirectory() << "/" << CONTROL_SOCKET_NAME << " and "
              << IpcServerManager::socketDirectory() << "/" << DEMUX_SOCKET_NAME << " from the " << source
              << (stream.empty() ? "" : " and the transport stream " + stream) << std::endl;

    std::atomic<bool> stop{false};
    Console console(
        simulator,
        [&](int state) {
            const int answer = adapter->sendAppState(state);
            log.event(Family::AppState, state, "application state -> answer " + std::to_string(answer));
            return answer;
        },
        std::cout);
    std::thread consoleThread([&] {
        bool quit = false;
        if (!options.scriptFile.empty()) {
            std::istringstream lines(script);
            quit = console.runScript(lines);
        } else if (stream == "-") {
            std::cerr << PROGRAM << ": console off: standard input carries the transport stream" << std::endl;
        } else if (::isatty(STDIN_FILENO)) {
            std::cout << "console ready: type help for the commands" << std::endl;
            quit = console.runTerminal(STDIN_FILENO);
        }
        if (quit) stop = true;
    });

    waitForStop(signals, stop);

    // Notices stop first, so no simulator thread calls into the adapter
    // while it is deleted. A console still waiting for an application-state
    // answer is released by the bridge's teardown.
    console.stop();
    simulator.quiesce();
    delete adapter;
    consoleThread.join();
    Simulator::install(nullptr);
    socketFiles.release();
    // A script is a test of sorts: a command of it that failed fails the run.
    return !options.scriptFile.empty() && console.failures() > 0 ? EXIT_SCRIPT_FAILED : 0;
}

}  // namespace sim
}  // namespace tessarine
