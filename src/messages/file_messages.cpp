#include "messages/file_messages.h"

namespace quobrix {
namespace {

MessageId messageOf(ErrorKind kind) {
    switch (kind) {
    case ErrorKind::NotFound:
        return MessageId::FileNotFound;
    case ErrorKind::AccessDenied:
        return MessageId::FileAccessDenied;
    case ErrorKind::IsDirectory:
        return MessageId::FileIsDirectory;
    case ErrorKind::InUse:
        return MessageId::FileInUse;
    case ErrorKind::Exists:
        return MessageId::FileExists;
    case ErrorKind::Changed:
        return MessageId::FileChanged;
    case ErrorKind::ReadOnly:
        return MessageId::FileReadOnly;
    case ErrorKind::NotADocument:
        return MessageId::FileNotADocument;
    case ErrorKind::Corrupt:
        return MessageId::FileCorrupt;
    case ErrorKind::DiskFull:
        return MessageId::FileDiskFull;
    case ErrorKind::Unsupported:
        return MessageId::FileUnsupported;
    case ErrorKind::Cancelled:
        return MessageId::FileCancelled;
    case ErrorKind::NotDurable:
        return MessageId::FileNotDurable;
    case ErrorKind::Io:
        break;
    }
    return MessageId::FileIo;
}

std::string_view wordOf(FileAction action) {
    constexpr std::string_view kWords[] = {"opened", "saved", "deleted", "compacted"};
    return kWords[static_cast<std::size_t>(action)];
}

} // namespace

Message fileMessage(const Error& error, FileAction action, std::string_view name) {
    if (name.empty())
        return makeMessage(MessageId::FileUnnamed, std::string(wordOf(action)));
    const bool noFolder = error.kind == ErrorKind::NotFound && action == FileAction::Save;
    return makeMessage(noFolder ? MessageId::FolderNotFound : messageOf(error.kind), std::string(name),
                       std::string(wordOf(action)), error.detail);
}

} // namespace quobrix
