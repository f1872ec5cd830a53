#include "transport/AnswerStream.h"

#include <algorithm>

#include "tessarine/IpcServer.h"

namespace tessarine {

namespace {
// Each thread's answers reuse the buffers its previous answer grew (at most
// LARGEST_PIECE and a piece): a list no longer reallocates and copies its
// bytes several times over, nor faults in fresh pages, on every answer.
thread_local SendBatch spare;
}  // namespace

AnswerStream::AnswerStream(IpcServer& server) : server_(server), hold_(server.sendLock_) { swapStorage(spare); }

AnswerStream::~AnswerStream() {
    finish();
    swapStorage(spare);
}

bool AnswerStream::appended() {
    if (byteCount() >= pieceSize_ || failed_) {
        flush();
        pieceSize_ = std::min(pieceSize_ * 2, LARGEST_PIECE);
    }
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
