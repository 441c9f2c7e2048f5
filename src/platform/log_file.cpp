#include "platform/log_file.h"

#include "base/utf8.h"

#include <chrono>
#include <string>
#include <thread>
#include <utility>

namespace quobrix {
namespace {

using namespace std::chrono_literals;

// Another program has the file for the moment that a line takes.
constexpr int kAttempts = 20;
constexpr auto kPause = 1ms;

std::filesystem::path olderOf(const std::filesystem::path& path) {
    std::filesystem::path name = path.stem();
    name += ".old";
    name += path.extension();
    return path.parent_path() / name;
}

std::string lineOf(std::string_view text) {
    std::string line = oneLine(text);
    if (line.size() > LogFile::kLongestLine) {
        std::size_t end = LogFile::kLongestLine;
        while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0u) == 0x80u) // within a character
            --end;
        line.replace(end, line.npos, "…");
    }
    return line + '\n';
}

ByteView bytesOf(std::string_view text) { return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}; }

} // namespace

LogFile::LogFile(std::filesystem::path path, std::uint64_t largest, FileSystem& files)
    : path_(std::move(path)), older_(olderOf(path_)), largest_(largest), files_(&files) {}

Result<void> LogFile::append(std::string_view text) const {
    if (path_.empty())
        return Error{ErrorKind::NotFound, {}};
    makePrivateFolder(path_.parent_path());
    const std::string line = lineOf(text);
    for (int attempt = 1;; ++attempt) {
        Result<void> done = tryToAppend(line);
        const bool passes = !done && (done.error().kind == ErrorKind::InUse || done.error().kind == ErrorKind::Exists);
        if (!passes || attempt == kAttempts)
            return done;
        std::this_thread::sleep_for(kPause);
    }
}

Result<void> LogFile::tryToAppend(const std::string& line) const {
    Result<std::unique_ptr<File>> file = files_->open(path_, FileMode::ReadWrite);
    if (!file && file.error().kind == ErrorKind::NotFound)
        file = files_->open(path_, FileMode::Create);
    if (!file)
        return file.error();
    const Result<std::uint64_t> found = (*file)->size();
    if (!found)
        return found.error();
    std::uint64_t size = *found;
    if (size > 0 && size + line.size() > largest_) {
        // While it is locked, so that no other program puts the new one aside as well.
        QUOBRIX_TRY(files_->renameOver(path_, older_));
        file = files_->open(path_, FileMode::Create);
        if (!file)
            return file.error();
        size = 0;
    }
    std::uint8_t last = '\n';
    if (size > 0)
        QUOBRIX_TRY((*file)->readAt(size - 1, {&last, 1}));
    const std::string ended = last == '\n' ? line : '\n' + line; // a power cut may have left a part of one
    Result<void> written = (*file)->writeAt(size, bytesOf(ended));
    if (!written)
        static_cast<void>((*file)->resize(size));
    return written;
}

} // namespace quobrix
