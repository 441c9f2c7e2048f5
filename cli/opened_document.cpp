#include "cli/opened_document.h"

#include "base/path_text.h"
#include "messages/file_messages.h"
#include "texts/text.h"

#include <fmt/format.h>

namespace quobrix::cli {

bool openForReading(TQuobrixDocument& document, const std::string& file) {
    const Result<void> opened = document.open(pathFromUtf8(file), TDocument::Access::Read);
    if (opened)
        return true;
    ShownText why = fileMessage(opened.error(), FileAction::Open, file).text;
    if (opened.error().kind == ErrorKind::Corrupt)
        why += " " + text(TextId::CliRepairSaves, file);
    complain(why);
    return false;
}

bool OpenedDocument::open(const std::string& file) {
    file_ = file;
    return openForReading(document_, file);
}

const Table& OpenedDocument::table(const LogSpec& log) {
    const Table* table = document_.log(log);
    if (!table && document_.store().findLostSingletons())
        table = document_.log(log);
    if (!table)
        none_ = log.table.create();
    return table ? *table : static_cast<const Table&>(*none_);
}

ExitCode OpenedDocument::completeness() {
    if (document_.outdated()) {
        complain(text(TextId::CliChangedWhileRead, file_));
        return kIncomplete;
    }
    const std::vector<std::string> affected = document_.affectedLogs();
    const std::optional<ShownText> doubt = document_.doubt();
    if (affected.empty() && !doubt)
        return kDone;
    const std::string parts = fmt::format("{}", fmt::join(affected, ", "));
    const std::string missing = affected.empty() ? text(TextId::CliMayBeMore, file_, *doubt)
                                : doubt          ? text(TextId::CliPartsMissingAtLeast, file_, parts)
                                                 : text(TextId::CliPartsMissing, file_, parts);
    complain(text(TextId::CliCheckTells, missing, file_));
    return kIncomplete;
}

} // namespace quobrix::cli
