#include "cli/writing.h"

#include "base/path_text.h"
#include "cli/output.h"
#include "messages/file_messages.h"
#include "model/quobrix_document.h"
#include "texts/text.h"

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

} // namespace quobrix::cli
