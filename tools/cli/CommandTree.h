#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace cli {

// Readings of the tool's own CLI11 command tree, so that the shell's
// completion, the suggestions for mistyped sub-commands and the bash
// completion script follow the commands as they are and cannot drift.
class CommandTree {
public:
    // The visible sub-commands' names of a command.
    static std::vector<std::string> children(const CLI::App& command);
    // The command reached by the leading words that name sub-commands; used
    // tells how many words that took.
    static const CLI::App& walk(const CLI::App& root, const std::vector<std::string>& words, std::size_t& used);
    // "unknown sub-command 'servics' of 'si'; did you mean 'services'?", or
    // empty when the words name no wrong sub-command.
    static std::string suggest(const CLI::App& root, const std::vector<std::string>& words);
    // A bash completion script for the tool's sub-commands and long options.
    static std::string bashCompletion(const CLI::App& root);
};

}  // namespace cli
