#pragma once

#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>

namespace quobrix {

/// Appends texts to a buffer and stops at the first one that does not fit, so that no character is cut.
class TextWriter {
public:
    explicit TextWriter(std::span<char> buffer) : buffer_(buffer) {}

    void append(std::string_view text) {
        if (text.size() > buffer_.size() - size_) {
            buffer_ = buffer_.first(size_); // full from here on, or a later, shorter text would slip in behind the gap
        } else if (!text.empty()) {
            std::memcpy(buffer_.data() + size_, text.data(), text.size());
            size_ += text.size();
        }
    }
    std::string_view text() const { return {buffer_.data(), size_}; }

private:
    std::span<char> buffer_;
    std::size_t size_ = 0;
};

} // namespace quobrix
