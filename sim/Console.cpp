#include "sim/Console.h"

#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "sim/Text.h"

namespace tessarine {
namespace sim {

namespace {

// A whole word as a number within [low, high], or an exception that names it.
std::int64_t number(const std::string& word, const char* what, std::int64_t low, std::int64_t high) {
    std::size_t used = 0;
    std::int64_t value = 0;
    try {
        value = std::stoll(word, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used == 0 || used != word.size() || value < low || value > high)
        throw std::invalid_argument(std::string(what) + " must be an integer from " + std::to_string(low) + " to " +
                                    std::to_string(high) + ", not \"" + word + "\"");
    return value;
}

int int32(const std::string& word, const char* what) {
    return static_cast<int>(
        number(word, what, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

double seconds(const std::string& word) {
    std::size_t used = 0;
    double value = -1;
    try {
        value = std::stod(word, &used);
    } catch (const std::exception&) {
        used = 0;
    }
    if (used == 0 || used != word.size() || !(value >= 0))
        throw std::invalid_argument("seconds must be a number, 0 or more, not \"" + word + "\"");
    return value;
}

void expectWords(const std::vector<std::string>& words, std::size_t low, std::size_t high, const char* usage) {
    if (words.size() - 1 < low || words.size() - 1 > high) throw std::invalid_argument(std::string("usage: ") + usage);
}

}  // namespace

namespace {

// The console's answer to a notice it raised.
std::string reply(Delivery delivery, const char* sent, const char* noListener) {
    switch (delivery) {
        case Delivery::Sent: return sent;
        case Delivery::NoListener: return noListener;
        case Delivery::NoClient: return "not sent: no client connected";
        case Delivery::NotSent: break;
    }
    return "not sent: the client's connection failed";
}

}  // namespace

bool Console::execute(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string word; in >> word;) words.push_back(word);
    if (words.empty() || words[0][0] == '#') return true;
    const std::string& command = words[0];
    try {
        if (command == "quit") {
            expectWords(words, 0, 0, "quit");
            return false;
        } else if (command == "help") {
            help();
        } else if (command == "status") {
            for (const auto& text : simulator_.status()) out_ << text << '\n';
        } else if (command == "appstate") {
            expectWords(words, 1, 1, "appstate N");
            const int state = int32(words[1], "N");
            // Without a client the bridge answers 0 at once, which would read as the client's answer.
            if (!simulator_.waitForClient(std::chrono::seconds(0))) {
                ++failures_;
                out_ << "application state " << state << " not sent: no client connected\n";
            } else {
                out_ << "application state " << state << ": client answered " << appState_(state) << '\n';
            }
        } else if (command == "graphics") {
            expectWords(words, 8, 8, "graphics X Y W H X Y W H");
            int v[8];
            for (int i = 0; i < 8; ++i) v[i] = int32(words[static_cast<std::size_t>(i) + 1], "each value");
            out_ << reply(simulator_.video().changeGraphics({v[0], v[1], v[2], v[3]}, {v[4], v[5], v[6], v[7]}),
                          "graphics settings sent", "no graphics listener")
                 << '\n';
        } else if (command == "dsmcc") {
            if (words.size() < 4) throw std::invalid_argument("usage: dsmcc CODE VALUE BYTE TEXT");
            ipcutil::DsmCCCommand_t event{int32(words[1], "CODE"),
                                          number(words[2], "VALUE", std::numeric_limits<std::int64_t>::min(),
                                                 std::numeric_limits<std::int64_t>::max()),
                                          static_cast<unsigned char>(
                                              number(words[3], "BYTE", 0, std::numeric_limits<unsigned char>::max())),
                                          {}};
            // The text is the rest of the line, blanks included.
            std::size_t at = 0;
            for (int i = 0; i < 4 && at != std::string::npos; ++i)
                at = line.find_first_of(" \t", line.find_first_not_of(" \t", at));
            if (at != std::string::npos) at = line.find_first_not_of(" \t", at);
            if (at != std::string::npos) event.commandText = line.substr(at);
            out_ << reply(simulator_.dsmcc().deliver("nclEditingCommand", event), "stream event sent",
                          "no stream event listener")
                 << '\n';
        } else if (command == "download") {
            expectWords(words, 1, 2, "download FIRST [SECOND]");
            out_ << reply(simulator_.carousel().notifyDownload(words[1], words.size() > 2 ? words[2] : ""),
                          "download notice sent", "no carousel listener")
                 << '\n';
        } else if (command == "eom") {
            expectWords(words, 1, 1, "eom HANDLE");
            const int handle = int32(words[1], "HANDLE");
            out_ << (simulator_.video().endMedium(handle) ? "end of media for handle " + words[1]
                                                          : "no player with handle " + words[1])
                 << '\n';
        } else if (command == "sleep") {
            expectWords(words, 1, 1, "sleep SECONDS");
            sleepFor(seconds(words[1]));
        } else if (command == "waitclient") {
            expectWords(words, 0, 1, "waitclient [SECONDS]");
            const double patience = words.size() > 1 ? seconds(words[1]) : 10.0;
            const auto until = std::chrono::steady_clock::now() + std::chrono::duration<double>(patience);
            bool connected = false;
            // In short waits, so that a stop is not held up.
            while (!connected && !stopping_ && std::chrono::steady_clock::now() < until)
                connected = simulator_.waitForClient(std::chrono::milliseconds(50));
            out_ << (connected ? "client connected" : "no client yet") << '\n';
        } else {
            throw std::invalid_argument("unknown command \"" + command + "\" (try help)");
        }
    } catch (const std::invalid_argument& error) {
        ++failures_;
        out_ << "error: " << error.what() << '\n';
    }
    out_.flush();
    return true;
}

bool Console::sleepFor(double seconds) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!stopping_ && std::chrono::steady_clock::now() < until) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return !stopping_;
}

bool Console::runScript(std::istream& in) {
    for (std::string line; !stopping_ && std::getline(in, line);)
        if (!execute(line)) return true;
    return false;
}

bool Console::runTerminal(int fd) {
    std::string pending;
    while (!stopping_) {
        pollfd ready{fd, POLLIN, 0};
        // A short poll, so that stop() is seen without closing the terminal.
        const int polled = ::poll(&ready, 1, 100);
        if (polled <= 0) continue;
        char buffer[512];
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got <= 0) return true;  // end of input: as quit
        pending.append(buffer, static_cast<std::size_t>(got));
        for (std::size_t end; (end = pending.find('\n')) != std::string::npos;) {
            const std::string line = pending.substr(0, end);
            pending.erase(0, end + 1);
            if (!execute(line)) return true;
        }
    }
    return false;
}

void Console::help() {
    out_ << "appstate N                  ask the client to change its application state, print its answer\n"
            "graphics X Y W H X Y W H    send a graphics-settings change\n"
            "dsmcc CODE VALUE BYTE TEXT  send a \"nclEditingCommand\" stream event (TEXT is the rest of the line)\n"
            "download FIRST [SECOND]     send a carousel download notice\n"
            "eom HANDLE                  end the medium of a player now\n"
            "status                      client, requests per family, events sent and scheduled, players, stream counters\n"
            "sleep SECONDS               wait (in scripts)\n"
            "waitclient [SECONDS]        wait until a client is connected (default 10 s)\n"
            "help                        this list\n"
            "quit                        stop the simulator\n";
}

}  // namespace sim
}  // namespace tessarine
