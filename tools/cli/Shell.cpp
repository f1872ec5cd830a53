#include "Shell.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <iterator>
#include <sstream>

#include <editline/readline.h>

#include "CommandTree.h"
#include "EventPrinter.h"

namespace cli {

namespace {

// libedit's completion hooks are plain functions: they reach the command tree here.
CLI::App* completionRoot = nullptr;
std::vector<std::string> candidates;

char* nextCandidate(const char* text, int state) {
    static std::size_t index = 0;
    if (state == 0) index = 0;
    while (index < candidates.size()) {
        const std::string& name = candidates[index++];
        if (name.compare(0, std::strlen(text), text) == 0) return ::strdup(name.c_str());
    }
    return nullptr;
}

// Completes the sub-command names that follow the words typed so far.
char** complete(const char* text, int start, int) {
    std::istringstream stream(std::string(rl_line_buffer, static_cast<std::size_t>(start)));
    std::vector<std::string> words{std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
    std::size_t used = 0;
    candidates = CommandTree::children(CommandTree::walk(*completionRoot, words, used));
    if (used < words.size()) candidates.clear();
    rl_attempted_completion_over = 1;
    return rl_completion_matches(text, nextCandidate);
}

}  // namespace

int Shell::run() {
    terminal_ = ::isatty(STDIN_FILENO) == 1;
    if (terminal_) {
        completionRoot = &app_;
        rl_attempted_completion_function = complete;
        using_history();
    }
    auto printer = std::make_shared<EventPrinter>(context_.json, true, "");
    auto& client = context_.control();
    if (auto connected = client.connect(); !connected) {
        context_.fail(connected.error());
        return context_.exitCode;
    }
    int last = EXIT_OK;
    for (std::string line; readLine(line);) {
        const auto first = line.find_first_not_of(" \t");
        if (first == std::string::npos || line[first] == '#') continue;
        if (line.compare(first, 4, "quit") == 0 || line.compare(first, 4, "exit") == 0) break;
        // A command such as watch installs its own handlers; the shell's come back after it.
        EventPrinter::subscribe(client, printer, 0);
        context_.exitCode = EXIT_OK;
        execute(line);
        last = context_.exitCode;
        std::cout.flush();
    }
    client.disconnect();
    return last;
}

bool Shell::readLine(std::string& line) {
    if (!terminal_) return static_cast<bool>(std::getline(std::cin, line));
    char* text = ::readline("tessarine> ");
    if (text == nullptr) return false;
    line = text;
    if (*text != '\0') add_history(text);
    std::free(text);
    return true;
}

void Shell::execute(const std::string& line) {
    try {
        app_.parse(line, false);
        if (app_.got_subcommand("shell")) context_.usage("already in the shell");
    } catch (const CLI::ParseError& error) {
        std::istringstream stream(line);
        context_.exitCode = reportParseError(app_, context_, error, {std::istream_iterator<std::string>(stream), {}});
    }
}

}  // namespace cli
