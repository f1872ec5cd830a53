#include <CLI/CLI.hpp>

#include "sim/SimHost.h"

int main(int argc, char** argv) {
    tessarine::sim::SimOptions options;
    CLI::App app{"tessarine-sim: a simulated receiver that runs the tessarine bridge from a scenario"};
    app.add_option("--scenario", options.scenarioFile, "scenario file (JSON); the built-in scenario without it");
    app.add_option("--socket-dir", options.socketDirectory,
                   "directory for ipc.socket and ipcdemux.socket (default /dev/shm)");
    app.add_option("--script", options.scriptFile, "console commands to run, one a line, instead of the terminal");
    app.add_flag("--quiet", options.quiet, "no log line per request and event");
    CLI11_PARSE(app, argc, argv);
    return tessarine::sim::SimHost::run(options);
}
