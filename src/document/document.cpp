#include "document/document.h"

#include "platform/file_system.h"

namespace quobrix {
namespace {

// The document's own stream: u32 format. Its value is not checked on reading; every version has been readable.
constexpr std::string_view kContentsStream = "Contents";
constexpr std::uint32_t kDocumentFormat = 2;

} // namespace

void writeDocumentStream(CompoundFile& file) {
    ByteWriter out;
    out.u32(kDocumentFormat);
    file.write(kContentsStream, out.take());
}

TDocument::TDocument(const TypeRegistry& types) : types_(types), store_(std::make_unique<ObjectStore>(types)) {}

TDocument::~TDocument() = default;

void TDocument::newDocument() {
    store_ = std::make_unique<ObjectStore>(types_);
    file_.reset();
    path_.clear();
    identity_ = {};
    readOnlyReason_.reset();
    bind();
}

Result<void> TDocument::open(const std::filesystem::path& path, Access access) {
    const Result<std::filesystem::path> target = resolveLinks(path);
    if (!target)
        return target.error();
    std::optional<Error> readOnly;
    if (access == Access::Read)
        readOnly = Error{ErrorKind::ReadOnly, "opened for reading"};
    // The file that is open already stays so (its lock would refuse the second opening).
    Result<std::unique_ptr<File>> opened = openFile(*target, readOnly ? FileMode::Read : FileMode::ReadWrite);
    if (!opened && (opened.error().kind == ErrorKind::AccessDenied || opened.error().kind == ErrorKind::InUse)) {
        readOnly = opened.error();
        opened = openFile(*target, FileMode::Read);
    }
    if (!opened)
        return opened.error();
    Result<std::unique_ptr<CompoundFile>> file = CompoundFile::open(std::move(*opened));
    if (!file)
        return file.error();
    const Result<FileIdentity> identity = fileIdentity(*target);
    if (!identity)
        return identity.error();
    auto store = std::make_unique<ObjectStore>(types_);
    store->load(**file);

    store_ = std::move(store);
    file_ = std::move(*file);
    path_ = path;
    identity_ = *identity;
    readOnlyReason_ = std::move(readOnly);
    if (store_->indexDamaged()) // the reason that a copy does not end
        readOnlyReason_ = Error{ErrorKind::Corrupt, store_->damage().front().what};
    bind();
    return {};
}

Result<void> TDocument::writeTo(CompoundFile& file) {
    if (!file.contains(kContentsStream))
        writeDocumentStream(file);
    return store_->save(file);
}

Result<void> TDocument::save(const DiskRunner& runDisk) {
    if (!file_)
        return Error{ErrorKind::NotFound, "the document has no file yet"};
    if (readOnlyReason_)
        return Error{ErrorKind::ReadOnly, readOnlyReason_->detail};
    const Result<FileIdentity> current = fileIdentity(path_);
    if (!current || *current != identity_)
        return Error{ErrorKind::Changed, path_.string() + " is no longer the file that was opened"};
    if (!modified())
        return {};
    QUOBRIX_TRY(writeTo(*file_));
    QUOBRIX_TRY(runDisk([this] { return file_->commit(); }));
    store_->saved();
    return {};
}

Result<void> TDocument::saveAs(const std::filesystem::path& path, const DiskRunner& runDisk) {
    if (file_) {
        const Result<FileIdentity> target = fileIdentity(path);
        if (target && *target == identity_)
            return save(runDisk);
    }
    Result<ReplacementFile> replacement = ReplacementFile::create(path);
    if (!replacement)
        return replacement.error();
    Result<std::unique_ptr<CompoundFile>> target = Error{};
    if (file_) {
        // A copy of the file, not of its streams: what could not be read comes along untouched.
        QUOBRIX_TRY(runDisk([&] { return file_->copyTo(replacement->file()); }));
        target = CompoundFile::open(replacement->takeFile());
    } else {
        target = CompoundFile::create(replacement->takeFile());
    }
    if (!target)
        return target.error();
    QUOBRIX_TRY(writeTo(**target));
    const auto makeDurable = [&]() -> Result<void> {
        QUOBRIX_TRY((*target)->commit());
        return replacement->commit();
    };
    QUOBRIX_TRY(runDisk(makeDurable));
    const Result<FileIdentity> identity = fileIdentity(path);
    store_->attach(**target);
    file_ = std::move(*target);
    store_->saved();
    path_ = path;
    identity_ = identity ? *identity : FileIdentity{};
    if (readOnlyReason_ && readOnlyReason_->kind != ErrorKind::Corrupt)
        readOnlyReason_.reset();
    return {};
}

CompoundFile::Space TDocument::space() const { return file_ ? file_->space() : CompoundFile::Space{}; }

} // namespace quobrix
