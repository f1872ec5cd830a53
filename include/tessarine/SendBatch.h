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
class TESSARINE_API SendBatch {
public:
    // Appends one whole record (its 1960 bytes as they stand now).
    void add(const message& record);
    // Appends raw bytes that follow a record (trailing data).
    void addRaw(const void* data, std::size_t length);

    // The bytes as they will appear on the stream.
    const std::vector<unsigned char>& bytes() const { return bytes_; }
    bool empty() const { return pieces_.empty(); }
    std::size_t byteCount() const { return bytes_.size(); }
    std::size_t pieceCount() const { return pieces_.size(); }
    void clear();

private:
    friend class IpcServer;
    // A piece is one logical send: it is reported on its own when it fails.
    struct Piece {
        std::size_t end;  // one past the piece's last byte in bytes_
        bool raw;
    };
    std::vector<unsigned char> bytes_;
    std::vector<Piece> pieces_;
};

}  // namespace tessarine
