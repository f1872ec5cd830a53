#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "Output.h"
#include "tessarine/client/ControlClient.h"

namespace cli {

// Prints events as they arrive, one line each: JSON for scripts,
// "time  event  key=value ..." for people. Shared by watch and shell.
class EventPrinter {
public:
    EventPrinter(bool json, bool timestamps, std::string only) : json_(json), timestamps_(timestamps), only_(std::move(only)) {}

    // The event kinds that the client library reports, as printed.
    static const char* const KINDS[];

    // Registers a handler for every event kind on the client; application-state
    // requests are answered with appState.
    static void subscribe(tessarine::client::ControlClient& client, const std::shared_ptr<EventPrinter>& printer,
                          std::uint8_t appState);

    void print(const std::string& event, Json fields);
    // Waits until count events were printed or the time limit passed (0: no limit); false on time-out.
    bool waitFor(int count, int timeoutMs, const std::atomic<bool>& interrupted);
    int count() const;

private:
    bool json_;
    bool timestamps_;
    std::string only_;  // empty: every kind
    mutable std::mutex mutex_;
    std::condition_variable printed_;
    int count_ = 0;
};

}  // namespace cli
