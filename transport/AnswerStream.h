#pragma once

#include <cstddef>
#include <mutex>

#include "tessarine/SendBatch.h"

namespace tessarine {

class IpcServer;

// A multi-part answer sent while it is built: it holds the server's send lock
// from construction to finish(), so the answer stays contiguous on the stream,
// and sends whenever FLUSH_SIZE bytes are waiting, so its memory stays bounded
// whatever the answer's length. After a failed send (the connection is then
// dropped) nothing more is attempted and add() returns false.
class AnswerStream final : public SendBatch {
public:
    // The size of the client library's read buffer: the client decodes one
    // piece while the next is encoded (with 256 KiB a 1000-item list took
    // 10% longer, the client waiting for a quarter of a MiB at a time).
    static constexpr std::size_t FLUSH_SIZE = 64 * 1024;

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
};

}  // namespace tessarine
