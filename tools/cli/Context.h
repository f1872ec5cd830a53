#pragma once

#include <chrono>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "FieldNames.h"
#include "Output.h"
#include "tessarine/client/ControlClient.h"
#include "tessarine/client/DemuxClient.h"
#include "tessarine/protocol/Limits.h"

namespace cli {

// What every sub-command shares: the global options, the clients (built on
// first use from those options) and the exit code.
class Context {
public:
    std::string socket;     // control socket path (--socket)
    std::string socketDir;  // directory of both sockets (--socket-dir)
    int timeoutMs = static_cast<int>(tessarine::CLIENT_TIME_LIMIT.count());
    std::string demuxSocket;  // section-filter socket path (--demux-socket)
    bool json = false;
    int jsonIndent = -1;  // --json=pretty indents
    bool wireNames = false;  // --wire-names: value0... only
    bool verbose = false;    // -v: hex dumps of byte strings in SI records
    int exitCode = EXIT_OK;

    tessarine::client::ControlClient& control();
    tessarine::client::DemuxClient& demux();

    // Prints a successful answer, or reports the error and sets the exit code.
    template <typename T, typename Convert>
    void emit(const tessarine::client::Result<T>& result, Convert convert) {
        if (!result) return fail(result.error());
        print(convert(*result), json, jsonIndent);
    }
    // As emit, for answers that can mean "could not" or "nothing", which end with EXIT_NOTHING.
    template <typename T, typename Convert>
    void emitOrNothing(const tessarine::client::Result<T>& result, Convert convert) {
        if (!result) return fail(result.error());
        const Json document = convert(*result);
        print(document, json, jsonIndent);
        if (isNothing(document)) exitCode = EXIT_NOTHING;
    }
    void emit(const tessarine::client::Result<void>& result) {
        if (!result) return fail(result.error());
        print(json ? Json{{"ok", true}} : Json("ok"), json, jsonIndent);
    }
    // An SI record's members as the options ask: wire names, names beside them, or names only.
    Json fields(FieldNames::Record record, Json wire) const;
    void fail(const tessarine::client::Error& error);
    void usage(const std::string& message);
    // Reports an error in the form of the output: a line for people, a JSON document with --json.
    void report(const std::string& code, const std::string& message);

private:
    std::unique_ptr<tessarine::client::ControlClient> control_;
    std::unique_ptr<tessarine::client::DemuxClient> demux_;
};

void addControlCommands(CLI::App& app, Context& context);
void addEventCommands(CLI::App& app, Context& context);
void addDemuxCommands(CLI::App& app, Context& context);
void addCaptureCommands(CLI::App& app, Context& context);

// Reports a command line CLI11 refused (with a suggestion for a mistyped
// sub-command, as JSON with --json) and returns the exit code.
int reportParseError(CLI::App& app, Context& context, const CLI::ParseError& error, const std::vector<std::string>& words);

// "on"/"off" style switches.
void addSwitch(CLI::App& command, bool& value);

}  // namespace cli
