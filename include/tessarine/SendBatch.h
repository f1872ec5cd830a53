#pragma once

#include <cstddef>
#include <vector>

#include "tessarine/Export.h"
#include "tessarine/message.h"

namespace tessarine {

// Several records and pieces of raw data that must leave contiguously on the
// control stream (a list, a record with its trailing data, a chunked text).
// IpcServer::send() writes the whole batch under one hold of its send lock,
// so an event sent from another thread lands before or after it, never inside.
// An AnswerStream is a batch that leaves while it is being built.
class TESSARINE_API SendBatch {
public:
    SendBatch() = default;
    virtual ~SendBatch() = default;
    SendBatch(const SendBatch&) = delete;
    SendBatch& operator=(const SendBatch&) = delete;

    // Appends one whole record (its 1960 bytes as they stand now). False once
    // nothing more can go out (a streamed answer whose connection failed), so
    // that an encoder stops early.
    bool add(const message& record);
    // Appends raw bytes that follow a record (trailing data); false as add().
    bool addRaw(const void* data, std::size_t length);

    // The bytes as they will appear on the stream (of a stream: not sent yet).
    const std::vector<unsigned char>& bytes() const { return bytes_; }
    bool empty() const { return pieces_.empty(); }
    std::size_t byteCount() const { return bytes_.size(); }
    std::size_t pieceCount() const { return pieces_.size(); }
    void clear();

protected:
    // Called after each piece is appended; its result is add()'s.
    virtual bool appended() { return true; }
    // Exchanges contents and buffers with `other`, so a batch can lend its
    // grown buffers to the next one instead of growing new ones.
    void swapStorage(SendBatch& other) {
        bytes_.swap(other.bytes_);
        pieces_.swap(other.pieces_);
    }

private:
    friend class IpcServer;
    // A piece is one logical send: the first one that fails is reported.
    struct Piece {
        std::size_t end;  // one past the piece's last byte in bytes_
        bool raw;
    };
    std::vector<unsigned char> bytes_;
    std::vector<Piece> pieces_;
};

}  // namespace tessarine
