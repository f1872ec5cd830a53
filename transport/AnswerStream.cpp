#include "transport/AnswerStream.h"

#include "tessarine/IpcServer.h"

namespace tessarine {

AnswerStream::AnswerStream(IpcServer& server) : server_(server), hold_(server.sendLock_) {}

AnswerStream::~AnswerStream() { finish(); }

bool AnswerStream::appended() {
    if (byteCount() >= FLUSH_SIZE || failed_) flush();
    return !failed_;
}

void AnswerStream::flush() {
    if (!failed_ && !empty()) failed_ = !server_.sendLocked(*this);
    clear();  // the buffer keeps its capacity for the next piece
}

bool AnswerStream::finish() {
    if (hold_.owns_lock()) {
        flush();
        hold_.unlock();
    }
    return !failed_;
}

}  // namespace tessarine
