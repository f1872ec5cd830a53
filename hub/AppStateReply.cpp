#include "hub/AppStateReply.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace tessarine {

namespace {

// Statically initialised, so it exists before any hub and outlives them all.
struct ReplyState {
    std::mutex lock;
    std::condition_variable changed;
    bool busy = false;        // an exchange runs; the others wait their turn
    bool sending = false;     // the running exchange is inside `send`
    bool arrived = false;
    bool ended = false;       // the connection ended since the request went out
    unsigned char byte = 0;
    std::uint64_t hubEpoch = 0;  // advanced by every hub destruction
};

ReplyState& state() {
    static ReplyState reply;
    return reply;
}

}  // namespace

int AppStateReply::exchange(const std::function<bool()>& send) {
    ReplyState& reply = state();
    std::unique_lock<std::mutex> lock(reply.lock);
    const std::uint64_t epoch = reply.hubEpoch;
    reply.changed.wait(lock, [&] { return !reply.busy || reply.hubEpoch != epoch; });
    if (reply.hubEpoch != epoch) return 0;  // the hub died while we queued
    reply.busy = true;
    reply.sending = true;
    reply.arrived = false;
    reply.ended = false;
    reply.byte = 0;

    lock.unlock();
    const bool sent = send();
    lock.lock();

    reply.sending = false;
    reply.changed.notify_all();  // a destruction may wait for the send to finish
    if (sent) {
        // The flags are tested before the first wait, so an answer that came
        // in during the send is not missed.
        reply.changed.wait(lock, [&] { return reply.arrived || reply.ended || reply.hubEpoch != epoch; });
    }
    const int result = sent && reply.arrived ? reply.byte : 0;
    reply.busy = false;
    reply.changed.notify_all();
    return result;
}

void AppStateReply::answer(unsigned char byte) {
    ReplyState& reply = state();
    {
        std::lock_guard<std::mutex> lock(reply.lock);
        reply.byte = byte;
        reply.arrived = true;
    }
    reply.changed.notify_all();
}

void AppStateReply::connectionEnded() {
    ReplyState& reply = state();
    {
        std::lock_guard<std::mutex> lock(reply.lock);
        reply.ended = true;
    }
    reply.changed.notify_all();
}

void AppStateReply::hubDestroyed() {
    ReplyState& reply = state();
    std::unique_lock<std::mutex> lock(reply.lock);
    ++reply.hubEpoch;
    reply.changed.notify_all();
    reply.changed.wait(lock, [&] { return !reply.sending; });
}

}  // namespace tessarine
