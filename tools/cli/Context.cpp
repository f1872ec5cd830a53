// The state that every sub-command shares.
#include "Context.h"

#include <algorithm>
#include <iostream>

#include "CommandTree.h"

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
        if (!demuxSocket.empty()) options.socketPath = demuxSocket;
        options.timeout = std::chrono::milliseconds(timeoutMs);
        demux_ = std::make_unique<tessarine::client::DemuxClient>(options);
    }
    return *demux_;
}

Json Context::fields(FieldNames::Record record, Json wire) const {
    if (wireNames || !wire.is_object()) return wire;
    return json ? FieldNames::withNames(record, wire) : FieldNames::forPeople(record, wire, verbose);
}

void Context::fail(const tessarine::client::Error& error) {
    std::string message = error.message();
    // A connect that succeeds with nothing answering is a bridge busy with its one client.
    if (error.code() == tessarine::client::ErrorCode::TimedOut && message.find("within the time limit") != std::string::npos)
        message += " (the bridge serves one application at a time: is another client, such as a "
                   "running 'tessarine-cli watch' or 'shell', connected?)";
    report(errorName(error), message);
    exitCode = exitCodeOf(error);
}

void Context::usage(const std::string& message) {
    report("usage", message);
    exitCode = EXIT_USAGE;
}

void Context::report(const std::string& code, const std::string& message) {
    if (json)
        std::cerr << Json{{"error", {{"code", code}, {"message", message}}}}.dump() << std::endl;
    else
        std::cerr << "tessarine-cli: " << message << std::endl;
}

int reportParseError(CLI::App& app, Context& context, const CLI::ParseError& error, const std::vector<std::string>& words) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        app.exit(error);
        return EXIT_OK;
    }
    const std::string suggestion = CommandTree::suggest(app, words);
    // --json is looked at in the words: the parse may have stopped before it.
    context.json = context.json || std::any_of(words.begin(), words.end(), [](const std::string& w) { return w.rfind("--json", 0) == 0; });
    context.usage(suggestion.empty() ? error.what() : suggestion);
    return EXIT_USAGE;
}

void addSwitch(CLI::App& command, bool& value) {
    command.add_option("state", value, "on or off")
        ->required()
        ->transform(CLI::IsMember({"on", "off", "true", "false", "1", "0"}));
}

}  // namespace cli
