#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

// A 128-bit identifier: a book's id and each installation's id. Written in
// file names and folder names as the usual 36-character lower-case text.
struct Uuid {
    std::array<uint8_t, 16> bytes{};

    // A new random (version 4) id from the system's random source.
    static Uuid generate();
    // The id written as text, or nothing when text is not exactly one.
    static std::optional<Uuid> parse(const std::string& text);
    std::string text() const;
    bool isNil() const;

    auto operator<=>(const Uuid&) const = default;
};
