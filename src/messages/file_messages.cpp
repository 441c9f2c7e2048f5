#include "messages/file_messages.h"

#include "texts/text.h"

#include <optional>

namespace quobrix {
namespace {

using Two = MessageOf<2>;

/// Nothing where the detail belongs to what is told.
std::optional<MessageOf<2>> messageOf(ErrorKind kind) {
    switch (kind) {
    case ErrorKind::NotFound:
        return Two(MessageId::FileNotFound);
    case ErrorKind::AccessDenied:
        return Two(MessageId::FileAccessDenied);
    case ErrorKind::IsDirectory:
        return Two(MessageId::FileIsDirectory);
    case ErrorKind::InUse:
        return Two(MessageId::FileInUse);
    case ErrorKind::Exists:
        return Two(MessageId::FileExists);
    case ErrorKind::Changed:
        return Two(MessageId::FileChanged);
    case ErrorKind::ReadOnly:
        return Two(MessageId::FileReadOnly);
    case ErrorKind::NotADocument:
        return Two(MessageId::FileNotADocument);
    case ErrorKind::Corrupt:
        return Two(MessageId::FileCorrupt);
    case ErrorKind::DiskFull:
        return Two(MessageId::FileDiskFull);
    case ErrorKind::Unsupported:
        return Two(MessageId::FileUnsupported);
    case ErrorKind::Cancelled:
        return Two(MessageId::FileCancelled);
    case ErrorKind::NotDurable:
    case ErrorKind::Io:
        break;
    }
    return {};
}

} // namespace

std::string fileActionText(FileAction action) {
    switch (action) {
    case FileAction::Open:
        return text(TextId::FileOpened);
    case FileAction::Save:
        return text(TextId::FileSaved);
    case FileAction::Delete:
        return text(TextId::FileDeleted);
    case FileAction::Compact:
        return text(TextId::FileCompacted);
    }
    return {};
}

Message fileMessage(const Error& error, FileAction action, std::string_view name) {
    const std::string done = fileActionText(action);
    if (name.empty())
        return makeMessage(MessageId::FileUnnamed, done);
    if (error.kind == ErrorKind::NotFound && action == FileAction::Save)
        return makeMessage(MessageId::FolderNotFound, name, done);
    if (error.kind == ErrorKind::NotADocument && action == FileAction::Save) // what is there cannot be replaced
        return makeMessage(MessageId::PlaceNotAFile, name, done);
    if (error.kind == ErrorKind::NotDurable)
        return makeMessage(MessageId::FileNotDurable, name, done, error.detail);
    if (const auto message = messageOf(error.kind))
        return makeMessage(*message, name, done);
    return makeMessage(MessageId::FileIo, name, done, error.detail);
}

Message textFileMessage(const Error& error, std::string_view name) {
    const bool content = error.kind == ErrorKind::Corrupt || error.kind == ErrorKind::Unsupported;
    return content && !error.detail.empty() ? makeMessage(MessageId::FileTextUnread, name, error.detail)
                                            : fileMessage(error, FileAction::Open, name);
}

} // namespace quobrix
