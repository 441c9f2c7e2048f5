#include "cli/writing.h"

#include "base/path_text.h"
#include "cli/output.h"
#include "messages/file_messages.h"
#include "model/quobrix_document.h"
#include "texts/text.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <vector>

namespace quobrix::cli {

Message lockedMessage(const TQuobrixDocument& document, const std::string& file) {
    const LockOwner& owner = *document.lockedBy();
    return makeMessage(MessageId::FileInUseSince, file, fileActionText(FileAction::Save), owner.text(),
                       owner.timeText(), utf8(LockFile::pathFor(file)));
}

void complainOfLockFile(const TQuobrixDocument& document, const std::string& file) {
    if (const std::filesystem::path lock = document.lockFile(); !lock.empty())
        complain(makeMessage(MessageId::FolderWithoutLocks, file, utf8(lock.filename())).text);
}

bool mayReplace(const std::string& out, std::span<const std::string> files) {
    std::vector<std::filesystem::path> opened;
    for (const std::string& file : files)
        opened.push_back(pathFromUtf8(file));
    const bool document = isDocument(pathFromUtf8(out), opened);
    if (document)
        complain(makeMessage(MessageId::ExportIsDocument, out).text);
    return !document;
}

std::vector<std::string> namesOf(std::span<const FileFormat> formats) {
    std::vector<std::string> names;
    for (const FileFormat format : formats)
        names.emplace_back(nameOf(format));
    return names;
}

std::optional<FileFormat> chosenFormat(const std::string& named, const std::string& out,
                                       std::span<const FileFormat> taken) {
    if (!named.empty())
        return *std::ranges::find(taken, std::string_view(named), [](FileFormat each) { return nameOf(each); });
    if (out.empty())
        return taken.front();
    const std::optional<FileFormat> format = formatOf(pathFromUtf8(out), taken);
    std::string endings;
    for (const FileFormat each : taken)
        endings += (endings.empty() ? "." : ", .") + std::string(endingOf(each));
    if (!format)
        complain(text(TextId::CliNoFormat, out, endings));
    return format;
}

ExitCode writeOut(const std::string& out, ByteView content) {
    const Result<void> written = writeFileAtomically(pathFromUtf8(out), content);
    if (written)
        return kDone;
    complain(fileMessage(written.error(), FileAction::Save, out).text);
    return written.error().kind == ErrorKind::NotDurable ? kIncomplete : kFailed;
}

} // namespace quobrix::cli
