// tessarine-cli: talks to a running bridge over its control and section
// filter sockets; one sub-command per request family.
#include <iostream>

#include "Context.h"
#include "tessarine/protocol/Sockets.h"

namespace cli {

tessarine::client::ControlClient& Context::control() {
    if (!control_) {
        tessarine::client::ClientOptions options;
        if (!socketDir.empty()) options.socketPath = socketDir + "/" + tessarine::CONTROL_SOCKET_NAME;
        if (!socket.empty()) options.socketPath = socket;
        options.timeout = std::chrono::milliseconds(timeoutMs);
        control_ = std::make_unique<tessarine::client::ControlClient>(options);
    }
    return *control_;
}

tessarine::client::DemuxClient& Context::demux() {
    if (!demux_) {
        tessarine::client::DemuxOptions options;
        if (!socketDir.empty()) options.socketPath = socketDir + "/" + tessarine::DEMUX_SOCKET_NAME;
        options.timeout = std::chrono::milliseconds(timeoutMs);
        demux_ = std::make_unique<tessarine::client::DemuxClient>(options);
    }
    return *demux_;
}

void Context::fail(const tessarine::client::Error& error) {
    std::cerr << "tessarine-cli: " << error.message() << std::endl;
    exitCode = exitCodeOf(error);
}

void Context::usage(const std::string& message) {
    std::cerr << "tessarine-cli: " << message << std::endl;
    exitCode = EXIT_USAGE;
}

void addSwitch(CLI::App& command, bool& value) {
    command.add_option("state", value, "on or off")
        ->required()
        ->transform(CLI::IsMember({"on", "off", "true", "false", "1", "0"}));
}

}  // namespace cli


int main(int argc, char** argv) {
    cli::Context context;
    CLI::App app{"Talk to a running tessarine bridge.", "tessarine-cli"};
    app.footer(
        "Exit codes: 0 success, 2 usage or an argument the wire cannot carry, 3 not connected,\n"
        "4 timed out, 5 protocol error (connection lost or malformed answer).");
    app.require_subcommand(1);
    app.add_option("--socket", context.socket, std::string("control socket path (default ") + tessarine::CONTROL_SOCKET_PATH + ")");
    app.add_option("--socket-dir", context.socketDir, std::string("directory holding ") + tessarine::CONTROL_SOCKET_NAME + " and " + tessarine::DEMUX_SOCKET_NAME);
    app.add_option("--timeout", context.timeoutMs, "time limit of each call in milliseconds")
        ->check(CLI::PositiveNumber);
    app.add_flag("--json", context.json, "print one JSON document per answer (one line per event in watch)");

    cli::addControlCommands(app, context);
    cli::addEventCommands(app, context);
    cli::addDemuxCommands(app, context);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error);
        return code == 0 ? cli::EXIT_OK : cli::EXIT_USAGE;
    }
    return context.exitCode;
}
