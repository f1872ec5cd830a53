// The state that every sub-command shares.
#include "Context.h"

#include <iostream>

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
