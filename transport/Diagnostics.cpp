#include "transport/Diagnostics.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tessarine {

namespace {

void writeLine(std::FILE* stream, std::string line) {
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stream);
    std::fflush(stream);
}

}  // namespace

void Diagnostics::systemError(const char* text) {
    const int error = errno;
    char buffer[256];
    // The GNU strerror_r: thread-safe, returns the text (maybe not in buffer).
    const char* reason = strerror_r(error, buffer, sizeof buffer);
    writeLine(stderr, std::string(text) + ": " + reason);
    errno = error;
}

void Diagnostics::unknown(const char* text, long long number) {
    writeLine(stderr, text + std::to_string(number));
}

void Diagnostics::failure(const char* what, const std::string& detail) {
    writeLine(stderr, std::string(what) + ": " + detail);
}

void Diagnostics::trace(const std::string& line) { writeLine(stdout, line); }

}  // namespace tessarine
