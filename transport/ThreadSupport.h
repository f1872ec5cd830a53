#pragma once

#include <exception>
#include <system_error>
#include <thread>
#include <utility>

#include "transport/Diagnostics.h"

namespace tessarine {

// Runs host code (a listener, and through it a facade) on a bridge thread.
// An exception escaping a thread would end the host process, so it is
// reported on stderr and the thread goes on. True when `work` returned.
template <typename Work>
bool runGuarded(const char* what, Work&& work) noexcept {
    try {
        std::forward<Work>(work)();
        return true;
    } catch (const std::exception& error) {
        Diagnostics::failure(what, error.what());
    } catch (...) {
        Diagnostics::failure(what, "unknown exception");
    }
    return false;
}

// Starts `thread`; false, with "Can't create thread" on stderr, when the
// system refuses one (std::thread would throw into the host).
template <typename... Args>
bool startThread(std::thread& thread, Args&&... args) noexcept {
    try {
        thread = std::thread(std::forward<Args>(args)...);
        return true;
    } catch (const std::system_error& error) {
        Diagnostics::failure("Can't create thread", error.what());
        return false;
    }
}

}  // namespace tessarine
