#pragma once

#include "platform/file_system.h"

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace quobrix {

/// A text file that grows by a line at a time, to which several programs may append. Before it would become larger than
/// it may, it is put aside as its older one ("download.old.log"), in the place of the one before, and begun anew.
class LogFile {
public:
    static constexpr std::uint64_t kLargest = 1 << 20; // bytes
    static constexpr std::size_t kLongestLine = 4000;  // bytes

    /// An empty PATH takes no lines. Its folder need not exist before the first one.
    explicit LogFile(std::filesystem::path path, std::uint64_t largest = kLargest,
                     FileSystem& files = FileSystem::system());

    const std::filesystem::path& path() const { return path_; }
    /// Where it is put aside.
    const std::filesystem::path& older() const { return older_; }

    /// Appends TEXT as one line, whatever it holds: see oneLine(); what is too long of it is cut off. After an error
    /// nothing of it is in the file. Waits for another program's line, but no longer than a blink (InUse). What a power
    /// cut takes is not known: nothing is flushed.
    Result<void> append(std::string_view text) const;

private:
    Result<void> tryToAppend(const std::string& line) const;

    std::filesystem::path path_, older_;
    std::uint64_t largest_;
    FileSystem* files_;
};

} // namespace quobrix
