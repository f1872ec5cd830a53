// demux: every command of the section-filter channel.
#include <algorithm>

#include "Context.h"
#include "tessarine/protocol/DemuxCommands.h"

namespace cli {

using namespace tessarine::client;

namespace {

Json sectionJson(const std::vector<std::uint8_t>& section) {
    return Json{{"length", section.size()}, {"section", toHex(section)}};
}

}  // namespace

void addDemuxCommands(CLI::App& app, Context& c) {
    auto* demux = app.add_subcommand("demux", "the section filter (its own socket)")->require_subcommand(1);

    static int pid = -1, table = -1, waitMs = 0;
    auto* read = demux->add_subcommand("read", "set PID and table when given, start the filter, read one section");
    read->add_option("--pid", pid, "PID to filter on, e.g. 0x12")->check(CLI::Range(0, int{tessarine::MAX_PID}));
    read->add_option("--table", table, "table id to filter on, e.g. 0x4e")->check(CLI::Range(0, int{tessarine::MAX_TABLE_ID}));
    read->add_option("--timeout", waitMs, "time limit of the read in milliseconds (default: the global --timeout)");
    read->callback([&c, read] {
        auto& client = c.demux();
        const Timeout limit = waitMs > 0 ? Timeout(std::chrono::milliseconds(waitMs)) : Timeout();
        // Each step stops the command at its first error.
        Result<void> step;
        if (read->count("--pid")) step = client.setPid(pid);
        if (step && read->count("--table")) step = client.setTableId(table);
        if (step) step = client.start();
        if (!step) return c.emit(step);
        c.emitOrNothing(client.readSection(limit), sectionJson);
    });

    auto simple = [&](const char* name, const char* help, Result<void> (DemuxClient::*call)(Timeout)) {
        demux->add_subcommand(name, help)->callback([&c, call] { c.emit((c.demux().*call)({})); });
    };
    simple("start", "start the filter", &DemuxClient::start);
    simple("stop", "stop the filter", &DemuxClient::stop);
    demux->add_subcommand("section", "read one section without changing the filter")->callback([&c] {
        c.emitOrNothing(c.demux().readSection(), sectionJson);
    });

    static int value = 0;
    auto withValue = [&](const char* name, const char* help, Result<void> (DemuxClient::*call)(std::int32_t, Timeout)) {
        auto* command = demux->add_subcommand(name, help);
        command->add_option("value", value)->required();
        command->callback([&c, call] { c.emit((c.demux().*call)(value, {})); });
    };
    withValue("pid", "set the PID", &DemuxClient::setPid);
    withValue("table", "set the table id", &DemuxClient::setTableId);
    withValue("timeout", "set the filter's time-out (the middleware's unit)", &DemuxClient::setTimeOut);

    static std::string kind;
    static std::vector<std::string> strings;
    auto* filter = demux->add_subcommand("filter", "set a filter: positive, greater, less (two hex strings) or xor (three)");
    filter->add_option("kind", kind)->required()->check(CLI::IsMember({"positive", "greater", "less", "xor"}));
    filter->add_option("value", value, "the integer argument")->required();
    filter->add_option("strings", strings, "byte strings in hex (\"\" for an empty one)")->required();
    filter->callback([&c] {
        const auto word = kind == "positive"  ? tessarine::DEMUX_SET_POSITIVE_FILTER
                          : kind == "greater" ? tessarine::DEMUX_SET_GREATER_THAN_FILTER
                          : kind == "less"    ? tessarine::DEMUX_SET_LESS_THAN_FILTER
                                              : tessarine::DEMUX_SET_XOR_FILTER;
        const auto arguments = tessarine::protocol::findDemuxCommand(word)->arguments;
        const auto wanted = static_cast<std::size_t>(std::count_if(
            arguments.begin(), arguments.end(),
            [](const auto& a) { return a.kind == tessarine::protocol::DemuxArgumentKind::ByteString; }));
        std::vector<std::vector<std::uint8_t>> bytes(strings.size());
        for (std::size_t i = 0; i < strings.size(); ++i) {
            if (!parseHex(strings[i], bytes[i])) return c.usage("byte strings are pairs of hex digits");
        }
        if (bytes.size() != wanted) return c.usage(kind + " takes " + std::to_string(wanted) + " byte strings");
        auto& client = c.demux();
        c.emit(kind == "positive"  ? client.setPositiveFilter(value, bytes[0], bytes[1])
               : kind == "greater" ? client.setGreaterThanFilter(value, bytes[0], bytes[1])
               : kind == "less"    ? client.setLessThanFilter(value, bytes[0], bytes[1])
                                   : client.setXorFilter(value, bytes[0], bytes[1], bytes[2]));
    });

    static std::string what;
    auto* clear = demux->add_subcommand("clear", "clear the table id or a filter: table, positive, less or xor");
    clear->add_option("what", what)->required()->check(CLI::IsMember({"table", "positive", "less", "xor"}));
    clear->callback([&c] {
        auto& client = c.demux();
        c.emit(what == "table"      ? client.clearTableId()
               : what == "positive" ? client.clearPositiveFilter()
               : what == "less"     ? client.clearLessThanFilter()
                                    : client.clearXorFilter());
    });
}

}  // namespace cli
