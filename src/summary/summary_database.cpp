#include "summary/summary_database.h"

#include "base/path_text.h"
#include "messages/file_messages.h"
#include "platform/paths.h"
#include "texts/text.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFileName = "Quobrix.cdb";
constexpr std::string_view kSignature{"SummaryDatabase\0", 16};
constexpr std::string_view kVersion{"2.3\0", 4}, kOldVersion{"1\0", 2};
// 25 bytes are the signature's and 5 the version's; what follows the zero bytes of either is not looked at by others.
constexpr std::size_t kHeaderSize = 30, kVersionAt = 25;
constexpr std::size_t kNoteAt = kSignature.size();
constexpr std::uint64_t kLargest = std::uint64_t(1) << 27; // bytes; 328,000 trips

bool beginsWith(ByteView bytes, std::size_t at, std::string_view text) {
    for (std::size_t i = 0; i < text.size() && at + i < bytes.size(); ++i)
        if (bytes[at + i] != static_cast<std::uint8_t>(text[i]))
            return false;
    return true;
}

Bytes newHeader() {
    Bytes header(kHeaderSize);
    std::ranges::copy(kSignature, header.begin());
    std::ranges::copy(kVersion, header.begin() + kVersionAt);
    return header;
}

// While records are being added the header notes, in bytes that nobody else looks at, how many there were before: what
// a power cut leaves of the new ones is cut off when the file is opened again.

void setNote(Bytes& header, std::uint32_t count) {
    ByteWriter note;
    note.u8('Q');
    note.u8('b');
    note.u32(count);
    note.u16(static_cast<std::uint16_t>(~count));
    std::ranges::copy(note.view(), header.begin() + kNoteAt);
}

void clearNote(Bytes& header) { std::fill(header.begin() + kNoteAt, header.begin() + kVersionAt, std::uint8_t(0)); }

std::optional<std::uint32_t> noteOf(ByteView header) {
    ByteReader note(header.subspan(kNoteAt));
    const bool ours = note.u8() == 'Q' && note.u8() == 'b';
    const std::uint32_t count = note.u32();
    const bool whole = note.u16() == static_cast<std::uint16_t>(~count);
    return ours && whole ? std::optional(count) : std::nullopt;
}

} // namespace

fs::path summaryDatabasePath() {
    const fs::path data = userDataFolder(), program = programFolder(executablePath());
    const fs::path own = data.empty() ? data : data / kFileName;
    std::error_code ignored;
    if (!own.empty() && !program.empty() && !fs::exists(own, ignored) && fs::exists(program / kFileName, ignored))
        return program / kFileName;
    return own;
}

ShownText summaryProblem(const Error& error, const fs::path& path) {
    const bool ownWords = error.kind == ErrorKind::NotADocument || error.kind == ErrorKind::Unsupported ||
                          error.kind == ErrorKind::Corrupt;
    return ownWords && !error.detail.empty() ? error.detail : fileMessage(error, FileAction::Open, utf8(path)).text;
}

Result<void> SummaryDatabase::open(const fs::path& path, Access access) {
    close();
    path_ = path;
    access_ = access;
    Result<void> opened = access == Access::Write ? openLocked() : openShared();
    if (opened && access == Access::Write && recordSize_ == SummaryRecord::kOldSize)
        opened = upgrade();
    if (!opened)
        close();
    return opened;
}

void SummaryDatabase::close() {
    file_.reset();
    lockFile_.reset();
    count_ = 0;
}

std::uint64_t SummaryDatabase::offsetOf(std::size_t index) const {
    return kHeaderSize + std::uint64_t(index) * recordSize_;
}

Result<void> SummaryDatabase::openShared() {
    Result<std::unique_ptr<File>> file = files_.open(path_, FileMode::Read);
    if (!file)
        return file.error();
    file_ = *std::move(file);
    return readHeader();
}

