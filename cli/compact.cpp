#include "cli/compact.h"

#include "messages/file_messages.h"
#include "model/quobrix_document.h"

#include <fmt/format.h>

namespace quobrix::cli {

ExitCode compact(const std::string& file) {
    const auto failed = [&](const Error& error, FileAction action) {
        complain(fileMessage(error, action, file).text);
        return kFailed;
    };
    TQuobrixDocument document;
    if (const Result<void> opened = document.open(file, TDocument::Access::Edit); !opened)
        return failed(opened.error(), FileAction::Open);
    if (document.isExample()) {
        complain(fmt::format("{} is the delivered example, which is never changed", file));
        return kFailed;
    }
    const std::uint64_t before = document.space().fileBytes;
    if (const Result<void> done = document.compact(); !done)
        return failed(done.error(), FileAction::Compact);
    Output output;
    output.put(fmt::format("{}: {} bytes before, {} bytes now\n", file, before, document.space().fileBytes));
    return output.finish(kDone);
}

} // namespace quobrix::cli
