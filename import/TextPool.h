#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// A place in a TextPool: where a text starts and how many bytes it has.
struct TextRef {
    uint32_t offset = 0;
    uint32_t size = 0;
    bool empty() const { return size == 0; }
};

// All texts of a statement's rows in one buffer, so that a million rows cost
// one allocation growth pattern instead of several strings each.
class TextPool {
public:
    TextRef add(std::string_view text)
    {
        if (text.empty()) return {};
        const TextRef ref{static_cast<uint32_t>(buffer_.size()), static_cast<uint32_t>(text.size())};
        buffer_.append(text);
        return ref;
    }
    std::string_view view(TextRef ref) const { return std::string_view(buffer_).substr(ref.offset, ref.size); }
    size_t bytes() const { return buffer_.size(); }

private:
    std::string buffer_;
};
