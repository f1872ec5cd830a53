#include <cstdlib>
#include <string>

#include <CLI/CLI.hpp>

#include "sim/SimHost.h"
#include "tessarine/protocol/Sockets.h"

int main(int argc, char** argv) {
    tessarine::sim::SimOptions options;
    CLI::App app{"tessarine-sim: a simulated receiver that runs the tessarine bridge from a scenario"};
    app.add_option("--scenario", options.scenarioFile, "scenario file (JSON); the built-in scenario without it");
    app.set_version_flag("--version", std::string("tessarine-sim ") + TESSARINE_VERSION);
    // Tools and clients share the variable, so one setting points them all at this simulator.
    if (const char* directory = std::getenv(tessarine::SOCKET_DIRECTORY_VARIABLE)) options.socketDirectory = directory;
    app.add_option("--socket-dir", options.socketDirectory,
                   std::string("directory for ") + tessarine::CONTROL_SOCKET_NAME + " and " +
                       tessarine::DEMUX_SOCKET_NAME + " (default $" + tessarine::SOCKET_DIRECTORY_VARIABLE + ", else " +
                       tessarine::DEFAULT_SOCKET_DIRECTORY + ")");
    app.add_option("--script", options.scriptFile, "console commands to run, one a line, instead of the terminal");
    app.add_option("--ts", options.ts,
                   "answer SI and section filters from a transport stream: a file (looped), - for standard "
                   "input, or udp://ADDR:PORT");
    app.add_option("--ts-pace", options.tsPace, "pace of a file stream: pcr (its own rate, the default) or none")
        ->check(CLI::IsMember({"pcr", "none"}));
    app.add_flag("--quiet", options.quiet, "no log line per request and event");
    std::string capture;
    app.add_option("--capture", capture,
                   "write both channels' traffic to this pcapng file (as TESSARINE_CAPTURE does on a receiver)");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // Help and --version end well; any misuse is bad input, as a bad scenario is.
        return app.exit(error) == 0 ? EXIT_SUCCESS : tessarine::sim::SimHost::EXIT_BAD_INPUT;
    }
    // Through the environment, so that the bridge starts the capture as it would on a receiver.
    if (!capture.empty()) ::setenv("TESSARINE_CAPTURE", capture.c_str(), 1);
    return tessarine::sim::SimHost::run(options);
}
