// capture decode: prints a capture of the bridge's channels, one line per block.
#include <iostream>

#include "CaptureDecoder.h"
#include "CaptureReader.h"
#include "Context.h"

namespace cli {

namespace {

// "TIME in control MSG_SI SI_SERVICES request key=value ..." for people.
std::string line(const Json& block) {
    std::string text;
    for (const auto& item : block.items()) {
        const std::string value = item.value().is_string() ? item.value().get<std::string>() : item.value().dump();
        const bool plain = item.key() == "time" || item.key() == "direction" || item.key() == "channel" ||
                           item.key() == "type" || item.key() == "code" || item.key() == "role";
        text += (plain ? value : item.key() + "=" + value) + " ";
    }
    if (!text.empty()) text.pop_back();
    return text;
}

}  // namespace

void addCaptureCommands(CLI::App& app, Context& c) {
    auto* capture = app.add_subcommand("capture", "read a capture of the bridge's channels")->require_subcommand(1);
    static std::string file;
    auto* decode = capture->add_subcommand("decode", "print a pcapng capture, one line per record, command or section");
    decode->add_option("file", file, "the capture (TESSARINE_CAPTURE)")->required();
    decode->callback([&c] {
        CaptureReader reader;
        if (!reader.open(file)) return c.usage(reader.error());
        CaptureDecoder decoder;
        CaptureBlock block;
        while (reader.next(block)) {
            const Json decoded = decoder.decode(block);
            std::cout << (c.json ? decoded.dump() : line(decoded)) << '\n';
        }
        std::cout.flush();
        if (!reader.error().empty()) {
            std::cerr << file << ": " << reader.error() << std::endl;
            c.exitCode = EXIT_PROTOCOL;
        }
    });
}

}  // namespace cli
