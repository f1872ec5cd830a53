#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace tessarine {
namespace testing {

// tessarine-sim started as a child process, its output captured in files.
class SimProcess {
public:
    SimProcess(const std::vector<std::string>& arguments, const std::string& outputDirectory)
        : stdout_(outputDirectory + "/stdout"), stderr_(outputDirectory + "/stderr") {
        pid_ = ::fork();
        if (pid_ == 0) {
            std::vector<char*> argv;
            std::string program = TESSARINE_SIM_PATH;
            argv.push_back(program.data());
            std::vector<std::string> copies = arguments;
            for (auto& argument : copies) argv.push_back(argument.data());
            argv.push_back(nullptr);
            if (!std::freopen(stdout_.c_str(), "w", stdout) || !std::freopen(stderr_.c_str(), "w", stderr) ||
                !std::freopen("/dev/null", "r", stdin))
                ::_exit(127);
            ::execv(program.c_str(), argv.data());
            ::_exit(127);
        }
    }
    ~SimProcess() {
        if (pid_ > 0 && !status_) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    SimProcess(const SimProcess&) = delete;
    SimProcess& operator=(const SimProcess&) = delete;

    void signal(int number) { ::kill(pid_, number); }

    // The exit code, or nothing when the process is still running after `patience`.
    std::optional<int> waitExit(std::chrono::milliseconds patience) {
        const auto until = std::chrono::steady_clock::now() + patience;
        while (!status_) {
            int status = 0;
            if (::waitpid(pid_, &status, WNOHANG) == pid_) {
                status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
                break;
            }
            if (std::chrono::steady_clock::now() >= until) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return status_;
    }

    std::string out() const { return read(stdout_); }
    std::string err() const { return read(stderr_); }

    // Waits until standard output (or error) holds `text`.
    bool waitForOutput(const std::string& text, std::chrono::milliseconds patience, bool error = false) const {
        const auto until = std::chrono::steady_clock::now() + patience;
        while ((error ? err() : out()).find(text) == std::string::npos) {
            if (std::chrono::steady_clock::now() >= until) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return true;
    }
    // Waits until the bridge is up with its facades, which the program
    // announces; a request before that gets the bridge's defaults.
    bool waitUntilServing(std::chrono::milliseconds patience = std::chrono::milliseconds(10000)) const {
        return waitForOutput("tessarine-sim: serving", patience, true);
    }
    // The process's resident set in KiB (VmRSS), or -1.
    long residentKib() const {
        std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
        for (std::string key; status >> key;)
            if (key == "VmRSS:") return status >> key ? std::stol(key) : -1;
        return -1;
    }

private:
    static std::string read(const std::string& path) {
        std::ifstream in(path);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }

    pid_t pid_ = -1;
    std::optional<int> status_;
    std::string stdout_;
    std::string stderr_;
};

}  // namespace testing
}  // namespace tessarine
