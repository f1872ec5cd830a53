#pragma once

#include <mutex>
#include <set>
#include <type_traits>
#include <utility>

namespace tessarine {

// The rules by which the hub asks its listeners, written once. Each rule
// holds the listener lock for its whole visit, so a registry change waits for
// a fan-out that has begun, and visits the registry in its order (ascending
// address). With no listener every rule yields its preset.
template <typename Listener>
class FanOut {
public:
    FanOut(std::mutex& lock, const std::set<Listener*>& listeners) : lock_(lock), listeners_(listeners) {}

    // The core: visits the listeners in order until `visit` reports done.
    template <typename Visit>
    void untilDone(Visit&& visit) const {
        std::lock_guard<std::mutex> hold(lock_);
        for (Listener* listener : listeners_) {
            if (visit(*listener)) return;
        }
    }

    // all: every listener once. Out-parameters are shared, so a later
    // listener's writes replace an earlier one's.
    template <typename Call>
    void all(Call&& call) const {
        untilDone([&](Listener& listener) {
            call(listener);
            return false;
        });
    }

    // Each answer replaces the result whole; the visit stops once the result
    // is acceptable. An unacceptable last answer is what is returned.
    template <typename Result, typename Ask, typename Acceptable>
    Result firstAcceptable(Result preset, Ask&& ask, Acceptable&& acceptable) const {
        Result result = std::move(preset);
        untilDone([&](Listener& listener) {
            result = ask(listener);
            return acceptable(result);
        });
        return result;
    }

    // first valid: the first answer other than -1.
    template <typename Ask>
    int firstValid(Ask&& ask) const {
        return firstAcceptable(-1, ask, [](int answer) { return answer != -1; });
    }

    // first true: the first non-zero answer; false (0) otherwise.
    template <typename Ask>
    auto firstTrue(Ask&& ask) const {
        using Result = std::decay_t<std::invoke_result_t<Ask&, Listener&>>;
        return firstAcceptable(Result{}, ask, [](const Result& answer) { return answer != Result{}; });
    }

    // first non-empty: the first non-empty string or list.
    template <typename Ask>
    auto firstNonEmpty(Ask&& ask) const {
        using Result = std::decay_t<std::invoke_result_t<Ask&, Listener&>>;
        return firstAcceptable(Result{}, ask, [](const Result& answer) { return !answer.empty(); });
    }

    // first complete: the first record whose marker field is not -1. The
    // preset is a cleared record whose marker is -1.
    template <typename Record, typename Ask>
    Record firstComplete(int Record::*marker, Ask&& ask) const {
        Record preset{};
        preset.*marker = -1;
        return firstAcceptable(std::move(preset), ask, [marker](const Record& answer) { return answer.*marker != -1; });
    }

private:
    std::mutex& lock_;
    const std::set<Listener*>& listeners_;
};

}  // namespace tessarine
