#include "cli/compact.h"

#include "base/path_text.h"
#include "cli/writing.h"
#include "messages/file_messages.h"
#include "model/quobrix_document.h"
#include "texts/text.h"

#include <fmt/format.h>

namespace quobrix::cli {

ExitCode compact(const std::string& file) {
    const auto failed = [&](const Error& error, FileAction action) {
        complain(fileMessage(error, action, file).text);
        return kFailed;
    };
    TQuobrixDocument document;
    if (const Result<void> opened = document.open(pathFromUtf8(file), TDocument::Access::Edit); !opened)
        return failed(opened.error(), FileAction::Open);
    if (document.lockedBy()) {
        complain(lockedMessage(document, file).text);
        return kFailed;
    }
    complainOfLockFile(document, file);
    if (document.isExample()) {
        complain(text(TextId::CliExampleNeverChanged, file));
        return kFailed;
    }
    const std::uint64_t before = document.space().fileBytes;
    const Result<void> done = document.compact();
    if (!done)
        failed(done.error(), FileAction::Compact);
    if (!done && done.error().kind != ErrorKind::NotDurable)
        return kFailed;
    Output output;
    output.put(text(TextId::CliCompacted, file, before, document.space().fileBytes));
    return output.finish(done ? kDone : kIncomplete, text(TextId::CliHasBeenCompacted, file));
}

} // namespace quobrix::cli
