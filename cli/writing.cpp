#include "cli/writing.h"

#include "base/fold_case.h"
#include "base/path_text.h"
#include "cli/output.h"
#include "messages/file_messages.h"
#include "model/quobrix_document.h"
#include "platform/file_system.h"
#include "texts/text.h"

#include <filesystem>

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
    const std::filesystem::path path = pathFromUtf8(out);
    const Result<FileStatus> there = fileStatus(path);
    bool document = foldCase(utf8(path.extension())) == ".car";
    for (const std::string& file : files)
        if (const Result<FileStatus> input = fileStatus(pathFromUtf8(file)); there && input)
            document = document || there->identity == input->identity;
    if (document)
        complain(text(TextId::CliOutIsDocument, out));
    return !document;
}

ExitCode writeOut(const std::string& out, ByteView content) {
    const Result<void> written = writeFileAtomically(pathFromUtf8(out), content);
    if (written)
        return kDone;
    complain(fileMessage(written.error(), FileAction::Save, out).text);
    return written.error().kind == ErrorKind::NotDurable ? kIncomplete : kFailed;
}

} // namespace quobrix::cli
