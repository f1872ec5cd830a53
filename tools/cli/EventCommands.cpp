// watch: prints events as they arrive and answers application-state requests.
#include <atomic>
#include <csignal>
#include <iostream>
#include <limits>
#include <mutex>
#include <thread>

#include "Context.h"

namespace cli {

using namespace tessarine::client;

namespace {

std::atomic<bool> interrupted{false};
extern "C" void onSignal(int) { interrupted = true; }

Json rectangle(const Rectangle& r) { return Json{{"x", r.x}, {"y", r.y}, {"width", r.width}, {"height", r.height}}; }

// One line per event: JSON for scripts, "event  key=value ..." for people.
class EventPrinter {
public:
    explicit EventPrinter(bool json) : json_(json) {}

    void print(const std::string& event, Json fields) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (json_) {
            Json line{{"event", event}};
            line.update(fields);
            std::cout << line.dump() << std::endl;
        } else {
            std::string text = event;
            text.resize(std::max<std::size_t>(text.size() + 2, 18), ' ');
            for (const auto& item : fields.items()) {
                text += item.key() + "=" + (item.value().is_string() ? item.value().get<std::string>() : item.value().dump()) + " ";
            }
            text.pop_back();
            std::cout << text << std::endl;
        }
        ++count_;
    }
    int count() const { return count_.load(); }

private:
    bool json_;
    std::mutex mutex_;
    std::atomic<int> count_{0};
};

}  // namespace

void addEventCommands(CLI::App& app, Context& c) {
    static int appState = -1;
    static int count = 0;
    auto* watch = app.add_subcommand("watch", "print events as they arrive, until interrupted");
    watch->add_option("--app-state", appState, "answer application-state requests with this byte (default: 0)")
        ->check(CLI::Range(0, int{std::numeric_limits<std::uint8_t>::max()}));
    watch->add_option("--count", count, "stop after this many events")->check(CLI::NonNegativeNumber);
    watch->callback([&c] {
        std::signal(SIGINT, onSignal);
        std::signal(SIGTERM, onSignal);
        auto printer = std::make_shared<EventPrinter>(c.json);
        auto& client = c.control();
        client.onDownloadComplete([printer](const DownloadComplete& d) {
            printer->print("download-complete", Json{{"first", d.first}, {"second", d.second}});
        });
        client.onGraphicsSettings([printer](const GraphicsSettings& g) {
            printer->print("graphics-settings", Json{{"first", rectangle(g.first)}, {"second", rectangle(g.second)}});
        });
        client.onEndOfMedia([printer](const EndOfMedia& e) { printer->print("end-of-media", Json{{"handle", e.handle}}); });
        client.onDsmccCommand([printer](const DsmccCommand& d) {
            printer->print("dsmcc", Json{{"code", d.code}, {"value", d.value}, {"byte", d.byte}, {"text", d.text}});
        });
        client.onAppStateRequest([printer](std::int32_t state) {
            const std::uint8_t answer = appState < 0 ? 0 : static_cast<std::uint8_t>(appState);
            printer->print("app-state", Json{{"state", state}, {"answer", answer}});
            return answer;
        });
        // Waits for events; after a lost connection, connects again.
        bool reported = false;
        while (!interrupted && (count == 0 || printer->count() < count)) {
            if (!client.connected()) {
                auto connected = client.connect();
                if (!connected && !reported) {
                    std::cerr << "tessarine-cli: " << connected.error().message() << "; retrying" << std::endl;
                }
                reported = !connected;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(reported ? 500 : 20));
        }
        client.disconnect();
    });
}

}  // namespace cli
