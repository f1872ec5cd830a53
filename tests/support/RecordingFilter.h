#pragma once

#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/EventLog.h"
#include "tessarine/IpcDemuxServerListener.h"

namespace tessarine {
namespace testing {

using Bytes = std::vector<unsigned char>;

inline std::string hex(const Bytes& bytes) {
    std::string out;
    char two[3];
    for (unsigned char b : bytes) {
        std::snprintf(two, sizeof two, "%02x", b);
        out += two;
    }
    return out;
}

// A section filter that logs every command with its arguments ("pid 18",
// "xor 4 [01] [02] [0304]"); read_section hands out `section`, or waits
// until released when `holdSections` is set.
class RecordingFilter : public IpcDemuxServerListener {
public:
    Bytes section;
    bool holdSections = false;
    bool failReads = false;  // read_section throws, as a failing facade might

    EventLog<std::string> calls;

    void release() {
        std::lock_guard<std::mutex> lock(mutex_);
        holdSections = false;
        released_.notify_all();
    }

    void start() override { note("start"); }
    void stop() override { note("stop"); }
    void set_pid(int pid) override { note("pid " + std::to_string(pid)); }
    void set_table_id(int id) override { note("table " + std::to_string(id)); }
    void set_positive_filter(int v, const Bytes& a, const Bytes& b) override { filter("positive", v, {a, b}); }
    void set_greater_than_filter(int v, const Bytes& a, const Bytes& b) override { filter("greater", v, {a, b}); }
    void set_less_than_filter(int v, const Bytes& a, const Bytes& b) override { filter("less", v, {a, b}); }
    void set_xor_filter(int v, const Bytes& a, const Bytes& b, const Bytes& c) override { filter("xor", v, {a, b, c}); }
    void set_time_out(long t) override { note("timeout " + std::to_string(t)); }
    void clear_table_id() override { note("clear table"); }
    void clear_positive_filter() override { note("clear positive"); }
    void clear_less_than_filter() override { note("clear less"); }
    void clear_xor_filter() override { note("clear xor"); }
    Bytes read_section() override {
        std::unique_lock<std::mutex> lock(mutex_);
        released_.wait(lock, [&] { return !holdSections; });
        if (failReads) throw std::runtime_error("no tuner");
        return section;
    }

private:
    void note(const std::string& line) { calls.push(line); }
    void filter(const char* name, int value, std::initializer_list<Bytes> strings) {
        std::string line = std::string(name) + " " + std::to_string(value);
        for (const Bytes& s : strings) line += " [" + hex(s) + "]";
        note(line);
    }

    std::mutex mutex_;
    std::condition_variable released_;
};

}  // namespace testing
}  // namespace tessarine
