#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace tessarine {
namespace protocol {

// A view of one of the protocol's constant tables, so that a program (a
// dissector generator, a test harness) can walk it with a range for.
template <typename Row>
struct Table {
    const Row* first = nullptr;
    std::size_t count = 0;

    constexpr const Row* begin() const { return first; }
    constexpr const Row* end() const { return first + count; }
    constexpr std::size_t size() const { return count; }
    constexpr bool empty() const { return count == 0; }
    constexpr const Row& operator[](std::size_t i) const { return first[i]; }
};

template <typename Row, std::size_t N>
constexpr Table<Row> table(const Row (&rows)[N]) {
    return {rows, N};
}

// The code of a row that stands for every code of its type that has no row
// of its own (the code then carries a value: a flag, a state, a selector).
inline constexpr std::int32_t ANY_CODE = std::numeric_limits<std::int32_t>::min();

// The row of `code` in a table with one row per code from 0, in order; null
// for a code outside it (negative ones too).
template <typename Row, std::size_t N>
constexpr const Row* rowOf(const Row (&rows)[N], std::int32_t code) {
    const auto index = static_cast<std::uint32_t>(code);
    return index < N ? &rows[index] : nullptr;
}

// Whether a table has one row per code from 0, in order (`code` reads a row's).
template <typename Row, std::size_t N, typename Code>
constexpr bool inCodeOrder(const Row (&rows)[N], Code code) {
    for (std::size_t i = 0; i < N; ++i) {
        if (static_cast<std::size_t>(code(rows[i])) != i) return false;
    }
    return true;
}

// Whether two names are equal, in constant expressions.
constexpr bool sameName(const char* a, const char* b) {
    while (*a != '\0' && *a == *b) {
        ++a;
        ++b;
    }
    return *a == *b;
}

}  // namespace protocol
}  // namespace tessarine
