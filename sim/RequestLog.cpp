#include "sim/RequestLog.h"

#include <chrono>
#include <ctime>
#include <iomanip>
#include <sstream>

namespace tessarine {
namespace sim {

namespace {

std::string timeStamp() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm local{};
    localtime_r(&seconds, &local);
    std::ostringstream text;
    text << std::put_time(&local, "%H:%M:%S") << '.' << std::setw(3) << std::setfill('0') << millis;
    return text.str();
}

}  // namespace

const char* RequestLog::name(Family family) {
    static const char* const names[FAMILY_COUNT] = {"video", "audio", "property", "tuner",  "carousel",
                                                    "si",    "media", "version",  "demux", "appstate", "dsmcc"};
    return names[static_cast<std::size_t>(family)];
}

void RequestLog::requestLine(Family family, int code, const std::string& summary) {
    std::lock_guard<std::mutex> lock(mutex_);
    ++requests_[static_cast<std::size_t>(family)];
    write("request", family, code, summary);
}

void RequestLog::event(Family family, int code, const std::string& summary) {
    std::lock_guard<std::mutex> lock(mutex_);
    ++events_;
    write("event", family, code, summary);
}

void RequestLog::note(const std::string& text) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!quiet_) out_ << timeStamp() << " note " << text << std::endl;
}

void RequestLog::write(const char* kind, Family family, int code, const std::string& summary) {
    if (quiet_) return;
    // One insertion per line keeps lines whole even beside other writers.
    std::ostringstream line;
    line << timeStamp() << ' ' << kind << ' ' << name(family) << ' ';
    if (code == NO_CODE)
        line << '-';
    else
        line << code;
    line << ' ' << summary << '\n';
    out_ << line.str() << std::flush;
}

std::array<std::uint64_t, FAMILY_COUNT> RequestLog::requestCounts() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
}

std::uint64_t RequestLog::eventCount() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return events_;
}

}  // namespace sim
}  // namespace tessarine
