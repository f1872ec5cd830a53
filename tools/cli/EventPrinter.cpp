#include "EventPrinter.h"

#include <chrono>
#include <cstring>
#include <ctime>
#include <iostream>

namespace cli {

using namespace tessarine::client;

namespace {

// Local wall-clock time with milliseconds, as people read logs.
std::string now() {
    const auto time = std::chrono::system_clock::now();
    const auto seconds = std::chrono::system_clock::to_time_t(time);
    const auto millis =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[40];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    char full[48];
    std::snprintf(full, sizeof full, "%s.%03dZ", text, static_cast<int>(millis));
    return full;
}

}  // namespace

const char* const EventPrinter::KINDS[] = {"download-complete", "graphics-settings", "end-of-media", "dsmcc", "app-state",
                                           nullptr};

void EventPrinter::subscribe(ControlClient& client, const std::shared_ptr<EventPrinter>& printer, std::uint8_t appState) {
    client.onDownloadComplete([printer](const DownloadComplete& d) {
        printer->print("download-complete", Json{{"first", d.first}, {"second", d.second}});
    });
    client.onGraphicsSettings([printer](const GraphicsSettings& g) {
        printer->print("graphics-settings", Json{{"first", rectangleJson(g.first)}, {"second", rectangleJson(g.second)}});
    });
    client.onEndOfMedia([printer](const EndOfMedia& e) { printer->print("end-of-media", Json{{"handle", e.handle}}); });
    client.onDsmccCommand([printer](const DsmccCommand& d) {
        printer->print("dsmcc", Json{{"code", d.code}, {"value", d.value}, {"byte", d.byte}, {"text", d.text}});
    });
    client.onAppStateRequest([printer, appState](std::int32_t state) {
        printer->print("app-state", Json{{"state", state}, {"answer", appState}});
        return appState;
    });
}

void EventPrinter::print(const std::string& event, Json fields) {
    if (!only_.empty() && event != only_) return;
    std::lock_guard<std::mutex> lock(mutex_);
    if (json_) {
        Json line{{"event", event}};
        if (timestamps_) line["time"] = now();
        line.update(fields);
        std::cout << line.dump() << std::endl;
    } else {
        // Fields start in one column: after the longest kind and two spaces.
        static const std::size_t kindWidth = [] {
            std::size_t widest = 0;
            for (const char* const* kind = KINDS; *kind; ++kind) widest = std::max(widest, std::strlen(*kind));
            return widest;
        }();
        std::string text = (timestamps_ ? now() + "  " : std::string()) + event;
        text.resize(text.size() - event.size() + std::max(kindWidth, event.size()) + 2, ' ');
        for (const auto& item : fields.items()) {
            text += item.key() + "=" + (item.value().is_string() ? item.value().get<std::string>() : item.value().dump()) + " ";
        }
        text.pop_back();
        std::cout << text << std::endl;
    }
    ++count_;
    printed_.notify_all();
}

bool EventPrinter::waitFor(int count, int timeoutMs, const std::atomic<bool>& interrupted) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    std::unique_lock<std::mutex> lock(mutex_);
    // Wakes now and then to notice an interruption by a signal.
    while (!interrupted && (count == 0 || count_ < count)) {
        if (timeoutMs > 0 && std::chrono::steady_clock::now() >= deadline) return false;
        printed_.wait_for(lock, std::chrono::milliseconds(20));
    }
    return count == 0 || count_ >= count;
}

int EventPrinter::count() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return count_;
}

}  // namespace cli
