// tessarine-cli: talks to a running bridge over its control and section
// filter sockets; one sub-command per request family.
#include "Context.h"
#include "tessarine/protocol/Sockets.h"

int main(int argc, char** argv) {
    cli::Context context;
    CLI::App app{"Talk to a running tessarine bridge.", "tessarine-cli"};
    app.footer(
        "Exit codes: 0 success, 2 usage or an argument the wire cannot carry, 3 not connected,\n"
        "4 timed out, 5 protocol error (connection lost or malformed answer).");
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("tessarine-cli ") + TESSARINE_VERSION);
    app.add_option("--socket", context.socket,
                   std::string("control socket path (default ") + tessarine::CONTROL_SOCKET_PATH + ")");
    app.add_option("--socket-dir", context.socketDir,
                   std::string("directory holding ") + tessarine::CONTROL_SOCKET_NAME + " and " +
                       tessarine::DEMUX_SOCKET_NAME);
    app.add_option("--timeout", context.timeoutMs, "time limit of each call in milliseconds")
        ->check(CLI::PositiveNumber);
    app.add_flag("--json", context.json, "print one JSON document per answer (one line per event in watch)");

    cli::addControlCommands(app, context);
    cli::addEventCommands(app, context);
    cli::addDemuxCommands(app, context);
    cli::addCaptureCommands(app, context);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error);
        return code == 0 ? cli::EXIT_OK : cli::EXIT_USAGE;
    }
    return context.exitCode;
}
