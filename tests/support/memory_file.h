#pragma once

#include "platform/file.h"

#include <algorithm>

namespace quobrix::test {

/// A file in memory. Several may share the bytes, so a test can look at them and open them again.
class MemoryFile final : public File {
public:
    explicit MemoryFile(std::shared_ptr<Bytes> bytes = std::make_shared<Bytes>()) : bytes_(std::move(bytes)) {}
    explicit MemoryFile(Bytes bytes) : bytes_(std::make_shared<Bytes>(std::move(bytes))) {}

    Result<void> readAt(std::uint64_t offset, std::span<std::uint8_t> out) override {
        if (offset > bytes_->size() || out.size() > bytes_->size() - offset)
            return Error{ErrorKind::Corrupt, ShownText::asItIs("the file ends before")};
        std::copy_n(bytes_->begin() + static_cast<std::ptrdiff_t>(offset), out.size(), out.begin());
        return {};
    }
    Result<void> writeAt(std::uint64_t offset, ByteView bytes) override {
        bytes_->resize(std::max<std::size_t>(bytes_->size(), static_cast<std::size_t>(offset) + bytes.size()));
        std::copy(bytes.begin(), bytes.end(), bytes_->begin() + static_cast<std::ptrdiff_t>(offset));
        return {};
    }
    Result<std::uint64_t> size() override { return bytes_->size(); }
    Result<void> resize(std::uint64_t size) override {
        bytes_->resize(static_cast<std::size_t>(size));
        return {};
    }
    Result<void> flush() override { return {}; }

private:
    std::shared_ptr<Bytes> bytes_;
};

} // namespace quobrix::test
