#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <ostream>
#include <string>
#include <type_traits>

#include "tessarine/protocol/Codes.h"

namespace tessarine {
namespace sim {

// The request families of the control and section-filter channels, the
// application-state exchange and the stream-event commands.
enum class Family { Video, Audio, Property, Tuner, Carousel, Si, Media, Version, Demux, AppState, Dsmcc };
constexpr std::size_t FAMILY_COUNT = 11;

// One line per request served and per event sent: time stamp, family, code,
// short summary. Counts are kept also when quiet.
class RequestLog {
public:
    RequestLog(std::ostream& out, bool quiet) : out_(out), quiet_(quiet) {}

    // `code` is the request's code on its channel; NO_CODE for operations
    // that only in-process callers reach.
    static constexpr int NO_CODE = -1;

    // `summary` is a text, or a callable that returns one: it is called only
    // when lines are written, so a quiet log formats nothing per request.
    template <typename Summary>
    void request(Family family, int code, const Summary& summary) {
        if constexpr (std::is_invocable_v<const Summary&>) {
            requestLine(family, code, quiet_ ? std::string() : std::string(summary()));
        } else {
            requestLine(family, code, summary);
        }
    }
    void event(Family family, int code, const std::string& summary);
    // A line that is neither (for example a notice nobody could receive).
    void note(const std::string& text);

    std::array<std::uint64_t, FAMILY_COUNT> requestCounts() const;
    std::uint64_t eventCount() const;

    static const char* name(Family family);

private:
    void requestLine(Family family, int code, const std::string& summary);
    void write(const char* kind, Family family, int code, const std::string& summary);

    std::ostream& out_;
    const bool quiet_;
    mutable std::mutex mutex_;
    std::array<std::uint64_t, FAMILY_COUNT> requests_{};
    std::uint64_t events_ = 0;
};

}  // namespace sim
}  // namespace tessarine
