#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quobrix {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// Reads little-endian values from bytes from outside and cannot overrun: past the end it yields zeros and remembers
/// it. The caller asks complete() once, before believing anything.
class ByteReader {
public:
    explicit ByteReader(ByteView bytes) : bytes_(bytes) {}

    std::uint8_t u8() { return static_cast<std::uint8_t>(little(1)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(little(2)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(little(4)); }
    std::uint64_t u64() { return little(8); }
    std::int32_t i32() { return static_cast<std::int32_t>(u32()); }
    double f64() { return std::bit_cast<double>(u64()); }

    /// The next COUNT bytes; empty (and incomplete) if fewer are left.
    ByteView bytes(std::size_t count) {
        if (count > remaining()) {
            position_ = bytes_.size();
            complete_ = false;
            return {};
        }
        const ByteView result = bytes_.subspan(position_, count);
        position_ += count;
        return result;
    }

    /// A text written by ByteWriter::text: u32 length, then that many bytes.
    std::string text() {
        const std::uint32_t length = u32();
        const ByteView view = bytes(length);
        return {view.begin(), view.end()};
    }

    /// A count of elements of at least ELEMENT_SIZE bytes each; 0 (and incomplete) when they cannot all be there, so
    /// that nothing is allocated beyond what the input holds.
    std::uint32_t count(std::size_t elementSize) {
        const std::uint32_t value = u32();
        if (!complete_ || value > remaining() / elementSize) {
            complete_ = false;
            return 0;
        }
        return value;
    }

    std::size_t remaining() const { return bytes_.size() - position_; }
    /// Everything read so far was really there.
    bool complete() const { return complete_; }
    /// Everything was there, and nothing is left over.
    bool finished() const { return complete_ && remaining() == 0; }
    /// Marks the input as bad for a reason the reader itself cannot see.
    void fail() { complete_ = false; }

private:
    std::uint64_t little(std::size_t width) {
        const ByteView view = bytes(width);
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < view.size(); ++i)
            value |= static_cast<std::uint64_t>(view[i]) << (8 * i);
        return value;
    }

    ByteView bytes_;
    std::size_t position_ = 0;
    bool complete_ = true;
};

/// Appends little-endian values to a growing buffer.
class ByteWriter {
public:
    /// Room for SIZE bytes, so that the buffer need not grow in steps.
    void reserve(std::size_t size) { bytes_.reserve(size); }

    void u8(std::uint8_t value) { bytes_.push_back(value); }
    void u16(std::uint16_t value) { little(value, 2); }
    void u32(std::uint32_t value) { little(value, 4); }
    void u64(std::uint64_t value) { little(value, 8); }
    void i32(std::int32_t value) { u32(static_cast<std::uint32_t>(value)); }
    void f64(double value) { u64(std::bit_cast<std::uint64_t>(value)); }
    void bytes(ByteView view) { bytes_.insert(bytes_.end(), view.begin(), view.end()); }
    void text(std::string_view value) {
        u32(static_cast<std::uint32_t>(value.size()));
        bytes_.insert(bytes_.end(), value.begin(), value.end());
    }

    const Bytes& view() const { return bytes_; }
    Bytes take() { return std::move(bytes_); }

private:
    void little(std::uint64_t value, std::size_t width) {
        const std::size_t at = bytes_.size();
        bytes_.resize(at + width);
        for (std::size_t i = 0; i < width; ++i)
            bytes_[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }

    Bytes bytes_;
};

} // namespace quobrix
