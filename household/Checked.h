#pragma once

#include <optional>
#include <string>
#include <utility>

// A value built from settings the user typed, or the reason they were
// refused: the Japanese message the window shows as it is.
template <typename T>
class Checked {
public:
    static Checked accepted(T value) { return Checked(std::move(value), {}); }
    static Checked refused(std::string message) { return Checked(std::nullopt, std::move(message)); }

    bool ok() const { return value_.has_value(); }
    explicit operator bool() const { return ok(); }
    // The value; only when ok().
    const T& value() const { return *value_; }
    const T* operator->() const { return &*value_; }
    // The message; empty when ok().
    const std::string& refusal() const { return refusal_; }

private:
    Checked(std::optional<T> value, std::string refusal) : value_(std::move(value)), refusal_(std::move(refusal)) {}

    std::optional<T> value_;
    std::string refusal_;
};
