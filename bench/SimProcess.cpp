#include "bench/SimProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

extern char** environ;

namespace tessarine {
namespace bench {

namespace {
// Parsing a 100 000-service scenario takes a while on a loaded machine.
constexpr auto READY_PATIENCE = std::chrono::seconds(60);
}  // namespace

SimProcess::SimProcess(const std::string& socketDirectory, const std::vector<std::string>& extraArguments) {
    std::vector<std::string> arguments{TESSARINE_SIM_PROGRAM, "--socket-dir", socketDirectory, "--quiet"};
    arguments.insert(arguments.end(), extraArguments.begin(), extraArguments.end());
    std::vector<char*> argv;
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);

    // Standard error goes to a file, read for the line that says the
    // facades are in place.
    const std::string log = socketDirectory + "/sim.log";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int spawned = posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        pid_ = -1;
        return;
    }
    const auto patience = std::chrono::steady_clock::now() + READY_PATIENCE;
    while (std::chrono::steady_clock::now() < patience) {
        std::ifstream in(log);
        const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        if (text.find("serving") != std::string::npos) {
            ready_ = true;
            return;
        }
        int status = 0;
        if (::waitpid(pid_, &status, WNOHANG) == pid_) {
            pid_ = -1;
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

SimProcess::~SimProcess() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    int status = 0;
    ::waitpid(pid_, &status, 0);
}

long SimProcess::residentKib() const {
    std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
    std::string key;
    while (status >> key) {
        if (key == "VmRSS:") {
            long kib = -1;
            status >> kib;
            return kib;
        }
    }
    return -1;
}

}  // namespace bench
}  // namespace tessarine
