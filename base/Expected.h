#pragma once

#include <optional>
#include <utility>
#include <variant>

namespace clipwren {

// A value or an error: the part of C++23's std::expected that this program uses, with its member names,
// until both compilers carry it.

template <typename E>
struct Unexpected {
    E value;
};

template <typename E>
Unexpected(E) -> Unexpected<E>;

template <typename T, typename E>
class Expected {
public:
    Expected(T value) : content(std::in_place_index<0>, std::move(value)) {}
    Expected(Unexpected<E> unexpected) : content(std::in_place_index<1>, std::move(unexpected.value)) {}

    bool has_value() const { return content.index() == 0; }
    explicit operator bool() const { return has_value(); }

    // Calling the accessor of the absent side is a programming error and throws bad_variant_access.
    T& value() { return std::get<0>(content); }
    const T& value() const { return std::get<0>(content); }
    const E& error() const { return std::get<1>(content); }

    T& operator*() { return value(); }
    const T& operator*() const { return value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

private:
    std::variant<T, E> content;
};

template <typename E>
class Expected<void, E> {
public:
    Expected() = default;
    Expected(Unexpected<E> unexpected) : failure(std::move(unexpected.value)) {}

    bool has_value() const { return !failure.has_value(); }
    explicit operator bool() const { return has_value(); }
    const E& error() const { return failure.value(); }

private:
    std::optional<E> failure;
};

} // namespace clipwren