Result<void> SummaryDatabase::openLocked() {
    if (path_.empty())
        return Error{ErrorKind::NotFound, {}};
    // Another program may put another file in its place until the lock is had: it is the right one if it was so before
    // and is so behind.
    constexpr int kAttempts = 10;
    for (int attempt = 0; attempt < kAttempts && !file_; ++attempt) {
        const Result<FileStatus> before = files_.status(path_);
        if (!before && before.error().kind == ErrorKind::NotFound) {
            if (const Result<void> created = create(); !created && created.error().kind != ErrorKind::Exists)
                return created;
            continue;
        }
        if (!before)
            return before.error();
        Result<std::unique_ptr<File>> file = files_.open(path_, FileMode::ReadWrite);
        if (!file)
            return file.error();
        if (!(*file)->locked() && !lockFile_) {
            std::optional<LockOwner> owner;
            Result<std::unique_ptr<LockFile>> lockFile = LockFile::take(files_, path_, owner);
            if (!lockFile)
                return lockFile.error();
            lockFile_ = *std::move(lockFile);
        }
        const Result<FileStatus> behind = files_.status(path_);
        if (behind && behind->identity == before->identity)
            file_ = *std::move(file);
    }
    return file_ ? readHeader() : Error{ErrorKind::InUse, {}};
}

/// Puts an empty one in place, unless another program does (Exists).
Result<void> SummaryDatabase::create() {
    makePrivateFolder(path_.parent_path()); // creating the file tells
    Result<ReplacementFile> file = ReplacementFile::create(path_, {}, files_);
    if (!file)
        return file.error();
    QUOBRIX_TRY(file->file().writeAt(0, newHeader()));
    return file->commit(IfThere::Refuse);
}

/// Reads the header and puts right what a power cut may have left, which others than writers only look past.
Result<void> SummaryDatabase::readHeader() {
    const Result<std::uint64_t> size = file_->size();
    if (!size)
        return size.error();
    if (*size > kLargest)
        return Error{ErrorKind::Unsupported, text(TextId::IsLargerThanBytes, utf8(path_), kLargest)};
    header_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(*size, kHeaderSize)));
    QUOBRIX_TRY(file_->readAt(0, header_));
    if (!beginsWith(header_, 0, kSignature))
        return Error{ErrorKind::NotADocument, text(TextId::SummaryNotADatabase, utf8(path_))};
    const bool old = header_.size() == kHeaderSize && beginsWith(header_, kVersionAt, kOldVersion);
    if (!old && !beginsWith(header_, kVersionAt, kVersion))
        return Error{ErrorKind::Unsupported, text(TextId::SummaryOtherVersion, utf8(path_))};
    recordSize_ = old ? SummaryRecord::kOldSize : SummaryRecord::kSize;
    if (header_.size() < kHeaderSize) {
        header_ = newHeader();
        if (access_ == Access::Read)
            return {};
        QUOBRIX_TRY(file_->writeAt(0, header_));
        return file_->flush();
    }
    count_ = static_cast<std::size_t>((*size - kHeaderSize) / recordSize_);
    const std::optional<std::uint32_t> note = old ? std::nullopt : noteOf(header_);
    if (note)
        count_ = std::min<std::size_t>(count_, *note);
    if (access_ == Access::Read || old || (*size == offsetOf(count_) && !note))
        return {};
    return cutBack();
}

/// Cuts what lies behind the last record, and takes the note back.
Result<void> SummaryDatabase::cutBack() {
    QUOBRIX_TRY(file_->resize(offsetOf(count_)));
    QUOBRIX_TRY(file_->flush());
    if (noteOf(header_)) {
        clearNote(header_);
        QUOBRIX_TRY(file_->writeAt(0, header_));
        QUOBRIX_TRY(file_->flush());
    }
    return {};
}

Result<Bytes> SummaryDatabase::readRaw(std::size_t first, std::size_t count) {
    if (!file_)
        return Error{ErrorKind::NotFound, {}};
    Bytes bytes(count * recordSize_);
    if (count > 0) // else the header may not even be whole
        QUOBRIX_TRY(file_->readAt(offsetOf(first), bytes));
    if (recordSize_ == SummaryRecord::kSize)
        return bytes;
    ByteWriter upgraded;
    upgraded.reserve(count * SummaryRecord::kSize);
    for (std::size_t i = 0; i < count; ++i)
        upgraded.bytes(upgradedSummary(ByteView(bytes).subspan(i * recordSize_, recordSize_)));
    return upgraded.take();
}

Result<SummaryRecord> SummaryDatabase::read(std::size_t index) {
    if (index >= count_)
        return Error{ErrorKind::NotFound, {}};
    const Result<Bytes> bytes = readRaw(index, 1);
    if (!bytes)
        return bytes.error();
    return readSummaryRecord(*bytes);
}

Result<std::vector<SummaryRecord>> SummaryDatabase::readAll() {
    const Result<Bytes> bytes = readRaw(0, count_);
    if (!bytes)
        return bytes.error();
    std::vector<SummaryRecord> records;
    records.reserve(count_);
    for (std::size_t i = 0; i < count_; ++i)
        records.push_back(readSummaryRecord(ByteView(*bytes).subspan(i * SummaryRecord::kSize, SummaryRecord::kSize)));
    return records;
}

