// The library's whole exported surface: the host finds the adapter by
// mangled names, and anything else that leaves the library is a leak.
#include <gtest/gtest.h>

#include <sstream>
#include <set>
#include <string>

#include "support/Command.h"

namespace {

std::set<std::string> symbolsMatching(const std::string& options, const std::string& needle) {
    std::set<std::string> found;
    // TESSARINE_PATH: the shared library as built.
    std::istringstream lines(tessarine::testing::runCommand("nm -D -C " + options + " " TESSARINE_PATH).out);
    for (std::string text; std::getline(lines, text);) {
        // Fixed columns on a 64-bit target: 16 address characters, the type, then the name.
        if (text.size() <= 19) continue;
        const std::string name = text.substr(19);
        if (name.find(needle) != std::string::npos) found.insert(name);
    }
    return found;
}

// The class a symbol belongs to: "typeinfo for X" and "vtable for X" are
// X's, "X::member(...)" is X's.
std::string classOf(std::string name) {
    for (const char* prefix : {"typeinfo name for ", "typeinfo for ", "vtable for "}) {
        if (name.rfind(prefix, 0) == 0) return name.substr(std::string(prefix).size());
    }
    name = name.substr(0, name.find('('));
    const std::size_t member = name.rfind("::");
    return member == std::string::npos ? name : name.substr(0, member);
}

TEST(ExportedSymbols, TheLibraryExportsItsPromisedSurfaceAndNothingElse) {
    const std::set<std::string> adapter = {
        "MiddlewareIpc::getInstance()",
        "MiddlewareIpc::sendAppState(int)",
        "MiddlewareIpc::setVideoSize(int, int)",
        "MiddlewareIpc::getInitCropValue(ipcutil::Rectangle_t*, ipcutil::Rectangle_t*)",
        "MiddlewareIpc::~MiddlewareIpc()",
        "typeinfo for MiddlewareIpc",
        "typeinfo name for MiddlewareIpc",
    };
    // The classes that the headers mark for export (interfaces appear only as
    // far as the compiler emits their type information), and the type
    // information of the middleware's interfaces.
    const std::set<std::string> promised = {
        "tessarine::IpcServer", "tessarine::IpcDemuxServer", "tessarine::IpcServerManager",
        "tessarine::SendBatch", "tessarine::IpcListener", "tessarine::IpcServerListener",
        "tessarine::IpcDemuxServerListener", "tessarine::ConnectionListener",
    };
    std::set<std::string> adapterFound, classesFound, leaked;
    for (const std::string& name : symbolsMatching("--defined-only", "")) {
        const std::string owner = classOf(name);
        if (owner == "MiddlewareIpc") adapterFound.insert(name);
        else if (promised.count(owner) != 0) classesFound.insert(owner);
        else if (name.rfind("typeinfo", 0) != 0 || owner.rfind("middlewarefacade::", 0) != 0) leaked.insert(name);
    }
    EXPECT_EQ(adapterFound, adapter);
    EXPECT_EQ(leaked, std::set<std::string>{});
    for (const char* concrete : {"tessarine::IpcServer", "tessarine::IpcDemuxServer", "tessarine::IpcServerManager",
                                 "tessarine::SendBatch"}) {
        EXPECT_EQ(classesFound.count(concrete), 1u) << concrete;
    }
}

TEST(ExportedSymbols, FacadeFactoriesAreTheHostsToDefine) {
    EXPECT_TRUE(symbolsMatching("--defined-only", "Facade::create").empty());
    EXPECT_EQ(symbolsMatching("--undefined-only", "Facade::create").size(), 8u);
}

}  // namespace
