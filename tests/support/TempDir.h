#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace tessarine {
namespace testing {

// A private directory for a test's sockets, removed with everything in it.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tessarine-XXXXXX").string();
        if (::mkdtemp(pattern.data()) != nullptr) path_ = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// How many entries a directory holds: /proc/self/fd and /proc/self/task
// show leaked descriptors and threads.
inline std::size_t entriesIn(const std::string& directory) {
    const std::filesystem::directory_iterator all(directory);
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

// The process's resident set in bytes, from /proc/self/statm.
inline std::size_t residentBytes() {
    std::ifstream statm("/proc/self/statm");
    std::size_t pages = 0, resident = 0;
    statm >> pages >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace testing
}  // namespace tessarine