Result<void> SummaryDatabase::write(std::size_t index, const SummaryRecord& record) {
    if (index >= count_ || access_ == Access::Read)
        return Error{index >= count_ ? ErrorKind::NotFound : ErrorKind::ReadOnly, {}};
    return file_->writeAt(offsetOf(index), summaryBytes(record));
}

Result<void> SummaryDatabase::flush() { return file_ ? file_->flush() : Result<void>{}; }

Result<void> SummaryDatabase::append(std::span<const SummaryRecord> records) {
    if (records.empty())
        return {};
    if (!file_ || access_ == Access::Read)
        return Error{file_ ? ErrorKind::ReadOnly : ErrorKind::NotFound, {}};
    ByteWriter added;
    added.reserve(records.size() * SummaryRecord::kSize);
    for (const SummaryRecord& record : records)
        added.bytes(summaryBytes(record));
    if (offsetOf(count_) + added.view().size() > kLargest)
        return Error{ErrorKind::Unsupported, text(TextId::IsLargerThanBytes, utf8(path_), kLargest)};
    const auto put = [&]() -> Result<void> {
        setNote(header_, static_cast<std::uint32_t>(count_));
        QUOBRIX_TRY(file_->writeAt(0, header_));
        QUOBRIX_TRY(file_->flush());
        QUOBRIX_TRY(file_->writeAt(offsetOf(count_), added.view()));
        QUOBRIX_TRY(file_->flush());
        Bytes header = header_;
        clearNote(header);
        QUOBRIX_TRY(file_->writeAt(0, header));
        QUOBRIX_TRY(file_->flush());
        header_ = std::move(header);
        return {};
    };
    const Result<void> done = put();
    if (done)
        count_ += records.size();
    else if (!cutBack())
        close(); // whoever opens it next looks at the note
    return done;
}

Result<void> SummaryDatabase::remove(std::span<const std::size_t> indices) {
    if (!file_ || access_ == Access::Read)
        return Error{file_ ? ErrorKind::ReadOnly : ErrorKind::NotFound, {}};
    std::vector<bool> removed(count_);
    for (const std::size_t index : indices) {
        if (index >= count_)
            return Error{ErrorKind::NotFound, {}};
        removed[index] = true;
    }
    const Result<Bytes> bytes = readRaw(0, count_);
    if (!bytes)
        return bytes.error();
    ByteWriter left;
    left.reserve(kHeaderSize + bytes->size());
    left.bytes(header_);
    for (std::size_t i = 0; i < count_; ++i)
        if (!removed[i])
            left.bytes(ByteView(*bytes).subspan(i * recordSize_, recordSize_));
    return replaceBy(left.view());
}

/// The file as it was stays beside it.
Result<void> SummaryDatabase::upgrade() {
    const Result<std::uint64_t> size = file_->size();
    if (!size)
        return size.error();
    Bytes old(static_cast<std::size_t>(*size));
    QUOBRIX_TRY(file_->readAt(0, old));
    const std::string name = utf8(path_.stem()) + "1_0" + utf8(path_.extension());
    Result<ReplacementFile> kept = ReplacementFile::create(path_.parent_path() / pathFromUtf8(name), path_, files_);
    if (!kept)
        return kept.error();
    QUOBRIX_TRY(kept->file().writeAt(0, old));
    QUOBRIX_TRY(kept->commit());

    const Result<Bytes> records = readRaw(0, count_);
    if (!records)
        return records.error();
    header_ = newHeader();
    ByteWriter upgraded;
    upgraded.reserve(kHeaderSize + records->size());
    upgraded.bytes(header_);
    upgraded.bytes(*records);
    recordSize_ = SummaryRecord::kSize;
    return replaceBy(upgraded.view());
}

/// Puts a new file in the place of this one, and goes on with that.
Result<void> SummaryDatabase::replaceBy(ByteView content) {
    files_.removeAbandoned(path_.parent_path());
    Result<ReplacementFile> file = ReplacementFile::create(path_, {}, files_);
    if (!file)
        return file.error();
    QUOBRIX_TRY(file->file().writeAt(0, content));
    const Result<void> done = file->commit();
    if (file->inPlace()) {
        file_ = file->takeFile();
        count_ = (content.size() - kHeaderSize) / recordSize_;
    }
    return done;
}

} // namespace quobrix
