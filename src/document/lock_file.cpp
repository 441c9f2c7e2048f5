#include "document/lock_file.h"

#include "base/utf8.h"
#include "texts/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <set>
#include <sstream>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kFirstLine = "Quobrix lock 1"; // then a line each: host, boot, user, process, time, token
constexpr std::uint64_t kMostBytes = 4096;

/// What lock files of this process say. One that could not be removed is none of them.
std::set<Bytes>& ownOnes() {
    static std::set<Bytes> contents;
    return contents;
}

bool isAbandoned(const LockOwner& owner) {
    return owner.process == thisProcess() ? !ownOnes().contains(owner.content) : hasEnded(owner.process);
}

LockOwner thisOwner() {
    LockOwner self{
        thisProcess(),
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count(),
        {}};
    std::ostringstream text; // the token tells documents of one process apart
    text << kFirstLine << '\n'
         << self.process.host << '\n'
         << self.process.boot << '\n'
         << self.process.user << '\n'
         << self.process.process << '\n'
         << self.since << '\n'
         << std::hex << std::random_device()() << std::random_device()() << '\n';
    const std::string bytes = text.str();
    self.content.assign(bytes.begin(), bytes.end());
    return self;
}

LockOwner parse(Bytes content) {
    LockOwner owner;
    std::istringstream text(std::string(content.begin(), content.end()));
    std::string first;
    ProcessName process;
    if (std::getline(text, first) && first == kFirstLine && std::getline(text, process.host) &&
        std::getline(text, process.boot) && std::getline(text, process.user) && text >> process.process >> owner.since)
        owner.process = process;
    else
        owner.since = 0;
    owner.content = std::move(content);
    return owner;
}

Result<Bytes> read(FileSystem& files, const fs::path& path) {
    const Result<std::unique_ptr<File>> file = files.open(path, FileMode::Read);
    if (!file)
        return file.error();
    const Result<std::uint64_t> size = (*file)->size();
    if (!size)
        return size.error();
    Bytes content(static_cast<std::size_t>(std::min(*size, kMostBytes)));
    QUOBRIX_TRY((*file)->readAt(0, content));
    return content;
}

/// Whoever PATH names, abandoned or not; nothing if there is no such file.
Result<std::optional<LockOwner>> ownerIn(FileSystem& files, const fs::path& path) {
    Result<Bytes> content = read(files, path);
    if (content)
        return std::optional(parse(*std::move(content)));
    if (content.error().kind == ErrorKind::NotFound)
        return std::optional<LockOwner>();
    return content.error();
}

/// Removes PATH if it is CONTENT still. It is looked at under another name, since it may be somebody else's by now.
void removeIf(FileSystem& files, const fs::path& path, const Bytes& content) {
    if (const Result<Bytes> now = read(files, path); !now || *now != content)
        return;
    const fs::path aside = fs::path(path) += "." + std::to_string(std::random_device()());
    if (!files.renameNew(path, aside))
        return;
    if (const Result<Bytes> moved = read(files, aside); moved && *moved == content)
        files.remove(aside);
    else
        static_cast<void>(files.renameNew(aside, path));
}

} // namespace

ShownText LockOwner::text() const {
    const std::string user = oneLine(process.user), host = oneLine(process.host);
    if (host.empty())
        return user.empty() ? quobrix::text(TextId::AnotherProgram) : ShownText::asItIs(user);
    return user.empty() ? quobrix::text(TextId::ProgramOnHost, host) : quobrix::text(TextId::UserOnHost, user, host);
}

ShownText LockOwner::timeText() const {
    using namespace std::chrono;
    const sys_seconds time{seconds(since)};
    const year_month_day day(floor<days>(time));
    if (since <= 0 || !day.ok())
        return quobrix::text(TextId::AnUnknownTime);
    const hh_mm_ss clock(time - floor<days>(time));
    return ShownText::asItIs(fmt::format("{:04}-{:02}-{:02} {:02}:{:02} UTC", static_cast<int>(day.year()),
                                         static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                                         clock.hours().count(), clock.minutes().count()));
}

fs::path LockFile::pathFor(const fs::path& document) { return fs::path(document) += ".lock"; }

Result<std::unique_ptr<LockFile>> LockFile::take(FileSystem& files, const fs::path& document,
                                                 std::optional<LockOwner>& owner) {
    const fs::path path = pathFor(document);
    constexpr int kAttempts = 4; // after what others have left was removed
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        Result<ReplacementFile> made = ReplacementFile::createForLink(path, {}, files); // so that it is never empty
        if (!made)
            return made.error();
        LockOwner self = thisOwner();
        QUOBRIX_TRY(made->file().writeAt(0, self.content));
        const Result<void> placed = made->commit(IfThere::Refuse);
        if (made->inPlace())
            return std::unique_ptr<LockFile>(new LockFile(files, document, std::move(self)));
        if (placed.error().kind != ErrorKind::Exists)
            return placed.error();
        Result<std::optional<LockOwner>> found = ownerIn(files, path);
        if (!found)
            return found.error();
        if (!*found)
            continue;
        owner = **found;
        if (!isAbandoned(*owner))
            break;
        removeIf(files, path, owner->content);
    }
    return Error{ErrorKind::InUse, owner ? owner->text() : text(TextId::AnotherProgramIsOpeningIt)};
}

Result<std::optional<LockOwner>> LockFile::ownerOf(FileSystem& files, const fs::path& document) {
    Result<std::optional<LockOwner>> owner = ownerIn(files, pathFor(document));
    if (owner && *owner && isAbandoned(**owner))
        return std::optional<LockOwner>();
    return owner;
}

void LockFile::removeOf(FileSystem& files, const fs::path& document, const LockOwner& owner) {
    removeIf(files, pathFor(document), owner.content);
}

LockFile::LockFile(FileSystem& files, std::filesystem::path document, LockOwner self)
    : files_(files), document_(std::move(document)), self_(std::move(self)) {
    ownOnes().insert(self_.content);
}

LockFile::~LockFile() {
    ownOnes().erase(self_.content);
    removeIf(files_, pathFor(document_), self_.content);
}

Result<bool> LockFile::held() const {
    const Result<Bytes> now = read(files_, pathFor(document_));
    if (!now && now.error().kind != ErrorKind::NotFound)
        return now.error();
    return now && *now == self_.content;
}

} // namespace quobrix
