#pragma once

#include <cstddef>
#include <mutex>

#include "tessarine/SendBatch.h"

namespace tessarine {

class IpcServer;

// A multi-part answer sent while it is built: it holds the server's send lock
// from construction to finish(), so the answer stays contiguous on the stream,
// and sends a piece whenever enough bytes are waiting, so its memory stays
// bounded whatever the answer's length. After a failed send (the connection is
// then dropped) nothing more is attempted and add() returns false.
class AnswerStream final : public SendBatch {
public:
    // The first piece is small, so that the client starts decoding early
    // (a whole quarter of a MiB first made a 1000-item list 10% slower);
    // each later piece is twice the last, up to LARGEST_PIECE (the client
    // library's read buffer), so that a long list costs a send per 256 KiB,
    // not per 64 KiB, on both ends.
    static constexpr std::size_t FIRST_PIECE = 64 * 1024;
    static constexpr std::size_t LARGEST_PIECE = 256 * 1024;

    explicit AnswerStream(IpcServer& server);
    // Finishes the answer if finish() was not called.
    ~AnswerStream() override;

    // Sends what is left and releases the send lock; true when the whole
    // answer went out. Later calls return the same result.
    bool finish();

private:
    bool appended() override;
    void flush();

    IpcServer& server_;
    std::unique_lock<std::mutex> hold_;
    bool failed_ = false;
    std::size_t pieceSize_ = FIRST_PIECE;  // bytes that make the next piece leave
};

}  // namespace tessarine
