// tessarine-cli: talks to a running bridge over its control and section
// filter sockets; one sub-command per request family.
#include <iostream>

#include "CommandTree.h"
#include "Context.h"
#include "Shell.h"
#include "tessarine/protocol/Sockets.h"

int main(int argc, char** argv) {
    cli::Context context;
    CLI::App app{"Talk to a running tessarine bridge.", "tessarine-cli"};
    app.footer(
        "Exit codes: 0 success, 1 the bridge answered with nothing (no handle, no mount point, no\n"
        "property, no record to raw, no section), 2 usage or an argument the wire cannot carry, 3 not connected, 4 timed out,\n"
        "5 protocol error (connection lost or malformed answer).");
    app.require_subcommand(1);
    app.set_version_flag("--version", std::string("tessarine-cli ") + TESSARINE_VERSION);
    app.add_option("--socket", context.socket,
                   std::string("control socket path (default ") + tessarine::CONTROL_SOCKET_PATH + ")");
    app.add_option("--demux-socket", context.demuxSocket,
                   std::string("section-filter socket path (default ") + tessarine::DEMUX_SOCKET_PATH + ")");
    app.add_option("--socket-dir", context.socketDir,
                   std::string("directory holding ") + tessarine::CONTROL_SOCKET_NAME + " and " +
                       tessarine::DEMUX_SOCKET_NAME);
    app.add_option("--timeout", context.timeoutMs, "time limit of each call in milliseconds")
        ->check(CLI::PositiveNumber);
    std::string jsonForm;
    app.add_flag("--json{short}", jsonForm,
                 "print one JSON document per answer (one line per event in watch); --json=pretty indents")
        ->check(CLI::IsMember({"short", "pretty"}))
        ->each([&context](const std::string& form) {
            context.json = true;
            context.jsonIndent = form == "pretty" ? 2 : -1;
        });

    app.add_flag("--wire-names", context.wireNames, "label SI values with their wire names (value0...) only");
    app.add_flag("-v,--verbose", context.verbose, "hex dumps of the byte strings in SI records");

    bool shell = false;
    app.add_subcommand("shell", "run commands over one connection, one a line, from the terminal or stdin")
        ->callback([&shell] { shell = true; });
    // Hidden: the build writes the installed bash completion with it.
    auto* completion = app.add_subcommand("completion", "")->group("");
    completion->add_option("shell", "only bash")->required()->check(CLI::IsMember({"bash"}));
    completion->callback([&app] { std::cout << cli::CommandTree::bashCompletion(app); });
    cli::addControlCommands(app, context);
    cli::addEventCommands(app, context);
    cli::addDemuxCommands(app, context);
    cli::addCaptureCommands(app, context);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return cli::reportParseError(app, context, error, std::vector<std::string>(argv + 1, argv + argc));
    }
    if (shell) return cli::Shell(app, context).run();
    return context.exitCode;
}
