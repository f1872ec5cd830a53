#pragma once

#include <functional>

namespace tessarine {

// The process-wide exchange of the application-state request: one request
// in flight at a time, answered by the client's MSG_APP_STATE record. Its
// lock is never held together with another lock.
class AppStateReply {
public:
    // Waits until no other exchange runs, calls `send` (false: the request
    // did not go out) and waits for the answer. Returns the answer byte, or 0
    // when the request was not sent, the client's connection ended, or the
    // hub was destroyed meanwhile. After a wait ended by the hub's
    // destruction nothing of the hub may be touched, so `send` is the only
    // part of the hub that this uses.
    static int exchange(const std::function<bool()>& send);

    // The client's answer (byte 12 of its record). Kept also when it arrives
    // before the requester has begun to wait.
    static void answer(unsigned char byte);

    // The client's connection ended: a pending request gets no answer.
    static void connectionEnded();

    // The hub is going away: ends every wait and returns once no exchange is
    // sending through it any more.
    static void hubDestroyed();
};

}  // namespace tessarine
