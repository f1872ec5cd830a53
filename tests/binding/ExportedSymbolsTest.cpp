// The host finds the adapter by mangled names: exactly these members of the
// binding are in the library's dynamic symbol table, and the facade
// factories are left for the host to define.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>

namespace {

std::set<std::string> symbolsMatching(const std::string& options, const std::string& needle) {
    std::set<std::string> found;
    const std::string command = "nm -D -C " + options + " " TESSARINE_SHARED_LIBRARY;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return found;
    char line[4096];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        std::string text(line);
        if (!text.empty() && text.back() == '\n') text.pop_back();
        // Fixed columns on a 64-bit target: 16 address characters, the type, then the name.
        if (text.size() <= 19) continue;
        const std::string name = text.substr(19);
        if (name.find(needle) != std::string::npos) found.insert(name);
    }
    ::pclose(pipe);
    return found;
}

TEST(ExportedSymbols, OnlyTheHostEntryPointsOfTheAdapterAreExported) {
    const std::set<std::string> expected = {
        "MiddlewareIpc::getInstance()",
        "MiddlewareIpc::sendAppState(int)",
        "MiddlewareIpc::setVideoSize(int, int)",
        "MiddlewareIpc::getInitCropValue(ipcutil::Rectangle_t*, ipcutil::Rectangle_t*)",
        "MiddlewareIpc::~MiddlewareIpc()",
    };
    EXPECT_EQ(symbolsMatching("--defined-only", "MiddlewareIpc"), expected);
    EXPECT_TRUE(symbolsMatching("--defined-only", "tessarine::binding").empty());
}

TEST(ExportedSymbols, FacadeFactoriesAreTheHostsToDefine) {
    EXPECT_TRUE(symbolsMatching("--defined-only", "Facade::create").empty());
    EXPECT_EQ(symbolsMatching("--undefined-only", "Facade::create").size(), 8u);
}

}  // namespace
